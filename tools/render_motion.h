#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace TW2::viewer
{
class AnimatedScript;
}

namespace tools
{
/// Which motion pictures show, as the arguments say it.
struct MotionArguments
{
    std::string animation;
    std::string blend;
    std::string weight = "0..1";
    std::optional<double> time;
    std::optional<double> from;
    std::optional<double> to;
    double atLeast = 0.0;  ///< seconds that the range lasts at least when its end is not given; a loop is repeated
};

/// What is shown at each time: one animation, or a fade from one into another. Times are seconds.
struct Motion
{
    int first;
    int second = -1;
    std::pair<double, double> weight;  ///< of the second animation: at the beginning and at the end
    double begin;
    double end;
    bool loops;  ///< what is shown at the end is what is shown at the beginning

    /// Throws Failure for arguments that cannot be followed.
    Motion(const MotionArguments& arguments, TW2::viewer::AnimatedScript& script);

    /// How much of the time range has gone by, 0 to 1.
    [[nodiscard]] double getProgress(double time) const { return end > begin ? (time - begin) / (end - begin) : 0.0; }
    [[nodiscard]] double getWeight(double time) const
    {
        return weight.first + (weight.second - weight.first) * getProgress(time);
    }
};

/// When the pictures of an animated file are taken. One that loops leaves out its last moment, which is its first one,
/// and takes its pictures at equal distances, so that it plays as long as it is.
struct Moments
{
    unsigned int count;
    double begin;
    double step;

    static Moments play(const Motion& motion, double framesPerSecond);
    /// `count` moments, spread over the motion; of one that does not loop the first and the last are among them.
    static Moments spread(const Motion& motion, unsigned int count);

    [[nodiscard]] double get(unsigned int picture) const { return begin + step * picture; }
    /// At which the pictures are to be played.
    [[nodiscard]] double getFramesPerSecond() const { return 1.0 / step; }
};

/// The number that is all of `text`; nothing when it is none.
[[nodiscard]] std::optional<double> parseNumber(std::string_view text);
}  // namespace tools
