#pragma once

#include <platform/runtime/allocator.h>
#include <platform/runtime/memory_file.h>
#include <platform/runtime/memory_file_writer.h>

#include <cstddef>

namespace TW2
{
/// What stands in the chunk of a record is described once, for reading and for writing:
///
///     constexpr auto describe = [](auto& chunk, auto& node)
///     {
///         chunk.values(node.name, node.transform);
///         if (chunk.has(VERSION_EXTRA_STRING))
///         {
///             chunk.values(node.extraString);
///         }
///     };
///
/// `readRecord` and `writeRecord` give such a description a ChunkReader or a ChunkWriter, which have the same
/// operations.
class ChunkReader
{
public:
    explicit ChunkReader(S_MemoryFile::Chunk& chunk) noexcept : m_chunk(chunk), m_body(chunk.getMemoryFile()) {}

    /// The file, which stands at the next value.
    [[nodiscard]] S_MemoryFile& getBody() const noexcept { return m_body; }
    /// Whether the chunk has what version `version` of its kind added.
    [[nodiscard]] bool has(unsigned int version) const noexcept { return m_chunk.getVersion() >= version; }

    void values(auto&... values) { (m_body >> ... >> values); }
    void color(auto& color) { values(color.red, color.green, color.blue, color.alpha); }
    /// A colour of four bytes in the same order, which becomes 0xAARRGGBB.
    void packedColor(unsigned int& color)
    {
        unsigned char bytes[4];
        values(bytes[0], bytes[1], bytes[2], bytes[3]);
        color = static_cast<unsigned int>(bytes[3]) << 24 |
                static_cast<unsigned int>(bytes[0] << 16 | bytes[1] << 8 | bytes[2]);
    }
    /// A value that nobody uses.
    template <typename T>
    void unused()
    {
        T value;
        m_body >> value;
    }
    /// A record with a chunk of its own; what a newer version of that one appends is skipped.
    void record(auto& record)
    {
        m_body >> record;
        m_chunk.skipChunk();
    }
    /// An int count of such records.
    void records(auto& records)
    {
        records.resize(m_body.readCount(S_MemoryFile::headerSize));
        for (auto& element : records)
        {
            if constexpr (requires { element.reset(); })
            {
                element.reset();
            }
            record(element);
        }
    }
    /// An int count and values of at least `leastBytes` bytes, one by one.
    void list(auto& list, std::size_t leastBytes)
    {
        list.resize(m_body.readCount(leastBytes));
        for (auto& value : list)
        {
            m_body >> value;
        }
    }
    /// Lists of the array form.
    void arrays(auto&... lists) { (m_body >> ... >> lists); }
    /// An int count and one raw block of so many elements.
    template <typename T>
    void block(S_Vector<T>& list)
    {
        m_body.readBlock(list, m_body.readCount(sizeof(T)));
    }
    /// An unsigned count and raw blocks of so many elements each.
    template <typename... T>
    void unsignedBlocks(S_Vector<T>&... lists)
    {
        const std::size_t count = m_body.readUnsignedCount((sizeof(T) + ...));
        (m_body.readBlock(lists, count), ...);
    }

private:
    S_MemoryFile::Chunk& m_chunk;
    S_MemoryFile& m_body;
};

/// See ChunkReader. Writes the newest version.
class ChunkWriter
{
public:
    explicit ChunkWriter(S_MemoryFileWriter& writer) noexcept : m_writer(writer) {}

    [[nodiscard]] static constexpr bool has(unsigned int) noexcept { return true; }

    void values(const auto&... values) { (m_writer << ... << values); }
    void color(const auto& color) { values(color.red, color.green, color.blue, color.alpha); }
    void packedColor(unsigned int color)
    {
        const auto byte = [color](int shift) { return static_cast<unsigned char>(color >> shift); };
        values(byte(16), byte(8), byte(0), byte(24));
    }
    template <typename T>
    void unused()
    {
        m_writer << T();
    }
    void record(const auto& record) { m_writer << record; }
    void records(const auto& records) { list(records, 0); }
    void list(const auto& list, std::size_t)
    {
        m_writer.writeCount(list.size());
        for (const auto& value : list)
        {
            m_writer << value;
        }
    }
    void arrays(const auto&... lists) { (m_writer.writeList(lists), ...); }
    void block(const auto& list) { unsignedBlocks(list); }
    void unsignedBlocks(const auto& first, const auto&... lists)
    {
        m_writer.writeCount(first.size());
        m_writer.writeBlock(first);
        (m_writer.writeBlock(lists), ...);
    }

private:
    S_MemoryFileWriter& m_writer;
};

template <typename Record, typename Description>
S_MemoryFile& readRecord(S_MemoryFile& file, unsigned int id, Record& record, const Description& describe)
{
    S_MemoryFile::Chunk chunk;
    file.openChunk(chunk, id);
    ChunkReader reader(chunk);
    describe(reader, record);
    return file;
}

template <typename Record, typename Description>
S_MemoryFileWriter& writeRecord(S_MemoryFileWriter& writer, unsigned int id, unsigned int version, const Record& record,
                                const Description& describe)
{
    const S_MemoryFileWriter::Chunk chunk(writer, id, version);
    ChunkWriter values(writer);
    describe(values, record);
    return writer;
}

/// Empties lists and texts, which keep their storage for the next record.
inline void clearAll(auto&... lists) noexcept
{
    (lists.clear(), ...);
}
}  // namespace TW2
