#include "convert/node_match.h"

#include "convert/text_table.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <unordered_map>

namespace TW2::convert
{
namespace
{
bool isUpper(char c)
{
    return c >= 'A' && c <= 'Z';
}
bool isLower(char c)
{
    return c >= 'a' && c <= 'z';
}
bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}
/// Also what is no ASCII.
bool isWordSign(char c)
{
    return isUpper(c) || isLower(c) || isDigit(c) || static_cast<unsigned char>(c) >= 0x80;
}

/// Whether a word of a name, or a mark between words, may begin at `i`, which is not the name's first letter.
bool beginsWord(std::string_view name, std::size_t i)
{
    const char before = name[i - 1];
    const char here = name[i];
    const bool hump =
        isUpper(here) && (isLower(before) || (isUpper(before) && i + 1 < name.size() && isLower(name[i + 1])));
    return !isWordSign(before) || hump || isDigit(here) != isDigit(before);
}

std::string_view withoutNamespace(std::string_view name)
{
    const std::size_t colon = name.rfind(':');
    return colon == std::string_view::npos || colon + 1 == name.size() ? name : name.substr(colon + 1);
}

/// What most names of a model begin with, up to the beginning of a word; empty for none.
std::string findPrefix(const Model& model)
{
    constexpr double most = 0.6;
    constexpr std::size_t fewest = 4;
    std::map<std::string, std::size_t> counts;
    for (const Node& node : model.m_vecNodes)
    {
        const std::string_view name = withoutNamespace(node.m_strName);
        for (std::size_t i = 1; i < name.size(); ++i)
        {
            if (beginsWord(name, i))
            {
                ++counts[std::string(name.substr(0, i))];
            }
        }
    }
    std::string longest;
    for (const auto& [prefix, count] : counts)
    {
        const bool common =
            count >= fewest && static_cast<double>(count) >= most * static_cast<double>(model.m_vecNodes.size());
        longest = common && prefix.size() > longest.size() ? prefix : longest;
    }
    return longest;
}

/// The side that a word tells, if it tells one.
char findSide(const std::string& word)
{
    return word == "l" || word == "left" || word == "lft"    ? 'l'
           : word == "r" || word == "right" || word == "rgt" ? 'r'
                                                             : '\0';
}

/// Words in lower case, numbers without zeros before them; "left" and "right" are words of their own.
std::vector<std::string> splitWords(std::string_view name)
{
    std::vector<std::string> words;
    for (std::size_t i = 0; i < name.size(); ++i)
    {
        if (i == 0 || beginsWord(name, i) || words.empty())
        {
            words.emplace_back();
        }
        if (isWordSign(name[i]))
        {
            words.back() += isUpper(name[i]) ? static_cast<char>(name[i] - 'A' + 'a') : name[i];
        }
    }
    std::vector<std::string> result;
    for (std::string& word : words)
    {
        for (const std::string_view side : {"left", "right"})
        {
            if (word.size() > side.size() && word.starts_with(side))
            {
                result.emplace_back(side);
                word.erase(0, side.size());
            }
        }
        word.erase(0, isDigit(word.empty() ? '\0' : word[0]) ? std::min(word.find_first_not_of('0'), word.size()) : 0);
        if (!word.empty())
        {
            result.push_back(word);
        }
    }
    return result;
}

/// Equal for names that differ in spelling only.
std::string makeKey(std::string_view name, const std::string& prefix)
{
    name = withoutNamespace(name);
    if (!prefix.empty() && name.size() > prefix.size() && name.starts_with(prefix))
    {
        name.remove_prefix(prefix.size());
    }
    char side = '\0';
    std::string key;
    for (const std::string& word : splitWords(name))
    {
        const char told = side == '\0' ? findSide(word) : '\0';
        side = told != '\0' ? told : side;
        key += told != '\0' ? "" : word;
    }
    return side == '\0' ? key : key + "|" + side;
}

class Matcher
{
public:
    Matcher(const Model& body, const Model& other) : m_body(body), m_other(other)
    {
        m_match.m_vecTo.assign(other.m_vecNodes.size(), -1);
        m_match.m_vecFrom.assign(body.m_vecNodes.size(), -1);
        m_vecOpen.resize(other.m_vecNodes.size());
    }

    NodeMatch match(const NodeMap& map)
    {
        const auto plain = [](const Model& model)
        { return [&model](std::size_t node) { return model.m_vecNodes[node].m_strName; }; };
        for (std::size_t i = 0; i < m_vecOpen.size(); ++i)
        {
            m_vecOpen[i] = map.find(m_other.m_vecNodes[i].m_strName) != nullptr;
        }
        m_match.m_counts.m_uiByMap = pair(
            plain(m_body), [this, &map](std::size_t node) { return *map.find(m_other.m_vecNodes[node].m_strName); });
        m_vecOpen.flip();
        m_match.m_counts.m_uiByName = pair(plain(m_body), plain(m_other));
        const auto spelled = [](const Model& model)
        {
            return [&model, prefix = findPrefix(model)](std::size_t node)
            { return makeKey(model.m_vecNodes[node].m_strName, prefix); };
        };
        m_match.m_counts.m_uiBySpelling = pair(spelled(m_body), spelled(m_other));
        return std::move(m_match);
    }

private:
    /// Pairs what has no counterpart yet and the same name; returns how many that were.
    template <typename NameInBody, typename NameInOther>
    std::size_t pair(NameInBody nameInBody, NameInOther nameInOther)
    {
        std::unordered_map<std::string, std::size_t> byName;
        for (std::size_t i = 0; i < m_match.m_vecFrom.size(); ++i)
        {
            if (m_match.m_vecFrom[i] < 0)
            {
                byName.try_emplace(nameInBody(i), i);
            }
        }
        std::size_t count = 0;
        for (std::size_t i = 0; i < m_match.m_vecTo.size(); ++i)
        {
            if (!m_vecOpen[i] || m_match.m_vecTo[i] >= 0)
            {
                continue;
            }
            const std::string name = nameInOther(i);
            const auto found = name.empty() ? byName.end() : byName.find(name);
            if (found != byName.end())
            {
                m_match.m_vecTo[i] = static_cast<int>(found->second);
                m_match.m_vecFrom[found->second] = static_cast<int>(i);
                byName.erase(found);
                ++count;
            }
        }
        return count;
    }

    const Model& m_body;
    const Model& m_other;
    NodeMatch m_match;
    std::vector<bool> m_vecOpen;  // per node of the other model: whether its counterpart is looked for now
};

bool hasNode(const Model& model, const std::string& name)
{
    return std::any_of(model.m_vecNodes.begin(), model.m_vecNodes.end(),
                       [&name](const Node& node) { return node.m_strName == name; });
}
}  // namespace

NodeMap::NodeMap(const std::string& fileName) : m_strFile(fileName)
{
    for (const TextLine& line : readTextTable(fileName, "FROM TO"))
    {
        if (find(line.m_vecFields[0]))
        {
            failAt(fileName, line.m_uiNumber, "\"" + line.m_vecFields[0] + "\" is mapped twice");
        }
        m_vecEntries.push_back({line.m_uiNumber, line.m_vecFields[0], line.m_vecFields[1]});
    }
}

void NodeMap::check(const Model& body, const std::vector<const Model*>& others) const
{
    for (const Entry& entry : m_vecEntries)
    {
        if (std::none_of(others.begin(), others.end(),
                         [&entry](const Model* other) { return hasNode(*other, entry.m_strFrom); }))
        {
            failAt(m_strFile, entry.m_uiLine, "no model that gives motion has a node \"" + entry.m_strFrom + "\"");
        }
        if (entry.m_strTo != "-" && !hasNode(body, entry.m_strTo))
        {
            failAt(m_strFile, entry.m_uiLine, "the character has no node \"" + entry.m_strTo + "\"");
        }
    }
}

const std::string* NodeMap::find(const std::string& name) const
{
    const auto found = std::find_if(m_vecEntries.begin(), m_vecEntries.end(),
                                    [&name](const Entry& entry) { return entry.m_strFrom == name; });
    return found == m_vecEntries.end() ? nullptr : &found->m_strTo;
}

NodeMatch matchNodes(const Model& body, const Model& other, const NodeMap& map)
{
    return Matcher(body, other).match(map);
}

int findNode(const Model& model, const std::string& name)
{
    const std::string prefix = findPrefix(model);
    const std::string key = makeKey(name, prefix);
    int spelled = -1;
    for (std::size_t i = 0; i < model.m_vecNodes.size(); ++i)
    {
        const std::string& own = model.m_vecNodes[i].m_strName;
        if (own == name)
        {
            return static_cast<int>(i);
        }
        if (spelled < 0 && !key.empty() && makeKey(own, prefix) == key)
        {
            spelled = static_cast<int>(i);
        }
    }
    return spelled;
}
}  // namespace TW2::convert
