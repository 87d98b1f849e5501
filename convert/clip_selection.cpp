#include "convert/clip_selection.h"

#include "convert/clip_sampler.h"
#include "convert/convert_exception.h"
#include "convert/node_motion.h"

#include <algorithm>
#include <iterator>
#include <regex>
#include <set>
#include <unordered_map>

namespace TW2::convert
{
namespace
{
/// A channel that begins at another time and is followed by a matrix.
class ShiftedMotion : public NodeMotion
{
public:
    ShiftedMotion(Channel channel, const Matrixd& rest, double shift, const Matrixd& after)
        : m_channel(std::move(channel)), m_rest(rest), m_dShift(shift), m_after(after)
    {
    }
    [[nodiscard]] Matrixd at(double seconds) const override
    {
        return evaluate(m_channel, m_rest, seconds + m_dShift) * m_after;
    }
    void addTimes(std::vector<double>& times) const override { addShifted(addKeyTimes, times); }
    void addJumps(std::vector<double>& jumps) const override { addShifted(convert::addJumps, jumps); }

private:
    void addShifted(void (*add)(const Channel&, std::vector<double>&), std::vector<double>& times) const
    {
        std::vector<double> own;
        add(m_channel, own);
        std::transform(own.begin(), own.end(), std::back_inserter(times),
                       [this](double time) { return time - m_dShift; });
    }

    Channel m_channel;
    Matrixd m_rest;
    double m_dShift;
    Matrixd m_after;
};

/// Makes what a clip moves, and its events, begin at 0 seconds in the model's own space, without events outside of it.
void begin(Clip& clip, const Model& model)
{
    constexpr double rounding = 1e-6;  // of times that are cut at frames
    std::erase_if(clip.m_vecEvents,
                  [&clip](const Event& event)
                  {
                      const double seconds = event.m_dTime - clip.m_dStart;
                      return seconds < -rounding || seconds > clip.m_dDuration + rounding;
                  });
    for (Event& event : clip.m_vecEvents)
    {
        event.m_dTime -= clip.m_dStart;
    }
    for (Channel& channel : clip.m_vecChannels)
    {
        const auto node = static_cast<std::size_t>(channel.m_iNode);
        const bool moved = clip.m_root && model.m_vecNodes[node].m_iParent < 0;
        if (clip.m_dStart == 0.0 && !moved)
        {
            continue;
        }
        Channel shifted;
        shifted.m_iNode = channel.m_iNode;
        shifted.m_pMotion =
            std::make_shared<ShiftedMotion>(std::move(channel), model.getRestInFile(node), clip.m_dStart,
                                            moved ? *clip.m_root * model.m_root.inverse() : Matrixd());
        channel = std::move(shifted);
    }
}

void cut(Clip& clip, const std::string& nameInFile, unsigned long from, unsigned long to, int frameRate,
         const std::string& fileName)
{
    const int rate = frameRate > 0 ? frameRate : chooseFrameRate(clip);
    const double frames = clip.m_dDuration * rate;
    const double last = frames + getFrameTolerance(frames);
    if (from > to || static_cast<double>(to) > last)
    {
        const std::string reason = "clip \"" + nameInFile + "\" has the frames 0 to " +
                                   std::to_string(static_cast<unsigned long>(last)) + " at " + std::to_string(rate) +
                                   " per second, not " + std::to_string(from) + " to " + std::to_string(to);
        throw ConvertException(fileName.c_str(), reason.c_str());
    }
    clip.m_dStart += static_cast<double>(from) / rate;
    clip.m_dDuration = static_cast<double>(to - from) / rate;
}
}  // namespace

std::string listNames(const std::vector<Clip>& clips)
{
    std::string names;
    for (const Clip& clip : clips)
    {
        names += (names.empty() ? "\"" : ", \"") + clip.m_strName + "\"";
    }
    return names.empty() ? "none" : names;
}

std::vector<Clip> chooseClips(const std::vector<Clip>& clips, const std::vector<std::string>& choices, int frameRate,
                              const std::string& fileName)
{
    std::vector<Clip> chosen;
    const auto find = [&clips](const std::string& name)
    { return std::find_if(clips.begin(), clips.end(), [&name](const Clip& clip) { return clip.m_strName == name; }); };
    for (const std::string& choice : choices)
    {
        static const std::regex withFrames("(.*):([0-9]{1,9})-([0-9]{1,9})");
        std::smatch frames;
        // A name may have these signs in it: what a clip is called as a whole is its name.
        const bool cuts = find(choice) == clips.end() && std::regex_match(choice, frames, withFrames);
        const std::string wanted = cuts ? frames[1].str() : choice;
        auto found = find(wanted);
        std::string name = wanted;
        for (std::size_t at = wanted.find('='); found == clips.end() && at != std::string::npos;
             at = wanted.find('=', at + 1))
        {
            found = find(wanted.substr(0, at));
            name = wanted.substr(at + 1);
        }
        if (found == clips.end())
        {
            const std::string reason =
                "has no clip \"" + wanted.substr(0, wanted.find('=')) + "\"; its clips: " + listNames(clips);
            throw ConvertException(fileName.c_str(), reason.c_str());
        }
        Clip& clip = chosen.emplace_back(*found);
        clip.m_strName = name;
        if (cuts)
        {
            cut(clip, found->m_strName, std::stoul(frames[2]), std::stoul(frames[3]), frameRate, fileName);
        }
    }
    return chosen;
}

bool areParts(const std::vector<Clip>& clips)
{
    std::set<int> moved;
    for (const Clip& clip : clips)
    {
        for (const Channel& channel : clip.m_vecChannels)
        {
            if (!moved.insert(channel.m_iNode).second)
            {
                return false;
            }
        }
    }
    return clips.size() > 1;
}

Clip mergeClips(const Model& model, std::vector<Clip> clips, const std::string& name,
                std::vector<std::string>& warnings)
{
    Clip merged;
    merged.m_strName = name;
    std::set<int> moved;
    std::size_t twice = 0;
    for (Clip& clip : clips)
    {
        begin(clip, model);
        merged.m_dDuration = std::max(merged.m_dDuration, clip.m_dDuration);
        std::move(clip.m_vecEvents.begin(), clip.m_vecEvents.end(), std::back_inserter(merged.m_vecEvents));
        for (Channel& channel : clip.m_vecChannels)
        {
            if (moved.insert(channel.m_iNode).second)
            {
                merged.m_vecChannels.push_back(std::move(channel));
            }
            else
            {
                ++twice;
            }
        }
    }
    if (twice > 0)
    {
        warnings.push_back("merged clips: " + std::to_string(twice) +
                           " motions are left out, of nodes that an earlier clip moves as well");
    }
    return merged;
}
}  // namespace TW2::convert
