#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

namespace fs = std::filesystem;

TempDir::TempDir()
{
    std::random_device random;
    fs::path base = fs::temp_directory_path();
    for (;;) {
        fs::path candidate = base / ("sondara-test-" + std::to_string(random()));
        if (fs::create_directory(candidate)) {
            root = candidate.string();
            break;
        }
    }
}

TempDir::~TempDir()
{
    std::error_code ignored;
    fs::remove_all(root, ignored);
}

WideString TempDir::PathOf(std::string_view name) const
{
    fs::path path = fs::path(root) / fs::path(std::string(name));
    std::u16string text = path.u16string();
    return WideString(text);
}

// With SONDARA_COLLECT_TEST_FILES naming a folder, every file a test writes
// is also kept there, so that the builds of all platforms can be compared
// on the same files.
WideString TempDir::Write(std::string_view name, std::string_view bytes) const
{
    std::ofstream out(fs::path(root) / fs::path(std::string(name)), std::ios::binary);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    if (const char* collect = std::getenv("SONDARA_COLLECT_TEST_FILES")) {
        static int counter = 0;
        const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
        std::string keptName = test ? std::string(test->test_suite_name()) + "." + test->name() : "none";
        keptName += "-" + std::to_string(++counter) + ".wav";
        std::ofstream kept(fs::path(collect) / keptName, std::ios::binary);
        kept.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }
    return PathOf(name);
}

WideString TempDir::MakeDir(std::string_view name) const
{
    fs::create_directory(fs::path(root) / fs::path(std::string(name)));
    return PathOf(name);
}

std::string TempDir::Read(std::string_view name) const
{
    std::ifstream in(fs::path(root) / fs::path(std::string(name)), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}
