#include <platform/runtime/exception.h>
#include <platform/runtime/script_tree.h>
#include <platform/runtime/str.h>

#include <algorithm>

namespace
{
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v';
}

/// Whether `c` ends a word.
bool isDelimiter(char c)
{
    return isSpace(c) || c == '{' || c == '}' || c == '(' || c == ')' || c == '"';
}

enum class TokenKind
{
    end,
    open,   // {
    close,  // }
    value
};

struct Token
{
    TokenKind m_eKind = TokenKind::end;
    unsigned int m_uLine = 1;
    S_ScriptValue m_value;
};

/// What a token looks like, for messages.
S_String describe(const Token& token)
{
    switch (token.m_eKind)
    {
        case TokenKind::end:
            return "the end of the script";
        case TokenKind::open:
            return "{";
        case TokenKind::close:
            return "}";
        case TokenKind::value:
            break;
    }
    return S_STR("\"%s\"", token.m_value.m_strText.c_str()).str();
}
}  // namespace

/// Reads the text of a script into a tree, with a stack of its own instead of recursion.
class S_ScriptReader
{
public:
    S_ScriptReader(S_ScriptTree& tree, std::string_view text) : m_tree(tree), m_strText(text) {}

    void read()
    {
        if (m_strText.starts_with(byteOrderMark))
        {
            m_uPosition = byteOrderMark.size();
        }
        for (Token token = next(); token.m_eKind != TokenKind::end; token = next())
        {
            if (token.m_eKind == TokenKind::close)
            {
                closeBlock(token);
            }
            else
            {
                readItem(token);
            }
        }
        if (m_uBlock != S_ScriptTree::topLevel)
        {
            fail(
                m_uLine, nullptr,
                S_STR("expected } for the block that begins in line %u, found the end of the script", block().m_uLine));
        }
        closeBlock();
    }

private:
    S_ScriptTree::Block& block() { return m_tree.m_vecBlocks[m_uBlock]; }

    [[noreturn]] void fail(unsigned int line, const char* key, const char* problem) const
    {
        m_tree.fail(line, m_uBlock, key, problem);
    }

    // -- Items --------------------------------------------------------------------------------------------------------

    void readItem(Token& name)
    {
        if (name.m_eKind != TokenKind::value || name.m_value.m_eKind == S_ScriptValueKind::vector ||
            name.m_value.m_strText.empty())
        {
            fail(name.m_uLine, nullptr, S_STR("expected a block name, a key or }, found %s", describe(name).c_str()));
        }
        Token second = next();
        if (second.m_eKind == TokenKind::open)
        {
            openBlock(name);
            return;
        }
        const char* key = name.m_value.m_strText.c_str();
        if (second.m_eKind != TokenKind::value || second.m_uLine != name.m_uLine)
        {
            fail(name.m_uLine, key, "expected a value in the same line, or { for a block of this name");
        }
        if (m_uBlock == S_ScriptTree::topLevel)
        {
            fail(name.m_uLine, key, "expected keys inside blocks only; a block is written as: name { key value }");
        }
        block().m_vecKeys.push_back({std::move(name.m_value.m_strText), std::move(second.m_value), name.m_uLine});
    }

    void openBlock(Token& name)
    {
        if (m_uDepth == S_ScriptTree::maximumDepth)
        {
            fail(name.m_uLine, nullptr, S_STR("expected blocks nested at most %zu deep", S_ScriptTree::maximumDepth));
        }
        const unsigned int index = static_cast<unsigned int>(m_tree.m_vecBlocks.size());
        block().m_vecBlocks.push_back(index);
        S_ScriptTree::Block& opened = m_tree.m_vecBlocks.emplace_back();
        opened.m_strName = std::move(name.m_value.m_strText);
        opened.m_uLine = name.m_uLine;
        opened.m_uParent = m_uBlock;
        m_uBlock = index;
        ++m_uDepth;
    }

    void closeBlock(const Token& token)
    {
        if (m_uBlock == S_ScriptTree::topLevel)
        {
            fail(token.m_uLine, nullptr, "expected a block name, found } without an open block");
        }
        closeBlock();
        m_uBlock = block().m_uParent;
        --m_uDepth;
    }

    void closeBlock()
    {
        S_Vector<unsigned int>& byName = block().m_vecBlocksByName;
        byName = block().m_vecBlocks;
        std::sort(byName.begin(), byName.end(),
                  [&](unsigned int a, unsigned int b)
                  {
                      const int order = m_tree.m_vecBlocks[a].m_strName.compare(m_tree.m_vecBlocks[b].m_strName);
                      return order != 0 ? order < 0 : a < b;
                  });
    }

    // -- Tokens -------------------------------------------------------------------------------------------------------

    [[nodiscard]] bool atEnd() const { return m_uPosition == m_strText.size(); }
    [[nodiscard]] bool atText(std::string_view text) const { return m_strText.substr(m_uPosition).starts_with(text); }
    [[nodiscard]] bool atLineEnd() const { return atText("\n") || atText("\r"); }
    [[nodiscard]] bool atComment() const { return atText("//") || atText("/*"); }

    /// Takes a character and counts lines: they end with "\n", "\r\n" or "\r".
    char take()
    {
        const char c = m_strText[m_uPosition++];
        m_uLine += c == '\n' || (c == '\r' && !atText("\n"));
        return c;
    }

    void skipSpaceAndComments()
    {
        while (!atEnd())
        {
            if (isSpace(m_strText[m_uPosition]))
            {
                take();
            }
            else if (atText("//"))
            {
                while (!atEnd() && !atLineEnd())
                {
                    take();
                }
            }
            else if (atText("/*"))
            {
                skipBlockComment();
            }
            else
            {
                return;
            }
        }
    }

    void skipBlockComment()
    {
        const unsigned int line = m_uLine;
        const std::size_t end = m_strText.find("*/", m_uPosition + 2);
        if (end == std::string_view::npos)
        {
            fail(line, nullptr, "expected */ for the comment that begins here");
        }
        while (m_uPosition < end + 2)
        {
            take();
        }
    }

    Token next()
    {
        skipSpaceAndComments();
        Token token;
        token.m_uLine = m_uLine;
        if (atEnd())
        {
            return token;
        }
        token.m_eKind = TokenKind::value;
        switch (m_strText[m_uPosition])
        {
            case '{':
                token.m_eKind = TokenKind::open;
                take();
                break;
            case '}':
                token.m_eKind = TokenKind::close;
                take();
                break;
            case '"':
                token.m_value = {S_ScriptValueKind::quoted, takeQuoted()};
                break;
            case '(':
                token.m_value = {S_ScriptValueKind::vector, takeVector()};
                break;
            case ')':
                fail(m_uLine, nullptr, "expected ( before )");
            default:
                token.m_value.m_strText = takeWord();
        }
        return token;
    }

    S_String takeWord()
    {
        const std::size_t begin = m_uPosition;
        while (!atEnd() && !isDelimiter(m_strText[m_uPosition]) && !atComment())
        {
            requirePrintable();
            ++m_uPosition;
        }
        return S_String(m_strText.substr(begin, m_uPosition - begin));
    }

    /// A backslash stands for itself, except before a quotation mark and before a backslash.
    S_String takeQuoted()
    {
        S_String text;
        ++m_uPosition;
        while (!atEnd() && !atLineEnd() && !atText("\""))
        {
            requirePrintable();
            m_uPosition += atText("\\\"") || atText("\\\\");
            text += m_strText[m_uPosition++];
        }
        takeClosing("\"", "expected a closing quotation mark in the same line");
        return text;
    }

    S_String takeVector()
    {
        const std::size_t begin = m_uPosition;
        while (!atEnd() && !atLineEnd() && !atText(")"))
        {
            requirePrintable();
            ++m_uPosition;
        }
        takeClosing(")", "expected ) in the same line");
        return S_String(m_strText.substr(begin, m_uPosition - begin));
    }

    void takeClosing(std::string_view closing, const char* problem)
    {
        if (!atText(closing))
        {
            fail(m_uLine, nullptr, problem);
        }
        ++m_uPosition;
    }

    /// Control characters would make names that look alike, and a zero would cut them short.
    void requirePrintable() const
    {
        const unsigned char c = static_cast<unsigned char>(m_strText[m_uPosition]);
        if ((c < 0x20 && c != '\t') || c == 0x7F)
        {
            fail(m_uLine, nullptr, S_STR("expected text, found a byte of value 0x%02X", c));
        }
    }

    S_ScriptTree& m_tree;
    std::string_view m_strText;
    std::size_t m_uPosition = 0;
    unsigned int m_uLine = 1;
    unsigned int m_uBlock = S_ScriptTree::topLevel;
    std::size_t m_uDepth = 0;
};

S_ScriptTree::S_ScriptTree(std::string_view fileName, std::string_view text) : m_strFileName(fileName), m_vecBlocks(1)
{
    S_ScriptReader(*this, text).read();
}

std::pair<const unsigned int*, const unsigned int*> S_ScriptTree::find(unsigned int parent,
                                                                       std::string_view name) const noexcept
{
    const S_Vector<unsigned int>& blocks = m_vecBlocks[parent].m_vecBlocksByName;
    const unsigned int* first = blocks.data();
    const unsigned int* last = first + blocks.size();
    const auto nameOf = [this](unsigned int block) { return std::string_view(m_vecBlocks[block].m_strName); };
    first = std::partition_point(first, last, [&](unsigned int block) { return nameOf(block) < name; });
    last = std::partition_point(first, last, [&](unsigned int block) { return nameOf(block) == name; });
    return {first, last};
}

S_String S_ScriptTree::getNesting(unsigned int block) const
{
    S_Vector<const S_String*> names;
    for (; block != topLevel; block = m_vecBlocks[block].m_uParent)
    {
        names.push_back(&m_vecBlocks[block].m_strName);
    }
    S_String text;
    for (auto name = names.rbegin(); name != names.rend(); ++name)
    {
        text.append(text.empty() ? "" : ": ").append(**name);
    }
    return text;
}

void S_ScriptTree::fail(unsigned int line, unsigned int block, const char* key, const char* problem) const
{
    throw S_ScriptException(m_strFileName.c_str(), line, getNesting(block).c_str(), key, problem);
}
