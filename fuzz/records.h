#pragma once

#include "tests/support/chunk_files.h"

#include <platform/runtime/allocator.h>
#include <platform/runtime/exception.h>
#include <platform/runtime/memory_file.h>

#include <cstdlib>
#include <stdexcept>

namespace fuzz
{
inline void require(bool condition)
{
    if (!condition)
    {
        std::abort();
    }
}

/// Reads the first chunk of some bytes into a record.
template <typename Record>
void read(Record& record, const void* data, std::size_t size)
{
    S_MemoryFile file;
    file.constructFromMemory("input", data, size);
    file >> record;
}

using support::toBytes;

/// What was read comes back unchanged from a file of its own. Bytes tell, not records: what is not a number differs
/// from itself.
template <typename Record>
void requireRoundTrip(const Record& record)
{
    const S_Bytes file = toBytes(record);
    Record again;
    read(again, file.data(), file.size());
    require(toBytes(again) == file);
}

/// False when an action refuses what it reads.
template <typename Refusal = S_MemoryFileException, typename Action>
bool completes(Action&& action)
{
    try
    {
        action();
        return true;
    }
    catch (const Refusal&)
    {
        return false;
    }
    catch (const std::length_error&)  // a negative count
    {
        return false;
    }
}
}  // namespace fuzz
