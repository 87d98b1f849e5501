#include "convert/event_file.h"

#include "convert/clip_selection.h"
#include "convert/text_table.h"

#include <platform/runtime/number.h>

#include <cmath>
#include <filesystem>

namespace TW2::convert
{
namespace
{
double readSeconds(const std::string& fileName, const TextLine& line)
{
    const std::string& text = line.m_vecFields[1];
    const char* end = text.data() + text.size();
    double seconds = 0.0;
    const auto read = S_fromChars(text.data(), end, seconds);
    if (read.ec != std::errc() || read.ptr != end || !std::isfinite(seconds))
    {
        failAt(fileName, line.m_uiNumber, "expected seconds from the clip's beginning, found \"" + text + "\"");
    }
    return seconds;
}
}  // namespace

void addEventsBeside(Model& model, const std::string& modelFile)
{
    const std::string fileName = std::filesystem::path(modelFile).replace_extension(".events").string();
    if (!std::filesystem::is_regular_file(fileName))
    {
        return;
    }
    constexpr double rounding = 1e-3;  // of times that are written with few digits
    model.m_vecSources.push_back(fileName);
    for (const TextLine& line : readTextTable(fileName, "CLIP SECONDS NAME"))
    {
        const std::string& name = line.m_vecFields[0];
        const double seconds = readSeconds(fileName, line);
        bool found = false;
        for (Clip& clip : model.m_vecClips)
        {
            if (clip.m_strName != name)
            {
                continue;
            }
            found = true;
            if (seconds < 0.0 || seconds > clip.m_dDuration + rounding)
            {
                failAt(fileName, line.m_uiNumber,
                       "clip \"" + name + "\" goes from 0 to " + std::to_string(clip.m_dDuration) +
                           " seconds, not to " + line.m_vecFields[1]);
            }
            clip.m_vecEvents.push_back({clip.m_dStart + std::min(seconds, clip.m_dDuration), line.m_vecFields[2]});
        }
        if (!found)
        {
            failAt(fileName, line.m_uiNumber,
                   "the model has no clip \"" + name + "\"; its clips: " + listNames(model.m_vecClips));
        }
    }
}
}  // namespace TW2::convert
