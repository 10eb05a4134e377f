// address-catcher FILE ADDRESS: appends ADDRESS and a line feed to FILE, in
// UTF-8, exactly as the shell handed it over. The end-to-end tests register
// it as the handler of http addresses, so that what Sondara.exe asks the
// shell to open can be compared byte for byte, where a browser launcher
// would first rewrite it (a blank as %20, say).
#include <windows.h>

#include <cstdio>
#include <string>

int wmain(int argc, wchar_t** argv)
{
    if (argc != 3) {
        std::fputs("usage: address-catcher FILE ADDRESS\n", stderr);
        return 2;
    }
    const int length = WideCharToMultiByte(CP_UTF8, 0, argv[2], -1, nullptr, 0, nullptr, nullptr);
    std::string address(length > 0 ? static_cast<std::size_t>(length - 1) : 0, '\0');
    WideCharToMultiByte(CP_UTF8, 0, argv[2], -1, address.data(), length, nullptr, nullptr);
    FILE* out = _wfopen(argv[1], L"ab");
    if (out == nullptr)
        return 1;
    std::fwrite(address.data(), 1, address.size(), out);
    std::fputc('\n', out);
    return std::fclose(out) == 0 ? 0 : 1;
}
