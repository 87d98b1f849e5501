#include "convert/timeline.h"

#include <algorithm>

namespace TW2::convert
{
void Timeline::add(unsigned int first, unsigned int end, unsigned int step, unsigned int perStep)
{
    if (!m_vecFrames.empty())
    {
        first = std::max(first, getFrame(m_vecFrames.size() - 1));
    }
    else
    {
        m_vecFrames.push_back(0);
        m_vecTicks.push_back(first * ticksPerFrame);
    }
    while (first < end)
    {
        const unsigned int next = std::min(first + step, end);
        const unsigned int ticks = (next - first) * ticksPerFrame;
        for (unsigned int i = 1; i <= perStep; ++i)
        {
            const unsigned int tick = first * ticksPerFrame + ticks / perStep * i;
            if (tick % ticksPerFrame == 0)
            {
                m_vecFrames.push_back(m_vecTicks.size());
            }
            m_vecTicks.push_back(tick);
        }
        first = next;
    }
}

std::vector<double> Timeline::getFrames() const
{
    std::vector<double> frames;
    frames.reserve(m_vecTicks.size());
    for (const unsigned int tick : m_vecTicks)
    {
        frames.push_back(static_cast<double>(tick) / ticksPerFrame);
    }
    return frames;
}

std::optional<std::size_t> Timeline::find(unsigned int frame) const
{
    const auto found =
        std::lower_bound(m_vecFrames.begin(), m_vecFrames.end(), frame * ticksPerFrame,
                         [this](std::size_t sample, unsigned int tick) { return m_vecTicks[sample] < tick; });
    return found != m_vecFrames.end() && m_vecTicks[*found] == frame * ticksPerFrame
               ? std::optional(static_cast<std::size_t>(found - m_vecFrames.begin()))
               : std::nullopt;
}

unsigned int chooseSamplesPerFrame(int rate)
{
    constexpr int samplesPerSecond = 960;  // enough, whatever the frame rate
    return static_cast<unsigned int>(std::clamp(samplesPerSecond / rate, 2, static_cast<int>(Timeline::finest)));
}

Timeline makeTimeline(int rate, unsigned int last, const std::vector<Stretch>& stretches, std::size_t mostSamples)
{
    for (unsigned int most = Timeline::finest;; most /= 2)
    {
        Timeline timeline(rate);
        for (const Stretch& stretch : stretches)
        {
            // What was looked at more finely than the clip is written is looked at at each of its frames.
            const auto parts = static_cast<unsigned int>(std::max(stretch.m_iRate / rate, 1));
            const auto step = static_cast<unsigned int>(std::max(rate / stretch.m_iRate, 1));
            const unsigned int perStep = parts > 1 ? chooseSamplesPerFrame(rate) : stretch.m_uiPerFrame;
            timeline.add(stretch.m_uiFirst * step / parts, std::min((stretch.m_uiEnd * step + parts - 1) / parts, last),
                         step, std::min(perStep, most));
        }
        if (most == 1 || timeline.getCount() <= mostSamples)
        {
            return timeline;
        }
    }
}
}  // namespace TW2::convert
