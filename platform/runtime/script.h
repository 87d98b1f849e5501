#pragma once

#include <platform/export.h>
#include <platform/runtime/allocator.h>

#include <memory>
#include <string>

/// Text script of named blocks with braces, nested, and `key value` lines.
///
///     soldier
///     {
///         geometry { exportdata "soldier.tw"  crossmode normalized }
///         animation { index 0  filename "idle.tw" }   // comment
///     }
///
/// A script object has a current position: the file's top level, or a block that was locked. Everything that is asked
/// by name or index is asked of the blocks directly inside the current one. Block and key names are case-sensitive.
/// A key's value stands in the key's line: a whole number, a float, "(x, y, z)", a word or a "quoted string" with \"
/// and
/// \\. Comments are // and /* */. Blocks nest at most 64 deep. Every complaint is an S_ScriptException that names file,
/// line, block and key, and what would be right.
class TW2_PLATFORM_API S_Script
{
public:
    /// How a value is read and what its destination points to.
    enum Format
    {
        t_string,  ///< word or quoted string; S_String
        t_int,     ///< whole number; int
        t_float,   ///< number; float
        t_float3   ///< "(x, y, z)"; M_Vector3Template<float>
    };

    /// One row of a table of blocks: how often a block of that name may stand here. A table ends with a null name.
    struct Blocks
    {
        const char* m_pName;  ///< the block's name; null ends the table
        int m_iMinimum;       ///< at least so often
        int m_iMaximum;       ///< at most so often; -1: any number
    };

    /// One row of a table of keys. A table ends with a null name.
    struct Variables
    {
        const char* m_pName;     ///< the key; null ends the table
        Format m_eFormat;        ///< how the value is written
        void* m_pDestination;    ///< where the value goes; its type is the format's
        const char* m_pDefault;  ///< text taken when the key is missing; null: the key must be given
    };

    /// @name Life
    /// @{

    /// Reads and checks the whole file. Throws S_FileException or S_ScriptException.
    explicit S_Script(const char* fileName);
    /// The same with a std::string, or one with another allocator.
    template <typename Allocator>
    explicit S_Script(const std::basic_string<char, std::char_traits<char>, Allocator>& fileName)
        : S_Script(fileName.c_str())
    {
    }
    /// A script from text in memory; `name` stands where messages name the file.
    static S_Script fromText(const char* name, const char* text);
    /// Takes the text and the place in it over.
    S_Script(S_Script&&) noexcept;
    /// The same, in the place of what was there.
    S_Script& operator=(S_Script&&) noexcept;
    S_Script(const S_Script&) = delete;
    S_Script& operator=(const S_Script&) = delete;
    /// Locks need not be undone before.
    ~S_Script();
    /// @}

    /// @name Position
    /// @{

    /// Makes the `occurrence`-th (from 0) block of that name inside the current one the current block. Throws when
    /// there is none.
    void lock(const char* name, unsigned int occurrence);
    /// Makes block `index` (from 0, in file order) inside the current one the current block. Throws when there is none.
    void lock(unsigned int index);
    /// Returns to the enclosing block. Throws at top level.
    void unlock();
    /// Number of locks that are not undone.
    [[nodiscard]] unsigned int getDepth() const noexcept;
    /// @}

    /// @name Asking
    /// @{

    /// Checks how often each block of `blocks` stands in the current one. With `strict` a block that the table does not
    /// name, and a key, is an error as well.
    void blockCheck(const Blocks* blocks, bool strict) const;
    /// Reads the keys of the `occurrence`-th block of that name inside the current one into their destinations; missing
    /// keys get their defaults. With `strict` a key that the table does not name is an error, and a block inside that
    /// `blocks` (null: none) does not name. A key given twice is an error. Destinations are only written when the whole
    /// block is right.
    void parse(const Variables* variables, const char* subBlockName, unsigned int occurrence, bool strict,
               const Blocks* blocks = nullptr) const;
    /// How many blocks of that name stand inside the current one.
    [[nodiscard]] unsigned int count(const char* subBlockName) const;
    /// How many blocks stand inside the current one.
    [[nodiscard]] unsigned int getBlockCount() const;
    /// Name of block `index` inside the current one. Throws when there is none.
    [[nodiscard]] const char* getBlockName(unsigned int index) const;
    /// Line of a key of the `occurrence`-th block of that name inside the current one, for messages; the block's own
    /// when it has no such key. Throws when there is no such block.
    [[nodiscard]] unsigned int getKeyLine(const char* subBlockName, unsigned int occurrence, const char* key) const;
    /// The name the script was opened with.
    [[nodiscard]] const char* getScriptName() const noexcept;
    /// The full path of the folder that holds the script's file, with its closing separator, as it was when the script
    /// was opened; of a script from text the folder in which its name would stand.
    [[nodiscard]] const char* getFolder() const noexcept;
    /// Where the script stands, for names and messages: the script's name, then the locked blocks, joined by ": ".
    /// Valid until the next call of `lock`, `unlock` or `staticNesting`.
    [[nodiscard]] const char* staticNesting() const;
    /// @}

private:
    struct Data;
    struct DataDeleter
    {
        void operator()(Data* data) const noexcept;
    };
    explicit S_Script(std::unique_ptr<Data, DataDeleter> data) noexcept;

    std::unique_ptr<Data, DataDeleter> m_pData;
};

/// Undoes the locks made since its creation when the scope ends, also when an exception passes.
class TW2_PLATFORM_API S_ScriptLockGuard
{
public:
    /// Remembers how deep the script stands in blocks.
    explicit S_ScriptLockGuard(S_Script& script) noexcept : m_script(script), m_uDepth(script.getDepth()) {}
    ~S_ScriptLockGuard();
    S_ScriptLockGuard(const S_ScriptLockGuard&) = delete;
    S_ScriptLockGuard& operator=(const S_ScriptLockGuard&) = delete;

private:
    S_Script& m_script;
    unsigned int m_uDepth;
};
