#pragma once

#include "convert/model.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace TW2::convert
{
/// Which node of one model is which of another where their names do not tell: "FROM TO" lines of a file, TO being "-"
/// for a node that moves nothing.
class NodeMap
{
public:
    NodeMap() = default;
    /// Throws ConvertException with file and line for a node that is mapped twice, S_FileException when the file cannot
    /// be read.
    explicit NodeMap(const std::string& fileName);

    /// Throws ConvertException for a line whose FROM is in none of the models, or whose TO is not in the body.
    void check(const Model& body, const std::vector<const Model*>& others) const;
    /// The name that a node's is mapped to; null when the file does not say.
    [[nodiscard]] const std::string* find(const std::string& name) const;

private:
    struct Entry
    {
        unsigned int m_uiLine;
        std::string m_strFrom;
        std::string m_strTo;
    };
    std::string m_strFile;
    std::vector<Entry> m_vecEntries;
};

/// How many nodes have found a counterpart by what.
struct MatchCounts
{
    std::size_t m_uiByMap;
    std::size_t m_uiByName;
    std::size_t m_uiBySpelling;
};

/// Counterparts of one model's nodes in another.
struct NodeMatch
{
    std::vector<int> m_vecTo;    ///< per node of the other model: the body's, or -1
    std::vector<int> m_vecFrom;  ///< per node of the body: the other model's, or -1
    MatchCounts m_counts{};
};

/// By the map, then by equal names, then by names that are spelled otherwise: letter case, what stands before a colon,
/// what most names of a model begin with, marks between words, zeros before numbers, and the side as "left", "L" or
/// "Lft", before or behind. Of several nodes that fit the first counts.
[[nodiscard]] NodeMatch matchNodes(const Model& body, const Model& other, const NodeMap& map);

/// The first node of that name; when there is none, the first whose name is spelled otherwise; else -1.
[[nodiscard]] int findNode(const Model& model, const std::string& name);
}  // namespace TW2::convert
