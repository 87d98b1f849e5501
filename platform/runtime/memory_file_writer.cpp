#include <platform/runtime/exception.h>
#include <platform/runtime/file.h>
#include <platform/runtime/memory_file_writer.h>
#include <platform/runtime/str.h>

#include <limits>

namespace
{
constexpr std::size_t largestSize = std::numeric_limits<unsigned int>::max();

void encode(unsigned char* bytes, unsigned int value) noexcept
{
    for (int i = 0; i < 4; ++i)
    {
        bytes[i] = static_cast<unsigned char>(value >> (8 * i));
    }
}
}  // namespace

S_MemoryFileWriter::Chunk::Chunk(S_MemoryFileWriter& writer, unsigned int id, unsigned int version)
    : m_writer(writer), m_uBody(writer.m_vecBytes.size() + S_MemoryFile::headerSize), m_uID(id)
{
    unsigned char header[S_MemoryFile::headerSize] = {};  // the size is known when the chunk ends
    encode(header, id);
    encode(header + 4, version);
    writer.write(header, sizeof header);
    ++writer.m_iOpenChunks;
}

S_MemoryFileWriter::Chunk::~Chunk()
{
    --m_writer.m_iOpenChunks;
    const std::size_t size = m_writer.m_vecBytes.size() - m_uBody;
    if (size > largestSize && !m_writer.m_bTooLarge)
    {
        m_writer.m_bTooLarge = true;
        m_writer.m_uTooLargeID = m_uID;
        m_writer.m_uTooLargeBody = m_uBody;
    }
    encode(m_writer.m_vecBytes.data() + m_uBody - 4, static_cast<unsigned int>(size));
}

void S_MemoryFileWriter::write(const void* data, std::size_t size)
{
    const unsigned char* first = static_cast<const unsigned char*>(data);
    m_vecBytes.insert(m_vecBytes.end(), first, first + size);
}

void S_MemoryFileWriter::writeCount(std::size_t count)
{
    if (count > static_cast<std::size_t>(std::numeric_limits<int>::max()))
    {
        throw S_MemoryFileException("", 0, m_vecBytes.size(),
                                    S_STR("a list of at most 2147483647 elements, not of %zu", count));
    }
    *this << static_cast<int>(count);
}

void S_MemoryFileWriter::save(std::string_view fileName) const
{
    const S_String name(fileName);
    if (m_iOpenChunks > 0)
    {
        throw S_MemoryFileException(name.c_str(), 0, m_vecBytes.size(), "every chunk to be ended before saving");
    }
    if (m_bTooLarge)
    {
        throw S_MemoryFileException(name.c_str(), m_uTooLargeID, m_uTooLargeBody,
                                    "a chunk of at most 4294967295 bytes to be saved");
    }
    File.write(name, m_vecBytes.data(), m_vecBytes.size());
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, int value)
{
    return writer << S_bitCast<unsigned int>(value);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, unsigned int value)
{
    unsigned char bytes[4];
    encode(bytes, value);
    writer.write(bytes, sizeof bytes);
    return writer;
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, float value)
{
    return writer << S_bitCast<unsigned int>(value);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, bool value)
{
    return writer << static_cast<unsigned char>(value);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, unsigned char value)
{
    writer.write(&value, 1);
    return writer;
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, std::string_view value)
{
    if (value.size() > largestSize)
    {
        throw S_MemoryFileException("", 0, writer.getBytes().size(),
                                    S_STR("a string of at most 4294967295 bytes, not of %zu", value.size()));
    }
    writer << static_cast<unsigned int>(value.size());
    writer.write(value.data(), value.size());
    return writer;
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const char* value)
{
    return writer << std::string_view(value);
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const M_Vector3Template<float>& value)
{
    return writer << value.x << value.y << value.z;
}

S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const M_Matrix4x3Template<float>& value)
{
    for (int i = 0; i < 12; ++i)
    {
        writer << value.data()[i];
    }
    return writer;
}
