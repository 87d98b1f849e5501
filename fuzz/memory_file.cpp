#include "fuzz/records.h"

#include <platform/runtime/exception.h>
#include <platform/runtime/memory_file.h>

#include <cstdint>

namespace
{
using fuzz::require;

template <typename T>
void readOne(S_MemoryFile& file)
{
    T value{};
    file >> value;
}

template <typename T>
void readList(S_MemoryFile& file)
{
    S_Vector<T> list;
    const std::size_t left = file.getRemaining();
    file >> list;
    require(list.size() <= left);
}

void readBlock(S_MemoryFile& file)
{
    S_Vector<M_Vector3Template<float>> list;
    file.readBlock(list, file.readUnsignedCount(sizeof(M_Vector3Template<float>)));
}

void readBytes(S_MemoryFile& file)
{
    S_Bytes bytes(file.readCount(1));
    file.read(bytes.data(), bytes.size());
}

using Read = void (*)(S_MemoryFile&);
constexpr Read s_reads[] = {readOne<int>,
                            readOne<unsigned int>,
                            readOne<float>,
                            readOne<bool>,
                            readOne<unsigned char>,
                            readOne<S_String>,
                            readOne<M_Vector3Template<float>>,
                            readOne<M_Matrix4x3Template<float>>,
                            readList<int>,
                            readList<S_String>,
                            readList<S_Vector<float>>,
                            readBlock,
                            readBytes};

void walk(S_MemoryFile& file, S_MemoryFile::Chunk& parent);

/// What stands in a chunk: nested chunks when its id is 0, else values of the form that the id chooses, to its end.
void readBody(S_MemoryFile& file, S_MemoryFile::Chunk& chunk)
{
    require(file.getPosition() == chunk.getBodyOffset() && file.getRemaining() == chunk.getSize());
    if (chunk.getID() == 0)
    {
        walk(file, chunk);
        return;
    }
    const Read read = s_reads[chunk.getID() % std::size(s_reads)];
    while (file.getRemaining() > 0)
    {
        const std::size_t before = file.getPosition();
        read(file);
        require(file.getPosition() > before);
    }
}

/// A damaged body ends the reading of its chunk, not the walk.
void openAndRead(S_MemoryFile& file, unsigned int id)
{
    S_MemoryFile::Chunk chunk;
    file.openChunk(chunk, id);
    static_cast<void>(fuzz::completes([&] { readBody(file, chunk); }));
}

void walk(S_MemoryFile& file, S_MemoryFile::Chunk& parent)
{
    S_MemoryFile::Chunk sub;
    for (parent.peekChunk(sub); sub.isValid(); parent.peekChunk(sub))
    {
        const std::size_t end = sub.getBodyOffset() + sub.getSize();
        openAndRead(file, sub.getID());
        parent.skipChunk();
        require(file.getPosition() == end);
    }
}
}  // namespace

// Any bytes as a chunk file: it is walked to its end or to the first damaged header, and nothing is read past a chunk.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    S_MemoryFile file;
    file.constructFromMemory("input", data, size);
    try
    {
        S_MemoryFile::Chunk top;
        for (file.peekChunk(top); top.isValid(); file.peekChunk(top))
        {
            openAndRead(file, top.getID());
            file.skipChunk();
            require(file.getPosition() <= size);
        }
    }
    catch (const S_MemoryFileException&)
    {
    }
    return 0;
}
