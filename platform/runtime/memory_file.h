#pragma once

#include <platform/bit_cast.h>
#include <platform/export.h>
#include <platform/math/matrix4x3.h>
#include <platform/math/vector3.h>
#include <platform/runtime/allocator.h>

#include <cstddef>
#include <limits>
#include <string_view>
#include <type_traits>

/// A chunk file held in memory, and the position at which it is read.
///
/// A file is a sequence of chunks; a chunk is a header (id, version, size: little-endian unsigned 32-bit, size without
/// the header) and a body of values and nested chunks. Every read is bounded by the innermost open chunk: reading past
/// it, a nested chunk that overhangs it, another chunk than the one asked for and a count that cannot fit in what is
/// left of it throw S_MemoryFileException with file, chunk id, byte offset and what was expected. Memory is never
/// reserved from a count before that check.
class TW2_PLATFORM_API S_MemoryFile
{
public:
    /// How a file is opened.
    enum AccessMethod
    {
        accessRead = 0  ///< the whole file is read into memory when it is opened
    };
    /// What offsets count from.
    enum SeekMode
    {
        seekBegin = 0  ///< offsets count from the start of the file
    };
    /// Tags that stand before values in a file.
    enum BasicType
    {
        basicTypeArray = 28  ///< a list: an int count and that many values follow
    };

    /// Bytes of a chunk's header.
    static constexpr std::size_t headerSize = 12;

    /// One chunk of a file. Invalid until a peek or an open fills it.
    ///
    /// A peeked handle only knows the header. An opened one bounds all reads of the file until it is destroyed or
    /// filled again or the file moves past it (`skipChunk` of an enclosing chunk or of the file, `seek`). When the
    /// file's content goes, all its handles become invalid. Handles may end in any order.
    class TW2_PLATFORM_API Chunk
    {
    public:
        Chunk() noexcept = default;
        ~Chunk();
        Chunk(const Chunk&) = delete;
        Chunk& operator=(const Chunk&) = delete;

        /// @name Header of a valid chunk
        /// @{

        /// Kind of the chunk; 0 for a handle that is not valid.
        [[nodiscard]] unsigned int getID() const noexcept { return m_uID; }
        /// Layout of the chunk's body.
        [[nodiscard]] unsigned int getVersion() const noexcept { return m_uVersion; }
        /// Bytes of the body, without the header.
        [[nodiscard]] unsigned int getSize() const noexcept { return m_uSize; }
        /// @}

        /// Whether the handle holds a chunk; false after a peek past the last one.
        [[nodiscard]] bool isValid() const noexcept { return m_pFile != nullptr; }
        /// The file that the chunk belongs to; all its values are read from it.
        [[nodiscard]] S_MemoryFile& getMemoryFile() const noexcept { return *m_pFile; }
        /// Offset of the body's first byte in the file.
        [[nodiscard]] std::size_t getBodyOffset() const noexcept { return m_uBegin; }

        /// Fills `sub` with the header of the nested chunk at the current position without consuming it; `sub` becomes
        /// invalid at this chunk's end.
        void peekChunk(Chunk& sub);
        /// Moves behind the nested chunk that was last peeked or opened inside this chunk, however much of it was read.
        void skipChunk();

    private:
        friend class S_MemoryFile;
        void close() noexcept;
        void requireOpen() const;

        S_MemoryFile* m_pFile = nullptr;
        Chunk* m_pNext = nullptr;   // enclosing open chunk, or next one that is not open
        std::size_t m_uBegin = 0;   // of the body
        std::size_t m_uEnd = 0;     // of the body
        std::size_t m_uSubEnd = 0;  // of the nested chunk last peeked or opened; 0: none yet
        unsigned int m_uID = 0;
        unsigned int m_uVersion = 0;
        unsigned int m_uSize = 0;
        bool m_bOpen = false;
    };

    /// @name Life
    /// @{

    /// An empty file. `reserve` is the number of bytes that the first file opened into it is expected to need.
    explicit S_MemoryFile(unsigned int reserve = 0);
    /// Opens a file. Throws S_FileException.
    S_MemoryFile(std::string_view fileName, AccessMethod method);
    /// Ends the file; handles that outlive it are not valid.
    ~S_MemoryFile();
    S_MemoryFile(const S_MemoryFile&) = delete;
    S_MemoryFile& operator=(const S_MemoryFile&) = delete;

    /// Opens a file, replacing what the object held. When the file cannot be opened the object is empty afterwards.
    void construct(std::string_view fileName, AccessMethod method);
    /// Takes `size` bytes at `data` as the content of a file (copied); `name` stands where messages name the file.
    void constructFromMemory(std::string_view name, const void* data, std::size_t size);
    /// Releases the content. An empty object has no chunk: a peek gives an invalid handle.
    void destruct() noexcept;
    /// Exchanges everything with another file: handles go with the content.
    void swap(S_MemoryFile& other) noexcept;
    /// @}

    /// @name Walking the top level
    /// @{

    /// Moves to a byte of the file, or to its end; chunks that are open stop bounding reads.
    void seek(int offset, SeekMode mode);
    /// Fills `chunk` with the header at the current position without consuming it; invalid at the end of the file.
    void peekChunk(Chunk& chunk);
    /// Moves behind the top-level chunk that was last peeked, or opened unpeeked since the last skip, whatever was read
    /// and wherever the file was moved to since. Nothing happens before there was one.
    void skipChunk();
    /// Moves behind `chunk`, a valid handle of this file, whatever was peeked since.
    void skipChunk(const Chunk& chunk) noexcept;
    /// Opens the chunk at the current position, which must carry `id`; the position is then at its first value.
    void openChunk(Chunk& chunk, unsigned int id);
    /// @}

    /// @name Reading
    /// @{

    /// Copies the next `size` bytes to `destination`.
    void read(void* destination, std::size_t size);
    /// Makes `list` the next `count` elements of a raw block, in one copy and without filling the list first.
    /// T is a plain type whose memory image is the file's.
    template <typename T>
    void readBlock(S_Vector<T>& list, std::size_t count);
    /// Reads the 32-bit tag of the next value and checks it.
    void readTag(BasicType type);
    /// Reads an int count of elements of at least `bytesEach` bytes in the file. A negative count throws
    /// std::length_error "vector<T> too long"; one that cannot fit in what is left, S_MemoryFileException.
    std::size_t readCount(std::size_t bytesEach);
    /// The same for an unsigned count.
    std::size_t readUnsignedCount(std::size_t bytesEach);
    /// Throws unless `count` elements of `bytesEach` bytes can stand in what is left of the innermost open chunk.
    void requireElements(std::size_t count, std::size_t bytesEach) const;
    /// @}

    /// @name Asking
    /// @{

    /// Bytes from the start of the file.
    [[nodiscard]] std::size_t getPosition() const noexcept { return m_uPosition; }
    /// In bytes.
    [[nodiscard]] std::size_t getFileSize() const noexcept { return m_vecBytes.size(); }
    /// Bytes left in the innermost open chunk, or in the file.
    [[nodiscard]] std::size_t getRemaining() const noexcept { return getEnd() - m_uPosition; }
    /// As given to the constructor; empty for a file in memory.
    [[nodiscard]] const S_String& getFilename() const noexcept { return m_strName; }
    /// Throws S_MemoryFileException for the current place; `expected` says what should stand here.
    [[noreturn]] void fail(const char* expected) const;
    /// @}

private:
    struct Header
    {
        unsigned int m_uID;
        unsigned int m_uVersion;
        unsigned int m_uSize;
    };

    [[nodiscard]] std::size_t getEnd() const noexcept { return m_pOpen ? m_pOpen->m_uEnd : m_vecBytes.size(); }
    [[nodiscard]] Header readHeader(std::size_t end) const;
    void fill(Chunk& chunk, const Header& header, bool open) noexcept;
    void closeAbove(const Chunk* last) noexcept;
    void replaceContent(std::string_view name, S_Bytes&& bytes);
    [[noreturn]] void failShort(std::size_t size, const char* what) const;
    // Nothing is consumed when the bytes are not there.
    const unsigned char* take(std::size_t size, const char* what)
    {
        if (size > getRemaining())
        {
            failShort(size, what);
        }
        const unsigned char* bytes = m_vecBytes.data() + m_uPosition;
        m_uPosition += size;
        return bytes;
    }
    // Values are put together byte by byte, whatever the machine's byte order. Raw blocks are copied as they stand in
    // the file: with them, only little-endian machines read files right.
    [[nodiscard]] static unsigned int decode(const unsigned char* bytes) noexcept
    {
        return static_cast<unsigned int>(bytes[0]) | static_cast<unsigned int>(bytes[1]) << 8 |
               static_cast<unsigned int>(bytes[2]) << 16 | static_cast<unsigned int>(bytes[3]) << 24;
    }
    [[nodiscard]] static float decodeFloat(const unsigned char* bytes) noexcept
    {
        static_assert(std::numeric_limits<float>::is_iec559 && sizeof(float) == 4);
        return S_bitCast<float>(decode(bytes));
    }

    friend S_MemoryFile& operator>>(S_MemoryFile&, int&);
    friend S_MemoryFile& operator>>(S_MemoryFile&, unsigned int&);
    friend S_MemoryFile& operator>>(S_MemoryFile&, float&);
    friend S_MemoryFile& operator>>(S_MemoryFile&, bool&);
    friend S_MemoryFile& operator>>(S_MemoryFile&, unsigned char&);
    friend TW2_PLATFORM_API S_MemoryFile& operator>>(S_MemoryFile&, S_String&);
    friend S_MemoryFile& operator>>(S_MemoryFile&, M_Vector3Template<float>&);
    friend TW2_PLATFORM_API S_MemoryFile& operator>>(S_MemoryFile&, M_Matrix4x3Template<float>&);

    S_Bytes m_vecBytes;
    S_String m_strName;
    std::size_t m_uReserve = 0;
    std::size_t m_uPosition = 0;
    std::size_t m_uSubEnd = 0;   // where `skipChunk` goes; 0: no chunk was met yet
    bool m_bPeeked = false;      // at top level, since the last `skipChunk`
    Chunk* m_pOpen = nullptr;    // innermost open chunk
    Chunk* m_pClosed = nullptr;  // the handles that only know a header
};

/// @name Values
/// Each reads one value and throws S_MemoryFileException when it does not fit in the innermost open chunk.
/// @{

/// Four bytes, the lowest first.
inline S_MemoryFile& operator>>(S_MemoryFile& file, unsigned int& value)
{
    value = S_MemoryFile::decode(file.take(4, "an unsigned int"));
    return file;
}
/// Four bytes, the lowest first.
inline S_MemoryFile& operator>>(S_MemoryFile& file, int& value)
{
    value = S_bitCast<int>(S_MemoryFile::decode(file.take(4, "an int")));
    return file;
}
/// Four bytes, the lowest first: the bits of the float.
inline S_MemoryFile& operator>>(S_MemoryFile& file, float& value)
{
    value = S_MemoryFile::decodeFloat(file.take(4, "a float"));
    return file;
}
/// One byte, 0 or 1; any other value is read as true.
inline S_MemoryFile& operator>>(S_MemoryFile& file, bool& value)
{
    value = *file.take(1, "a bool") != 0;
    return file;
}
inline S_MemoryFile& operator>>(S_MemoryFile& file, unsigned char& value)
{
    value = *file.take(1, "an unsigned char");
    return file;
}
inline S_MemoryFile& operator>>(S_MemoryFile& file, M_Vector3Template<float>& value)
{
    const unsigned char* bytes = file.take(12, "a vector");
    value = {S_MemoryFile::decodeFloat(bytes), S_MemoryFile::decodeFloat(bytes + 4),
             S_MemoryFile::decodeFloat(bytes + 8)};
    return file;
}
/// An unsigned 32-bit length and that many bytes.
TW2_PLATFORM_API S_MemoryFile& operator>>(S_MemoryFile& file, S_String& value);
/// Twelve floats: the three rows of the 3x3 block, then the translation row.
TW2_PLATFORM_API S_MemoryFile& operator>>(S_MemoryFile& file, M_Matrix4x3Template<float>& value);

/// A list: the array tag, an int count, the elements.
template <typename T>
S_MemoryFile& operator>>(S_MemoryFile& file, S_Vector<T>& list)
{
    file.readTag(S_MemoryFile::basicTypeArray);
    // Every value form takes at least one byte, strings four.
    const std::size_t count = file.readCount(std::is_arithmetic_v<T> ? sizeof(T) : 4);
    list.clear();
    list.resize(count);
    for (T& element : list)
    {
        file >> element;
    }
    return file;
}
/// @}

template <typename T>
void S_MemoryFile::readBlock(S_Vector<T>& list, std::size_t count)
{
    requireElements(count, sizeof(T));
    S_resizeUnfilled(list, count);
    read(list.data(), count * sizeof(T));
}
