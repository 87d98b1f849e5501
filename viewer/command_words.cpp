#include "viewer/command_words.h"

#include "viewer/viewer.h"

#include <platform/runtime/number.h>

#include <cmath>
#include <system_error>

namespace TW2::viewer
{
double toNumber(const std::string& text)
{
    double value = 0.0;
    const auto [end, error] = S_fromChars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value))
    {
        throw Failure("\"" + text + "\" is not a number");
    }
    return value;
}

int toWhole(const std::string& text)
{
    const double value = toNumber(text);
    if (value != std::floor(value) || std::abs(value) > 1e9)
    {
        throw Failure("\"" + text + "\" is not a whole number");
    }
    return static_cast<int>(value);
}

LoadedObject& needObject(Viewer& viewer)
{
    if (!viewer.getObject())
    {
        throw Failure("nothing is loaded");
    }
    return *viewer.getObject();
}

std::size_t choose(const std::string& word, std::span<const std::string_view> words)
{
    const auto found = std::find(words.begin(), words.end(), word);
    if (found == words.end())
    {
        std::string all;
        for (const std::string_view each : words)
        {
            all += (all.empty() ? "" : ", ") + std::string(each);
        }
        throw Failure("\"" + word + "\" is none of: " + all);
    }
    return static_cast<std::size_t>(found - words.begin());
}

bool toSwitch(const Arguments& arguments, std::size_t place, bool now)
{
    constexpr std::array<std::string_view, 3> words{"off", "on", "toggle"};
    const std::size_t word = place < arguments.size() ? choose(arguments[place], words) : 2;
    return word == 2 ? !now : word == 1;
}
}  // namespace TW2::viewer
