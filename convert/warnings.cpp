#include "convert/warnings.h"

#include <algorithm>

namespace TW2::convert
{
void Warnings::addLeftOut(const std::string& part, const std::string& what)
{
    auto entry = std::find_if(m_vecEntries.begin(), m_vecEntries.end(),
                              [&what](const Entry& candidate)
                              { return !candidate.m_vecParts.empty() && candidate.m_strText == what; });
    if (entry == m_vecEntries.end())
    {
        entry = m_vecEntries.insert(m_vecEntries.end(), {what, {}});
    }
    if (std::find(entry->m_vecParts.begin(), entry->m_vecParts.end(), part) == entry->m_vecParts.end())
    {
        entry->m_vecParts.push_back(part);
    }
}

std::vector<std::string> Warnings::makeLines() const
{
    constexpr std::size_t mostNamed = 4;
    std::vector<std::string> lines;
    for (const Entry& entry : m_vecEntries)
    {
        std::string line;
        const std::size_t count = entry.m_vecParts.size();
        // A line says either all names or how many more there are, and never "and 1 more".
        const std::size_t named = count <= mostNamed + 1 ? count : mostNamed;
        for (std::size_t i = 0; i < named; ++i)
        {
            line += (i == 0 ? "" : ", ") + entry.m_vecParts[i];
        }
        if (named < count)
        {
            line += " and " + std::to_string(count - named) + " more";
        }
        lines.push_back(count == 0 ? entry.m_strText : line + ": left out: " + entry.m_strText);
    }
    return lines;
}
}  // namespace TW2::convert
