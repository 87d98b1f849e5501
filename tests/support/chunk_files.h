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

/// The first chunk of what was written, read into a new record.
template <typename R>
R readWritten(const S_MemoryFileWriter& writer)
{
    S_MemoryFile file;
    openWritten(file, writer);
    R record;
    file >> record;
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
