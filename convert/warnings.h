#pragma once

#include <string>
#include <utility>
#include <vector>

namespace TW2::convert
{
/// What a reader leaves out: one line for each thing, however many parts of the model it is left out of.
class Warnings
{
public:
    /// `what` is left out of `part`, such as `material "hair"`.
    void addLeftOut(const std::string& part, const std::string& what);
    /// A line of its own.
    void add(std::string line) { m_vecEntries.push_back({std::move(line), {}}); }

    /// In the order in which they came up.
    [[nodiscard]] std::vector<std::string> makeLines() const;

private:
    struct Entry
    {
        std::string m_strText;
        std::vector<std::string> m_vecParts;
    };
    std::vector<Entry> m_vecEntries;
};
}  // namespace TW2::convert
