#pragma once

#include <cstddef>
#include <optional>
#include <vector>

namespace TW2::convert
{
/// The times at which a clip, or a stretch of it, is looked at, ascending: samples, of which those that are whole
/// frames may have keys. Where little happens they lie farther apart.
class Timeline
{
public:
    static constexpr unsigned int finest = 4;  ///< samples per frame

    Timeline() = default;
    /// `rate`: frames per second.
    explicit Timeline(int rate) : m_iRate(rate) {}

    /// Adds every `step`th frame from `first` to `end`, and `end`, with `perStep` (1 to 4) samples from each to the
    /// next. Frames up to the last one added before are left out.
    void add(unsigned int first, unsigned int end, unsigned int step, unsigned int perStep);

    [[nodiscard]] int getRate() const noexcept { return m_iRate; }

    /// @name Samples
    /// @{
    [[nodiscard]] std::size_t getCount() const noexcept { return m_vecTicks.size(); }
    [[nodiscard]] double getSeconds(std::size_t sample) const
    {
        return static_cast<double>(m_vecTicks[sample]) / (static_cast<double>(ticksPerFrame) * m_iRate);
    }
    /// How far a sample is on its way from one frame to another; 0 where both are one.
    [[nodiscard]] double getFraction(std::size_t sample, unsigned int from, unsigned int to) const
    {
        return to > from ? static_cast<double>(m_vecTicks[sample] - from * ticksPerFrame) /
                               static_cast<double>((to - from) * ticksPerFrame)
                         : 0.0;
    }
    /// Whether a sample lies on a frame or behind it.
    [[nodiscard]] bool isFrom(std::size_t sample, unsigned int frame) const
    {
        return m_vecTicks[sample] >= frame * ticksPerFrame;
    }
    /// All of them, in frames.
    [[nodiscard]] std::vector<double> getFrames() const;
    /// @}

    /// @name Frames on which keys may lie, by their index
    /// @{
    [[nodiscard]] std::size_t getFrameCount() const noexcept { return m_vecFrames.size(); }
    [[nodiscard]] unsigned int getFrame(std::size_t index) const
    {
        return m_vecTicks[m_vecFrames[index]] / ticksPerFrame;
    }
    /// The sample on it.
    [[nodiscard]] std::size_t at(std::size_t index) const { return m_vecFrames[index]; }
    /// The index of a frame; nothing when no keys may lie on it.
    [[nodiscard]] std::optional<std::size_t> find(unsigned int frame) const;
    /// @}

private:
    static constexpr unsigned int ticksPerFrame = 12;  // what every number of samples divides

    int m_iRate = 0;
    std::vector<unsigned int> m_vecTicks;  // per sample
    std::vector<std::size_t> m_vecFrames;  // the samples that are frames
};

/// From one frame to another of a clip at some rate.
struct Stretch
{
    unsigned int m_uiFirst;
    unsigned int m_uiEnd;
    int m_iRate;                ///< at which straight pieces from frame to frame are good enough
    unsigned int m_uiPerFrame;  ///< samples that show what those pieces miss
};

/// How often a clip of so many frames per second is looked at from one frame to the next.
[[nodiscard]] unsigned int chooseSamplesPerFrame(int rate);
/// All of a clip, stretch by stretch, with as many samples between its frames as `mostSamples` allows. `last`: its
/// last frame at `rate`, of which the rates of the stretches are parts or multiples.
[[nodiscard]] Timeline makeTimeline(int rate, unsigned int last, const std::vector<Stretch>& stretches,
                                    std::size_t mostSamples);
}  // namespace TW2::convert
