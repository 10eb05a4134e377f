#include "wave/AdtlLabels.h"

std::vector<AdtlLabel> ReadAdtlLabels(const std::vector<ListEntry>& entries)
{
    std::vector<AdtlLabel> labels;
    for (const ListEntry& entry : entries) {
        if (entry.id == "labl" || entry.id == "note") {
            labels.push_back({entry.offset, entry.id, BodyU32(entry.body, 0), 0, "", BodyText(entry.body, 4, entry.body.size())});
        } else if (entry.id == "ltxt") {
            // Behind the id, length and purpose: country, language,
            // dialect and code page, two bytes each, then the text.
            labels.push_back({entry.offset, entry.id, BodyU32(entry.body, 0), BodyU32(entry.body, 4),
                              BodyId(entry.body, 8), BodyText(entry.body, 20, entry.body.size())});
        }
    }
    return labels;
}
