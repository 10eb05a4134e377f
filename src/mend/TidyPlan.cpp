#include "mend/TidyPlan.h"

#include "wave/DataChunk.h"
#include "wave/FormatChunk.h"
#include "wave/WaveDocument.h"

// Reads the input's format through the check's reader, or an RF64 file's,
// which that reader takes for one that is not RIFF, through its own
// layout. False with the reason in problem when the input is neither, or
// has audio but no format of at least one channel and one byte a frame.
bool ReadTidyPlan(const WideString& input, TidyPlan& plan, std::string& problem)
{
    bool hasData = false;
    plan.rf64 = IsRf64File(input);
    if (plan.rf64) {
        std::string why;
        if (!ReadRf64Layout(input, plan.layout, why)) {
            // A header cut short is no more RF64 than it is RIFF.
            problem = plan.layout.fileSize < kRiffHeaderBytes ? "not a RIFF file" : why;
            return false;
        }
        if (plan.layout.formatBytes >= 16)
            plan.blockAlign = static_cast<std::uint16_t>(plan.layout.format[12] | plan.layout.format[13] << 8);
        hasData = plan.layout.dataPosition >= 0;
    } else {
        WaveDocument document;
        document.SetTreeForm(TreeForm::SlotsOnly);
        document.Open(input);
        if (document.GetContainerKind() != kContainerRiff) {
            problem = "not a RIFF file";
            return false;
        }
        const FormatChunk* format = document.GetFormatChunk();
        if (format && format->GetFormat().channels >= 1)
            plan.blockAlign = format->GetFormat().blockAlign;
        hasData = document.GetDataChunk() != nullptr;
    }
    if (hasData && plan.blockAlign < 1) {
        problem = "the data can't be written without a format of at least one channel and one byte per frame";
        return false;
    }
    return true;
}
