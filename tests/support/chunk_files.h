#pragma once

#include <platform/runtime/memory_file.h>
#include <platform/runtime/memory_file_writer.h>

#include <type_traits>

namespace support
{
/// Makes what was written the content of `file`, which calls itself "test.tw".
inline void openWritten(S_MemoryFile& file, const S_MemoryFileWriter& writer)
{
    file.constructFromMemory("test.tw", writer.getBytes().data(), writer.getBytes().size());
}

/// Reads the first chunk of what was written into a record.
template <typename R>
void readWritten(const S_MemoryFileWriter& writer, R& record)
{
    S_MemoryFile file;
    openWritten(file, writer);
    file >> record;
}
template <typename R>
R readWritten(const S_MemoryFileWriter& writer)
{
    R record;
    readWritten(writer, record);
    return record;
}

/// Writes a chunk of these values one after the other; a function among them writes what stands in its place.
template <typename... Values>
void writeChunk(S_MemoryFileWriter& writer, unsigned int id, unsigned int version, const Values&... values)
{
    const S_MemoryFileWriter::Chunk chunk(writer, id, version);
    [[maybe_unused]] const auto write = [&writer](const auto& value)
    {
        if constexpr (std::is_invocable_v<decltype(value), S_MemoryFileWriter&>)
        {
            value(writer);
        }
        else
        {
            writer << value;
        }
    };
    (write(values), ...);
}

/// The bytes of a file of these records.
template <typename... Records>
S_Bytes toBytes(const Records&... records)
{
    S_MemoryFileWriter writer;
    (writer << ... << records);
    return writer.getBytes();
}

/// A record after a trip through a file.
template <typename R>
R writeAndRead(const R& record)
{
    S_MemoryFileWriter writer;
    writer << record;
    return readWritten<R>(writer);
}
}  // namespace support
