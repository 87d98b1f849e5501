#include "tools/render_motion.h"

#include "tools/commands.h"
#include "viewer/animated_script.h"

#include <tw2/object/object_animation.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <system_error>

namespace tools
{
namespace
{
/// "0.5" or "0..1".
std::pair<double, double> parseWeight(std::string_view text)
{
    const std::size_t dots = text.find("..");
    const std::optional<double> from = parseNumber(text.substr(0, dots));
    const std::optional<double> to = dots == std::string_view::npos ? from : parseNumber(text.substr(dots + 2));
    if (!from || !to)
    {
        throw Failure("--weight is a number or a range such as 0..1, not \"" + std::string(text) + "\"");
    }
    return {*from, *to};
}
}  // namespace

std::optional<double> parseNumber(std::string_view text)
{
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

Motion::Motion(const MotionArguments& arguments, TW2::viewer::AnimatedScript& script)
{
    TW2::TW_ObjectAnimation& skeleton = script.getSkeleton();
    if (arguments.blend.empty())
    {
        first = arguments.animation.empty() ? script.chooseAnimation() : script.findAnimation(arguments.animation);
    }
    else
    {
        const std::size_t colon = arguments.blend.find(':');
        if (colon == std::string::npos)
        {
            throw Failure("--blend is two animations, such as 0:1, not \"" + arguments.blend + "\"");
        }
        first = script.findAnimation(arguments.blend.substr(0, colon));
        second = script.findAnimation(arguments.blend.substr(colon + 1));
        weight = parseWeight(arguments.weight);
    }
    // Of an animation that loops the time after which it repeats, of another one the time of its last frame.
    const auto lengthOf = [&skeleton](int index)
    { return index >= 0 ? static_cast<double>(skeleton.getAnimationPeriod(index)) : 0.0; };
    const double length = std::max(lengthOf(first), lengthOf(second));
    begin = arguments.time.value_or(arguments.from.value_or(0.0));
    end = arguments.time.value_or(arguments.to.value_or(std::max(length, begin)));
    if (end < begin)
    {
        throw Failure("the time range ends before it begins");
    }
    const bool wholeClip = !arguments.time && !arguments.from && !arguments.to && second < 0 && first >= 0;
    loops =
        wholeClip && length > 0.0 && skeleton.isAnimationLooping(first) && skeleton.getAnimationLoopToFrame(first) == 0;
    if (!arguments.time && !arguments.to && end - begin < arguments.atLeast)
    {
        // What stands still repeats itself as well.
        end = begin + (loops ? length * std::ceil(arguments.atLeast / length) : arguments.atLeast);
        loops |= length <= 0.0;
    }
}

Moments Moments::play(const Motion& motion, double framesPerSecond)
{
    const double length = motion.end - motion.begin;
    if (motion.loops)
    {
        // About as many as were asked for, and at least the one per second that files can say.
        const double fewest = std::max(std::ceil(length - 1e-6), 1.0);
        const auto count = static_cast<unsigned int>(std::max(std::round(length * framesPerSecond), fewest));
        return {count, motion.begin, length / count};
    }
    const auto steps = static_cast<unsigned int>(std::floor(length * framesPerSecond + 1e-6));
    return {steps + 1, motion.begin, 1.0 / framesPerSecond};
}

Moments Moments::spread(const Motion& motion, unsigned int count)
{
    const double length = motion.end - motion.begin;
    const unsigned int pictures = length > 0.0 ? std::max(count, 1U) : 1;
    const unsigned int steps = motion.loops ? pictures : pictures - 1;
    return {pictures, motion.begin, steps > 0 ? length / steps : 0.0};
}
}  // namespace tools
