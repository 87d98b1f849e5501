#pragma once

#include <algorithm>
#include <cctype>
#include <set>
#include <string>

namespace TW2::convert
{
/// Gives out names of which no two are the same, also when letter case does not count.
class UniqueNames
{
public:
    /// `fallback` stands for empty names.
    explicit UniqueNames(std::string fallback) : m_strFallback(std::move(fallback)) {}

    /// `wanted` itself, or with a number behind it when it was given out before.
    std::string make(const std::string& wanted)
    {
        const std::string base = wanted.empty() ? m_strFallback : wanted;
        std::string name = base;
        for (int number = 2; !m_setTaken.insert(lower(name)).second; ++number)
        {
            name = base + "_" + std::to_string(number);
        }
        return name;
    }

private:
    static std::string lower(std::string text)
    {
        std::transform(text.begin(), text.end(), text.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        return text;
    }

    std::string m_strFallback;
    std::set<std::string> m_setTaken;
};
}  // namespace TW2::convert
