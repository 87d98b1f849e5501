#include <platform/runtime/exception.h>
#include <platform/runtime/file.h>
#include <platform/runtime/memory_file.h>
#include <platform/runtime/str.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

// ---------------------------------------------------------------------------------------------------------------------
// Chunk handles
// ---------------------------------------------------------------------------------------------------------------------

S_MemoryFile::Chunk::~Chunk()
{
    close();
}

void S_MemoryFile::Chunk::close() noexcept
{
    if (m_pFile)
    {
        Chunk** link = m_bOpen ? &m_pFile->m_pOpen : &m_pFile->m_pClosed;
        while (*link != this)
        {
            link = &(*link)->m_pNext;
        }
        *link = m_pNext;
    }
    m_pFile = nullptr;
    m_pNext = nullptr;
    m_bOpen = false;
}

void S_MemoryFile::Chunk::requireOpen() const
{
    if (m_bOpen)
    {
        return;
    }
    if (m_pFile)
    {
        m_pFile->fail(S_STR("chunk 0x%X to be open", m_uID));
    }
    throw S_MemoryFileException("", 0, 0, "a chunk handle that holds a chunk");
}

void S_MemoryFile::Chunk::peekChunk(Chunk& sub)
{
    requireOpen();
    S_MemoryFile& file = *m_pFile;
    const std::size_t end = m_uEnd;
    file.closeAbove(this);
    if (file.m_uPosition == end)
    {
        m_uSubEnd = end;
        sub.close();
        return;
    }
    const Header header = file.readHeader(end);
    m_uSubEnd = file.m_uPosition + headerSize + header.m_uSize;
    file.fill(sub, header, false);
}

void S_MemoryFile::Chunk::skipChunk()
{
    requireOpen();
    m_pFile->closeAbove(this);
    if (m_uSubEnd != 0)
    {
        m_pFile->m_uPosition = m_uSubEnd;
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Life
// ---------------------------------------------------------------------------------------------------------------------

S_MemoryFile::S_MemoryFile(unsigned int reserve) : m_uReserve(reserve) {}

S_MemoryFile::S_MemoryFile(std::string_view fileName, AccessMethod method)
{
    construct(fileName, method);
}

S_MemoryFile::~S_MemoryFile()
{
    destruct();
}

void S_MemoryFile::construct(std::string_view fileName, AccessMethod)
{
    const S_String name(fileName);          // the caller's text may be this object's own
    S_Bytes bytes = std::move(m_vecBytes);  // storage to be used again
    destruct();
    bytes.reserve(std::exchange(m_uReserve, 0));
    File.read(name, bytes);
    replaceContent(name, std::move(bytes));
}

void S_MemoryFile::constructFromMemory(std::string_view name, const void* data, std::size_t size)
{
    const unsigned char* first = static_cast<const unsigned char*>(data);
    replaceContent(name, S_Bytes(first, first + size));
}

void S_MemoryFile::replaceContent(std::string_view name, S_Bytes&& bytes)
{
    S_String copy(name);
    destruct();
    m_strName = std::move(copy);
    m_vecBytes = std::move(bytes);
}

void S_MemoryFile::destruct() noexcept
{
    for (Chunk** handles : {&m_pOpen, &m_pClosed})
    {
        while (*handles)
        {
            (*handles)->close();
        }
    }
    m_vecBytes = S_Bytes();
    m_strName = S_String();
    m_uPosition = 0;
    m_uSubEnd = 0;
    m_bPeeked = false;
}

void S_MemoryFile::swap(S_MemoryFile& other) noexcept
{
    m_vecBytes.swap(other.m_vecBytes);
    m_strName.swap(other.m_strName);
    std::swap(m_uReserve, other.m_uReserve);
    std::swap(m_uPosition, other.m_uPosition);
    std::swap(m_uSubEnd, other.m_uSubEnd);
    std::swap(m_bPeeked, other.m_bPeeked);
    std::swap(m_pOpen, other.m_pOpen);
    std::swap(m_pClosed, other.m_pClosed);
    for (S_MemoryFile* file : {this, &other})
    {
        for (Chunk* handles : {file->m_pOpen, file->m_pClosed})
        {
            for (; handles; handles = handles->m_pNext)
            {
                handles->m_pFile = file;
            }
        }
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Walking
// ---------------------------------------------------------------------------------------------------------------------

void S_MemoryFile::seek(int offset, SeekMode)
{
    if (offset < 0 || static_cast<std::size_t>(offset) > m_vecBytes.size())
    {
        fail(S_STR("a seek to a byte from 0 to %zu, not to %i", m_vecBytes.size(), offset));
    }
    closeAbove(nullptr);
    m_uPosition = static_cast<std::size_t>(offset);
}

void S_MemoryFile::peekChunk(Chunk& chunk)
{
    chunk.close();
    if (m_pOpen)
    {
        m_pOpen->peekChunk(chunk);
        return;
    }
    m_bPeeked = true;
    if (m_uPosition == m_vecBytes.size())
    {
        m_uSubEnd = m_uPosition;
        return;
    }
    fill(chunk, readHeader(m_vecBytes.size()), false);
    m_uSubEnd = chunk.m_uEnd;
}

void S_MemoryFile::skipChunk()
{
    closeAbove(nullptr);
    m_bPeeked = false;
    if (m_uSubEnd != 0)
    {
        m_uPosition = m_uSubEnd;
    }
}

void S_MemoryFile::skipChunk(const Chunk& chunk) noexcept
{
    closeAbove(nullptr);
    m_bPeeked = false;
    m_uPosition = m_uSubEnd = chunk.m_uEnd;
}

void S_MemoryFile::openChunk(Chunk& chunk, unsigned int id)
{
    chunk.close();
    if (getRemaining() == 0)
    {
        fail(S_STR("chunk 0x%X, but %s ends here", id, m_pOpen ? "the chunk" : "the file"));
    }
    const Header header = readHeader(getEnd());
    if (header.m_uID != id)
    {
        fail(S_STR("chunk 0x%X, found chunk 0x%X", id, header.m_uID));
    }
    Chunk* const enclosing = m_pOpen;
    fill(chunk, header, true);
    if (enclosing)
    {
        enclosing->m_uSubEnd = chunk.m_uEnd;
    }
    else if (!m_bPeeked)
    {
        m_uSubEnd = chunk.m_uEnd;
    }
    m_uPosition = chunk.m_uBegin;
}

S_MemoryFile::Header S_MemoryFile::readHeader(std::size_t end) const
{
    const std::size_t left = end - m_uPosition;
    if (left < headerSize)
    {
        fail(S_STR("the %zu bytes of a chunk's header, %zu are left", headerSize, left));
    }
    const unsigned char* bytes = m_vecBytes.data() + m_uPosition;
    const Header header{decode(bytes), decode(bytes + 4), decode(bytes + 8)};
    if (header.m_uSize > left - headerSize)
    {
        fail(S_STR("a chunk of at most %zu bytes, chunk 0x%X says that it has %u", left - headerSize, header.m_uID,
                   header.m_uSize));
    }
    return header;
}

void S_MemoryFile::fill(Chunk& chunk, const Header& header, bool open) noexcept
{
    chunk.close();
    Chunk*& handles = open ? m_pOpen : m_pClosed;
    chunk.m_pNext = handles;
    chunk.m_bOpen = open;
    handles = &chunk;
    chunk.m_pFile = this;
    chunk.m_uBegin = m_uPosition + headerSize;
    chunk.m_uEnd = chunk.m_uBegin + header.m_uSize;
    chunk.m_uSubEnd = 0;
    chunk.m_uID = header.m_uID;
    chunk.m_uVersion = header.m_uVersion;
    chunk.m_uSize = header.m_uSize;
}

// Handles opened inside `last` (null: all) keep their header and bound no more reads.
void S_MemoryFile::closeAbove(const Chunk* last) noexcept
{
    while (m_pOpen != last)
    {
        Chunk* inner = m_pOpen;
        m_pOpen = inner->m_pNext;
        inner->m_pNext = m_pClosed;
        inner->m_bOpen = false;
        m_pClosed = inner;
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Reading
// ---------------------------------------------------------------------------------------------------------------------

void S_MemoryFile::fail(const char* expected) const
{
    throw S_MemoryFileException(m_strName.c_str(), m_pOpen ? m_pOpen->m_uID : 0, m_uPosition, expected);
}

void S_MemoryFile::failShort(std::size_t size, const char* what) const
{
    fail(S_STR("%s of %zu bytes, %zu are left", what, size, getRemaining()));
}

void S_MemoryFile::read(void* destination, std::size_t size)
{
    const unsigned char* bytes = take(size, "a block");
    if (size > 0)
    {
        std::memcpy(destination, bytes, size);
    }
}

void S_MemoryFile::readTag(BasicType type)
{
    const unsigned int tag = decode(take(4, "a type tag"));
    if (tag != static_cast<unsigned int>(type))
    {
        m_uPosition -= 4;
        fail(S_STR("type tag %i, found %u", type, tag));
    }
}

std::size_t S_MemoryFile::readCount(std::size_t bytesEach)
{
    const unsigned int count = decode(take(4, "a count"));
    if (S_bitCast<int>(count) < 0)
    {
        throw std::length_error("vector<T> too long");
    }
    requireElements(count, bytesEach);
    return count;
}

std::size_t S_MemoryFile::readUnsignedCount(std::size_t bytesEach)
{
    const unsigned int count = decode(take(4, "a count"));
    requireElements(count, bytesEach);
    return count;
}

void S_MemoryFile::requireElements(std::size_t count, std::size_t bytesEach) const
{
    if (count > getRemaining() / std::max<std::size_t>(bytesEach, 1))
    {
        fail(S_STR("%zu elements of at least %zu bytes, %zu are left", count, bytesEach, getRemaining()));
    }
}

S_MemoryFile& operator>>(S_MemoryFile& file, S_String& value)
{
    const std::size_t begin = file.m_uPosition;
    const std::size_t length = S_MemoryFile::decode(file.take(4, "a string's length"));
    if (length > file.getRemaining())
    {
        const std::size_t left = file.getRemaining();
        file.m_uPosition = begin;
        file.fail(S_STR("a string of %zu bytes, %zu are left", length, left));
    }
    value.assign(reinterpret_cast<const char*>(file.take(length, "a string")), length);
    return file;
}

S_MemoryFile& operator>>(S_MemoryFile& file, M_Matrix4x3Template<float>& value)
{
    const unsigned char* bytes = file.take(48, "a matrix");
    for (int i = 0; i < 12; ++i, bytes += 4)
    {
        value.data()[i] = S_MemoryFile::decodeFloat(bytes);
    }
    return file;
}
