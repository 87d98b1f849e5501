#pragma once

#include <platform/export.h>
#include <platform/math/matrix4x3.h>
#include <platform/math/vector3.h>
#include <platform/runtime/allocator.h>
#include <platform/runtime/memory_file.h>

#include <cstddef>
#include <string_view>
#include <type_traits>

/// Writes chunk files: the counterpart of S_MemoryFile, value for value.
///
///     S_MemoryFileWriter writer;
///     {
///         S_MemoryFileWriter::Chunk node(writer, 0x10000, 1);
///         writer << name << parentName << transform << hasParent << extraString;
///     }
///     writer.save("scene.tw");
///
/// The file is built in memory and reaches the disk as a whole: a temporary file is renamed into place.
class TW2_PLATFORM_API S_MemoryFileWriter
{
public:
    /// Opens a chunk that lasts until the end of the scope; its size is filled in then. Chunks nest.
    class TW2_PLATFORM_API Chunk
    {
    public:
        /// Writes the header; `id` and `version` are what a reader asks for.
        Chunk(S_MemoryFileWriter& writer, unsigned int id, unsigned int version);
        ~Chunk();
        Chunk(const Chunk&) = delete;
        Chunk& operator=(const Chunk&) = delete;

    private:
        S_MemoryFileWriter& m_writer;
        std::size_t m_uBody;
        unsigned int m_uID;
    };

    /// Appends `size` bytes as they are.
    void write(const void* data, std::size_t size);
    /// Appends the elements of a plain list without a count.
    template <typename T>
    void writeBlock(const S_Vector<T>& list)
    {
        static_assert(std::is_trivially_copyable_v<T>);
        write(list.data(), list.size() * sizeof(T));
    }
    /// Appends a list: the array tag, the count, the elements. Throws S_MemoryFileException past 2^31 - 1 elements.
    template <typename T>
    void writeList(const S_Vector<T>& list);
    /// Appends a count as an int. Throws S_MemoryFileException past 2^31 - 1.
    void writeCount(std::size_t count);

    /// The file so far; complete when no chunk is open.
    [[nodiscard]] const S_Bytes& getBytes() const noexcept { return m_vecBytes; }
    /// Writes the file under `fileName`, replacing one that is there. Throws S_FileException when it cannot, and
    /// S_MemoryFileException when a chunk is still open or is larger than its 32-bit size can say.
    void save(std::string_view fileName) const;

private:
    S_Bytes m_vecBytes;
    int m_iOpenChunks = 0;
    // The first chunk that is larger than its header can say, when there is one.
    bool m_bTooLarge = false;
    unsigned int m_uTooLargeID = 0;
    std::size_t m_uTooLargeBody = 0;
};

/// @name Values
/// @{

/// Writes what the operator of S_MemoryFile for the same type reads. Throws S_MemoryException_Allocation.
TW2_PLATFORM_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, int value);
TW2_PLATFORM_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, unsigned int value);
TW2_PLATFORM_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, float value);
TW2_PLATFORM_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, bool value);
TW2_PLATFORM_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, unsigned char value);
TW2_PLATFORM_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, std::string_view value);
/// Without this a string literal would be written as a bool.
TW2_PLATFORM_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const char* value);
TW2_PLATFORM_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const M_Vector3Template<float>& value);
TW2_PLATFORM_API S_MemoryFileWriter& operator<<(S_MemoryFileWriter& writer, const M_Matrix4x3Template<float>& value);
/// @}

template <typename T>
void S_MemoryFileWriter::writeList(const S_Vector<T>& list)
{
    *this << static_cast<int>(S_MemoryFile::basicTypeArray);
    writeCount(list.size());
    for (const T& element : list)
    {
        *this << element;
    }
}
