#include "mend/TidyPlan.h"

#include "wave/FileLayout.h"
#include "wave/FormatChunk.h"

// Takes the input's format from the walk of its layout, or from an RF64
// file's own layout, which the walk would take for a file that is not
// RIFF. False with the reason in problem when the input is neither, or
// has audio but no format of at least one channel and one byte a frame.
bool ReadTidyPlan(const FileLayout& input, TidyPlan& plan, std::string& problem)
{
    bool hasData = false;
    if (input.GetContainer() == FileContainer::Rf64) {
        if (!input.HasRf64Layout()) {
            // A header cut short is no more RF64 than it is RIFF.
            const bool cutShort = input.GetRf64Layout().fileSize < kRiffHeaderBytes;
            problem = cutShort ? "not a RIFF file" : input.GetRf64Problem();
            return false;
        }
        plan.rf64 = &input.GetRf64Layout();
        if (plan.rf64->formatBytes >= 16)
            plan.blockAlign = static_cast<std::uint16_t>(plan.rf64->format[12] | plan.rf64->format[13] << 8);
        hasData = plan.rf64->dataPosition >= 0;
    } else {
        if (input.GetContainer() != FileContainer::Riff) {
            problem = "not a RIFF file";
            return false;
        }
        const FormatChunk* format = input.GetDocument().GetFormatChunk();
        if (format && format->GetFormat().channels >= 1)
            plan.blockAlign = format->GetFormat().blockAlign;
        hasData = input.GetDocument().GetDataChunk() != nullptr;
    }
    if (hasData && plan.blockAlign < 1) {
        problem = "the data can't be written without a format of at least one channel and one byte per frame";
        return false;
    }
    return true;
}
