#include "mend/TidyCopy.h"

#include "base/Utf8.h"
#include "files/FileStream.h"
#include "mend/KeptMarks.h"
#include "mend/TidyPlan.h"
#include "mend/TidyWalk.h"
#include "platform/FileSystem.h"
#include "platform/Folder.h"

namespace {

// The copy is written under OUT's name with ".sondara-check-unfinished"
// behind it and renamed once whole. The name tells a person who finds one
// (left by a tidy killed while it wrote) whose it is and that the copy in
// it is not whole; it doesn't end in ".wav", so no check of the folder
// takes it for a recording. Being one name for each OUT, it is known for a
// leftover by the next tidy of the same OUT, which removes it.
WideString TemporaryFor(const WideString& output)
{
    return output + WideString::FromAscii(".sondara-check-unfinished");
}

// Makes the temporary, after removing a leftover of an earlier tidy of the
// same OUT: a file of exactly its name, never a folder, nor the input (a
// leftover given to be mended), which refuses the copy. Two tidies of one
// OUT at the same moment are not told apart: on POSIX the later removes the
// file the earlier is writing; on Windows a file open for writing can't be
// removed, and the later is refused.
bool CreateTemporary(const WideString& temporary, const WideString& input, const WideString& output,
                     FileStream& stream, std::string& problem)
{
    const std::uint32_t attributes = platform::GetPathAttributes(temporary.View());
    if (attributes != platform::kInvalidFileAttributes && !(attributes & platform::kFileAttributeDirectory)) {
        platform::FolderIdentity leftover, source;
        if (platform::GetFolderIdentity(temporary.View(), leftover) &&
            platform::GetFolderIdentity(input.View(), source) && leftover == source) {
            problem = "the file has the name that the copy is written under until it is whole; rename it first";
            return false;
        }
        platform::RemoveFile(temporary.View());
    }
    if (!stream.CreateNew(temporary, false)) {
        problem = "can't make a file beside " + WideToPathUtf8(output.View());
        return false;
    }
    return true;
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
    const bool rf64 = plan.rf64 != nullptr || dry.Written() - 8 > 0xFFFFFFFFLL;
    TidyWalk copy(source, target, fileSize, plan, changes, problem, rf64 ? TidyWalk::Run::Rf64 : TidyWalk::Run::Riff);
    return copy.Copy() && target.Flush();
}

} // namespace

bool MakeTidyCopy(FileLayout& input, const WideString& output, std::vector<std::string>& changes,
                  std::string& problem, bool storeMd5)
{
    changes.clear();
    if (!input.IsExistingFile()) {
        problem = "no such file";
        return false;
    }
    if (platform::GetPathAttributes(output.View()) != platform::kInvalidFileAttributes) {
        problem = WideToPathUtf8(output.View()) + " exists; the copy goes to a new path only";
        return false;
    }
    // A plan is made only of a file that the layout could open.
    TidyPlan plan;
    if (!ReadTidyPlan(input, plan, problem))
        return false;
    plan.storeMd5 = storeMd5;

    FileStream target;
    const WideString temporary = TemporaryFor(output);
    if (!CreateTemporary(temporary, input.GetPath(), output, target, problem))
        return false;
    StreamGuard guard;
    const bool written = WriteCopy(input.AcquireStream(guard), target, plan, changes, problem);
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
    SayMarksPastAudio(output, changes);
    return true;
}
