#include "mend/TidyCopy.h"

#include "base/Utf8.h"
#include "files/FileStream.h"
#include "mend/TidyPlan.h"
#include "mend/TidyWalk.h"
#include "platform/FileSystem.h"
#include "wave/FileFacts.h"

namespace {

// A free name beside output for the file being written.
bool CreateTemporary(const WideString& output, FileStream& stream, WideString& temporary)
{
    for (int attempt = 0; attempt < 100; ++attempt) {
        temporary = output + WideString::FromAscii(".partial-" + std::to_string(attempt));
        if (stream.CreateNew(temporary, false))
            return true;
    }
    return false;
}

// A dry run first: a RIFF copy that would pass 4 GiB is written as RF64.
bool WriteCopy(FileStream& source, FileStream& target, const TidyPlan& plan, std::vector<std::string>& changes,
               std::string& problem)
{
    const std::int64_t fileSize = source.GetSize();
    TidyWalk dry(source, target, fileSize, plan, changes, problem, TidyWalk::Run::Dry);
    const bool dryWritten = dry.Copy();
    changes.clear();
    if (!dryWritten)
        return false;
    const bool rf64 = plan.rf64 || dry.Written() - 8 > 0xFFFFFFFFLL;
    TidyWalk copy(source, target, fileSize, plan, changes, problem, rf64 ? TidyWalk::Run::Rf64 : TidyWalk::Run::Riff);
    return copy.Copy() && target.Flush();
}

} // namespace

bool MakeTidyCopy(const WideString& input, const WideString& output, std::vector<std::string>& changes,
                  std::string& problem)
{
    changes.clear();
    if (!IsExistingFile(input)) {
        problem = "no such file";
        return false;
    }
    if (platform::GetPathAttributes(output.View()) != platform::kInvalidFileAttributes) {
        problem = WideToPathUtf8(output.View()) + " exists; the copy goes to a new path only";
        return false;
    }
    TidyPlan plan;
    if (!ReadTidyPlan(input, plan, problem))
        return false;

    FileStream source;
    if (!source.OpenPlain(input, platform::kFileAttributeNormal)) {
        problem = "the file can't be opened for reading";
        return false;
    }
    source.EnableReadAhead(64 * 1024);
    FileStream target;
    WideString temporary;
    if (!CreateTemporary(output, target, temporary)) {
        problem = "can't make a file beside " + WideToPathUtf8(output.View());
        return false;
    }
    const bool written = WriteCopy(source, target, plan, changes, problem);
    target.Close();
    if (!written) {
        platform::RemoveFile(temporary.View());
        if (problem.empty())
            problem = "the copy could not be written in full";
        return false;
    }
    if (!platform::RenameFileNoReplace(temporary.View(), output.View())) {
        platform::RemoveFile(temporary.View());
        problem = "can't give the copy the name " + WideToPathUtf8(output.View());
        return false;
    }
    // The new name is on the disk only once its folder is.
    platform::FlushFolderOf(output.View());
    return true;
}
