#pragma once

#include <platform/runtime/memory_file.h>
#include <platform/runtime/memory_file_writer.h>

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

/// A record after a trip through a file.
template <typename R>
R writeAndRead(const R& record)
{
    S_MemoryFileWriter writer;
    writer << record;
    return readWritten<R>(writer);
}
}  // namespace support
