#include <platform/math/vector3.h>
#include <platform/runtime/file.h>
#include <platform/runtime/number.h>
#include <platform/runtime/script.h>
#include <platform/runtime/script_tree.h>
#include <platform/runtime/str.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>
#include <variant>

namespace
{
using Value = std::variant<S_String, int, float, M_Vector3Template<float>>;

/// The outcome of reading a value: the value, or what would have been right.
struct ReadValue
{
    Value m_value;
    const char* m_pExpected = nullptr;  // null: the value is right
};

constexpr const char* anyStringForm = "a word or a \"quoted string\"";
constexpr const char* wholeNumberForm = "a whole number";
constexpr const char* wholeNumberInRangeForm = "a whole number from -2147483648 to 2147483647";
constexpr const char* numberForm = "a number";
constexpr const char* numberInRangeForm = "a number of at most 3.4e38 and, unless 0, at least 1.4e-45 in magnitude";
constexpr const char* vectorForm = "three numbers as (x, y, z)";

const char* describe(S_Script::Format format)
{
    switch (format)
    {
        case S_Script::t_string:
            return anyStringForm;
        case S_Script::t_int:
            return wholeNumberForm;
        case S_Script::t_float:
            return numberForm;
        case S_Script::t_float3:
            return vectorForm;
    }
    return "a format that S_Script knows";
}

std::string_view trim(std::string_view text)
{
    const auto isSpace = [](char c) { return c == ' ' || c == '\t'; };
    while (!text.empty() && isSpace(text.front()))
    {
        text.remove_prefix(1);
    }
    while (!text.empty() && isSpace(text.back()))
    {
        text.remove_suffix(1);
    }
    return text;
}

/// Reads a whole text as a number, the same in every locale. Returns null or what was expected.
template <typename T>
const char* readNumber(std::string_view text, T& value, const char* expected, const char* expectedInRange)
{
    if (text.size() > 1 && text[0] == '+' && text[1] != '-')
    {
        text.remove_prefix(1);
    }
    const auto [end, error] = S_fromChars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::invalid_argument || end != text.data() + text.size())
    {
        return expected;
    }
    if (error == std::errc::result_out_of_range)
    {
        return expectedInRange;
    }
    if constexpr (std::is_floating_point_v<T>)
    {
        if (!std::isfinite(value))  // "inf" and "nan" are words here
        {
            return expected;
        }
    }
    return nullptr;
}

const char* readFloat(std::string_view text, float& value)
{
    return readNumber(text, value, numberForm, numberInRangeForm);
}

const char* readVector(std::string_view text, M_Vector3Template<float>& value)
{
    text = trim(text);
    if (text.size() < 2 || text.front() != '(' || text.back() != ')')
    {
        return vectorForm;
    }
    text = text.substr(1, text.size() - 2);
    float* const components[] = {&value.x, &value.y, &value.z};
    for (float* component : components)
    {
        const bool last = component == &value.z;
        const std::size_t comma = text.find(',');
        if (last != (comma == std::string_view::npos))
        {
            return vectorForm;
        }
        if (const char* expected = readFloat(trim(text.substr(0, comma)), *component))
        {
            return expected == numberInRangeForm ? expected : vectorForm;
        }
        text.remove_prefix(last ? 0 : comma + 1);
    }
    return nullptr;
}

/// Reads the text of a value or of a default.
ReadValue readText(S_Script::Format format, std::string_view text)
{
    ReadValue result;
    switch (format)
    {
        case S_Script::t_string:
            result.m_value = S_String(text);
            break;
        case S_Script::t_int:
            result.m_pExpected =
                readNumber(text, result.m_value.emplace<int>(), wholeNumberForm, wholeNumberInRangeForm);
            break;
        case S_Script::t_float:
            result.m_pExpected = readFloat(text, result.m_value.emplace<float>());
            break;
        case S_Script::t_float3:
            result.m_pExpected = readVector(text, result.m_value.emplace<M_Vector3Template<float>>());
            break;
    }
    return result;
}

ReadValue readValue(S_Script::Format format, const S_ScriptValue& value)
{
    const S_ScriptValueKind kind = value.m_eKind;
    const bool fits = format == S_Script::t_string   ? kind != S_ScriptValueKind::vector
                      : format == S_Script::t_float3 ? kind == S_ScriptValueKind::vector
                                                     : kind == S_ScriptValueKind::word;
    return fits ? readText(format, value.m_strText) : ReadValue{{}, describe(format)};
}

/// Moves a value to where its key's table row points. Cannot fail.
void store(Value& value, void* destination) noexcept
{
    std::visit([destination](auto& held)
               { *static_cast<std::remove_reference_t<decltype(held)>*>(destination) = std::move(held); },
               value);
}

/// The names of a table, for messages.
template <typename Row>
S_String listNames(const Row* table)
{
    S_String text;
    for (const Row* row = table; row->m_pName; ++row)
    {
        text.append(text.empty() ? "\"" : ", \"").append(row->m_pName).append("\"");
    }
    return text.empty() ? S_String("none") : text;
}

template <typename Row>
const Row* findRow(const Row* table, std::string_view name)
{
    const Row* row = table;
    while (row->m_pName && row->m_pName != name)
    {
        ++row;
    }
    return row->m_pName ? row : nullptr;
}

/// Throws for a block inside `outer` that the table (null: an empty one) does not name.
void requireKnownBlocks(const S_ScriptTree& tree, unsigned int outer, const S_Script::Blocks* known)
{
    for (const unsigned int index : tree.getBlock(outer).m_vecBlocks)
    {
        const S_ScriptTree::Block& block = tree.getBlock(index);
        if (!known || !findRow(known, block.m_strName))
        {
            tree.fail(block.m_uLine, outer, nullptr,
                      S_STR("block \"%s\" is not known here; known are: %s", block.m_strName.c_str(),
                            known ? listNames(known).c_str() : "none"));
        }
    }
}
}  // namespace

struct S_Script::Data : S_Allocated
{
    Data(std::string_view name, std::string_view text)
        : m_tree(name, text), m_strFolder(File.getPath(File.getFullPathName(name)))
    {
    }

    [[nodiscard]] unsigned int getCurrent() const
    {
        return m_vecLocked.empty() ? S_ScriptTree::topLevel : m_vecLocked.back();
    }
    [[nodiscard]] const S_ScriptTree::Block& getBlock() const { return m_tree.getBlock(getCurrent()); }

    /// Throws for the current block as a whole.
    [[noreturn]] void fail(const char* problem) const
    {
        m_tree.fail(getBlock().m_uLine, getCurrent(), nullptr, problem);
    }

    /// The block of that name, which must be there.
    [[nodiscard]] unsigned int find(const char* name, unsigned int occurrence) const
    {
        const auto [first, last] = m_tree.find(getCurrent(), name);
        const std::size_t found = static_cast<std::size_t>(last - first);
        if (occurrence >= found)
        {
            fail(S_STR("expected at least %u block(s) \"%s\", found %zu; the blocks here are: %s", occurrence + 1, name,
                       found, listBlocks().c_str()));
        }
        return first[occurrence];
    }

    [[nodiscard]] unsigned int find(unsigned int index) const
    {
        const S_Vector<unsigned int>& blocks = getBlock().m_vecBlocks;
        if (index >= blocks.size())
        {
            fail(S_STR("expected a block index below %zu, the number of blocks here, not %u", blocks.size(), index));
        }
        return blocks[index];
    }

    /// The names of the blocks here, for messages: each once, and not too many.
    [[nodiscard]] S_String listBlocks() const
    {
        constexpr int limit = 10;
        S_String text;
        std::string_view previous;
        int names = 0;
        for (const unsigned int block : getBlock().m_vecBlocksByName)
        {
            const S_String& name = m_tree.getBlock(block).m_strName;
            if (previous == name)
            {
                continue;
            }
            if (++names > limit)
            {
                return text + ", ...";
            }
            text.append(text.empty() ? "\"" : ", \"").append(name).append("\"");
            previous = name;
        }
        return text.empty() ? S_String("none") : text;
    }

    S_ScriptTree m_tree;
    S_String m_strFolder;
    S_Vector<unsigned int> m_vecLocked;
    mutable S_String m_strNesting;
};

void S_Script::DataDeleter::operator()(Data* data) const noexcept
{
    delete data;
}

// ---------------------------------------------------------------------------------------------------------------------
// Life
// ---------------------------------------------------------------------------------------------------------------------

S_Script::S_Script(std::unique_ptr<Data, DataDeleter> data) noexcept : m_pData(std::move(data)) {}

S_Script::S_Script(const char* fileName)
{
    const S_Bytes bytes = File.read(fileName);
    m_pData.reset(new Data(fileName, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size())));
}

S_Script S_Script::fromText(const char* name, const char* text)
{
    return S_Script(std::unique_ptr<Data, DataDeleter>(new Data(name, text)));
}

S_Script::S_Script(S_Script&&) noexcept = default;
S_Script& S_Script::operator=(S_Script&&) noexcept = default;
S_Script::~S_Script() = default;

// ---------------------------------------------------------------------------------------------------------------------
// Position
// ---------------------------------------------------------------------------------------------------------------------

void S_Script::lock(const char* name, unsigned int occurrence)
{
    m_pData->m_vecLocked.push_back(m_pData->find(name, occurrence));
}

void S_Script::lock(unsigned int index)
{
    m_pData->m_vecLocked.push_back(m_pData->find(index));
}

void S_Script::unlock()
{
    if (m_pData->m_vecLocked.empty())
    {
        m_pData->fail("expected a locked block to unlock");
    }
    m_pData->m_vecLocked.pop_back();
}

unsigned int S_Script::getDepth() const noexcept
{
    return static_cast<unsigned int>(m_pData->m_vecLocked.size());
}

S_ScriptLockGuard::~S_ScriptLockGuard()
{
    while (m_script.getDepth() > m_uDepth)
    {
        m_script.unlock();
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Asking
// ---------------------------------------------------------------------------------------------------------------------

void S_Script::blockCheck(const Blocks* blocks, bool strict) const
{
    const S_ScriptTree& tree = m_pData->m_tree;
    const unsigned int current = m_pData->getCurrent();
    if (strict)
    {
        requireKnownBlocks(tree, current, blocks);
        if (const S_Vector<S_ScriptTree::Key>& keys = tree.getBlock(current).m_vecKeys; !keys.empty())
        {
            tree.fail(keys.front().m_uLine, current, keys.front().m_strName.c_str(),
                      S_STR("is not known here; only blocks are: %s", listNames(blocks).c_str()));
        }
    }
    for (const Blocks* row = blocks; row->m_pName; ++row)
    {
        const auto [first, last] = tree.find(current, row->m_pName);
        const long long found = last - first;
        if (found < row->m_iMinimum)
        {
            m_pData->fail(S_STR("expected at least %i block(s) \"%s\", found %lld; the blocks here are: %s",
                                row->m_iMinimum, row->m_pName, found, m_pData->listBlocks().c_str()));
        }
        if (row->m_iMaximum >= 0 && found > row->m_iMaximum)
        {
            tree.fail(tree.getBlock(first[row->m_iMaximum]).m_uLine, current, nullptr,
                      S_STR("expected at most %i block(s) \"%s\", found %lld", row->m_iMaximum, row->m_pName, found));
        }
    }
}

void S_Script::parse(const Variables* variables, const char* subBlockName, unsigned int occurrence, bool strict,
                     const Blocks* blocks) const
{
    const S_ScriptTree& tree = m_pData->m_tree;
    const unsigned int index = m_pData->find(subBlockName, occurrence);
    const S_ScriptTree::Block& block = tree.getBlock(index);
    if (strict)
    {
        requireKnownBlocks(tree, index, blocks);
    }

    std::size_t rows = 0;
    while (variables[rows].m_pName)
    {
        ++rows;
    }
    S_Vector<const S_ScriptTree::Key*> keys(rows);
    for (const S_ScriptTree::Key& key : block.m_vecKeys)
    {
        const Variables* row = findRow(variables, key.m_strName);
        const char* name = key.m_strName.c_str();
        if (!row && strict)
        {
            tree.fail(key.m_uLine, index, name,
                      S_STR("is not known here; known are: %s", listNames(variables).c_str()));
        }
        if (!row)
        {
            continue;
        }
        const S_ScriptTree::Key*& place = keys[static_cast<std::size_t>(row - variables)];
        if (place)
        {
            tree.fail(key.m_uLine, index, name, S_STR("is given a second time; line %u has the first", place->m_uLine));
        }
        place = &key;
    }

    S_Vector<Value> values(rows);
    for (std::size_t i = 0; i < rows; ++i)
    {
        const Variables& row = variables[i];
        const S_ScriptTree::Key* key = keys[i];
        if (!key && !row.m_pDefault)
        {
            tree.fail(block.m_uLine, index, row.m_pName, S_STR("is missing; expected %s", describe(row.m_eFormat)));
        }
        ReadValue read = key ? readValue(row.m_eFormat, key->m_value) : readText(row.m_eFormat, row.m_pDefault);
        if (read.m_pExpected)
        {
            tree.fail(key ? key->m_uLine : block.m_uLine, index, row.m_pName,
                      S_STR("expected %s, found %s%s", read.m_pExpected, key ? "" : "the default ",
                            key ? key->m_value.m_strText.c_str() : row.m_pDefault));
        }
        values[i] = std::move(read.m_value);
    }
    for (std::size_t i = 0; i < rows; ++i)
    {
        store(values[i], variables[i].m_pDestination);
    }
}

unsigned int S_Script::count(const char* subBlockName) const
{
    const auto [first, last] = m_pData->m_tree.find(m_pData->getCurrent(), subBlockName);
    return static_cast<unsigned int>(last - first);
}

unsigned int S_Script::getBlockCount() const
{
    return static_cast<unsigned int>(m_pData->getBlock().m_vecBlocks.size());
}

const char* S_Script::getBlockName(unsigned int index) const
{
    return m_pData->m_tree.getBlock(m_pData->find(index)).m_strName.c_str();
}

unsigned int S_Script::getKeyLine(const char* subBlockName, unsigned int occurrence, const char* key) const
{
    const S_ScriptTree::Block& block = m_pData->m_tree.getBlock(m_pData->find(subBlockName, occurrence));
    const auto found = std::find_if(block.m_vecKeys.begin(), block.m_vecKeys.end(),
                                    [key](const S_ScriptTree::Key& k) { return k.m_strName == key; });
    return found == block.m_vecKeys.end() ? block.m_uLine : found->m_uLine;
}

const char* S_Script::getScriptName() const noexcept
{
    return m_pData->m_tree.getFilename().c_str();
}

const char* S_Script::getFolder() const noexcept
{
    return m_pData->m_strFolder.c_str();
}

const char* S_Script::staticNesting() const
{
    S_String nesting = m_pData->m_tree.getFilename();
    for (const unsigned int block : m_pData->m_vecLocked)
    {
        nesting.append(": ").append(m_pData->m_tree.getBlock(block).m_strName);
    }
    m_pData->m_strNesting = std::move(nesting);
    return m_pData->m_strNesting.c_str();
}
