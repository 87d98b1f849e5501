#pragma once

#include <platform/runtime/allocator.h>

#include <cstddef>
#include <string_view>
#include <utility>

/// How the value of a key was written.
enum class S_ScriptValueKind
{
    word,
    quoted,  ///< "text"; the escapes are resolved
    vector   ///< "(...)", with its parentheses
};

/// Value of a key as it was written.
struct S_ScriptValue
{
    S_ScriptValueKind m_eKind = S_ScriptValueKind::word;
    S_String m_strText;
};

/// The blocks of a script as a tree, held in one list in file order; block 0 is the top level. Private to S_Script.
class S_ScriptTree
{
public:
    static constexpr unsigned int topLevel = 0;
    /// Deepest nesting of blocks.
    static constexpr std::size_t maximumDepth = 64;

    struct Key
    {
        S_String m_strName;
        S_ScriptValue m_value;
        unsigned int m_uLine = 0;
    };
    struct Block
    {
        S_String m_strName;
        unsigned int m_uLine = 1;
        unsigned int m_uParent = topLevel;
        S_Vector<unsigned int> m_vecBlocks;        // in file order
        S_Vector<unsigned int> m_vecBlocksByName;  // by name, equal names in file order
        S_Vector<Key> m_vecKeys;
    };

    /// Reads a script. Throws S_ScriptException; `fileName` stands where it names the file.
    S_ScriptTree(std::string_view fileName, std::string_view text);

    [[nodiscard]] const S_String& getFilename() const noexcept { return m_strFileName; }
    [[nodiscard]] const Block& getBlock(unsigned int index) const noexcept { return m_vecBlocks[index]; }
    /// The blocks of that name inside block `parent`, in file order.
    [[nodiscard]] std::pair<const unsigned int*, const unsigned int*> find(unsigned int parent,
                                                                           std::string_view name) const noexcept;
    /// The names from the outermost block to `block`, joined by ": "; empty for the top level.
    [[nodiscard]] S_String getNesting(unsigned int block) const;
    /// Throws S_ScriptException for a place inside `block`; `key` may be null.
    [[noreturn]] void fail(unsigned int line, unsigned int block, const char* key, const char* problem) const;

private:
    friend class S_ScriptReader;

    S_String m_strFileName;
    S_Vector<Block> m_vecBlocks;
};
