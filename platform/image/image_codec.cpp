#include <platform/image/image_check.h>
#include <platform/image/image_codec.h>
#include <platform/image/image_exception.h>
#include <platform/runtime/str.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>
#include <new>

namespace
{
/// Thrown out of the decoder by its own checks.
struct DecoderFailure
{
    const char* m_szReason;
};

/// All blocks that the code of one call holds. The code is C and frees nothing when an exception passes; the arena
/// does. Its limit stops compressed data that unpack to more than the picture can need.
class Arena
{
public:
    explicit Arena(std::size_t limit) noexcept : m_uLimit(limit), m_pOuter(sm_pCurrent) { sm_pCurrent = this; }
    ~Arena()
    {
        while (m_pFirst)
        {
            release(m_pFirst + 1);
        }
        sm_pCurrent = m_pOuter;
    }
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;

    [[nodiscard]] static Arena& getCurrent() noexcept { return *sm_pCurrent; }

    [[nodiscard]] void* allocate(std::size_t size)
    {
        if (size > m_uLimit - m_uUsed)
        {
            throw DecoderFailure{"its data unpack to more than its size can hold"};
        }
        // Zeros: whatever the decoder leaves out is the same on every run.
        void* place = std::memset(S_Memory::allocate(sizeof(Block) + size), 0, sizeof(Block) + size);
        auto* block = new (place) Block{m_pFirst, nullptr, size};
        if (m_pFirst)
        {
            m_pFirst->m_pPrevious = block;
        }
        m_pFirst = block;
        m_uUsed += size;
        return block + 1;
    }
    void release(void* memory) noexcept
    {
        if (!memory)
        {
            return;
        }
        Block* block = static_cast<Block*>(memory) - 1;
        (block->m_pPrevious ? block->m_pPrevious->m_pNext : m_pFirst) = block->m_pNext;
        if (block->m_pNext)
        {
            block->m_pNext->m_pPrevious = block->m_pPrevious;
        }
        m_uUsed -= block->m_uSize;
        S_Memory::release(block);
    }
    [[nodiscard]] void* reallocate(void* memory, std::size_t size)
    {
        void* grown = allocate(size);
        if (memory)
        {
            std::memcpy(grown, memory, std::min(size, (static_cast<Block*>(memory) - 1)->m_uSize));
            release(memory);
        }
        return grown;
    }

private:
    struct alignas(std::max_align_t) Block
    {
        Block* m_pNext;
        Block* m_pPrevious;
        std::size_t m_uSize;
    };

    std::size_t m_uLimit;
    std::size_t m_uUsed = 0;
    Block* m_pFirst = nullptr;
    Arena* m_pOuter;

    static inline thread_local Arena* sm_pCurrent = nullptr;
};

void require(bool condition)
{
    if (!condition)
    {
        throw DecoderFailure{"the file is damaged"};
    }
}
}  // namespace

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_NO_STDIO
#define STBI_ONLY_PNG
#define STBI_ONLY_JPEG
#define STBI_ONLY_TGA
#define STBI_ONLY_BMP
#define STBI_ASSERT(condition) require(condition)
#define STBI_MALLOC(size) Arena::getCurrent().allocate(size)
#define STBI_REALLOC_SIZED(memory, oldSize, size) Arena::getCurrent().reallocate(memory, size)
#define STBI_FREE(memory) Arena::getCurrent().release(memory)
#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#define STBI_WRITE_NO_STDIO
#define STBIW_ASSERT(condition) require(condition)
#define STBIW_MALLOC(size) Arena::getCurrent().allocate(size)
#define STBIW_REALLOC_SIZED(memory, oldSize, size) Arena::getCurrent().reallocate(memory, size)
#define STBIW_FREE(memory) Arena::getCurrent().release(memory)
// The bits of a damaged JPEG make this decoder count below 0 and above 32: what is drawn then is unspecified, memory is
// not touched outside of its own, which the other sanitizers watch.
#ifdef __clang__
#if __has_feature(undefined_behavior_sanitizer)
#define TW2_DECODER_IS_WATCHED
#pragma clang attribute push(__attribute__((no_sanitize("shift", "signed-integer-overflow"))), apply_to = function)
#endif
#endif
#include <stb/stb_image.h>
#include <stb/stb_image_write.h>
#ifdef TW2_DECODER_IS_WATCHED
#pragma clang attribute pop
#endif

namespace
{
constexpr int bytesPerPixel = 4;

/// What decoding may hold at a time: a few copies of the picture at 16 bits per channel, and of the file.
std::size_t getDecoderLimit(std::size_t pixels, std::size_t fileSize) noexcept
{
    constexpr std::size_t workBytesPerPixel = 64;
    constexpr std::size_t copiesOfFile = 4;
    constexpr std::size_t workspace = std::size_t{4} << 20;
    return pixels * workBytesPerPixel + fileSize * copiesOfFile + workspace;
}

/// Finds out the sides and rejects what is no picture, too large or cut off.
void inspect(const unsigned char* data, int size, const char* name, std::size_t pixelLimit, int& width, int& height,
             int& channels)
{
    const auto requireSound = [name](const char* damage)
    {
        if (damage)
        {
            throw G_ImageException(name, damage);
        }
    };
    requireSound(findImageDamage(data, static_cast<std::size_t>(size)));
    if (!stbi_info_from_memory(data, size, &width, &height, &channels))
    {
        throw G_ImageException(name, S_STR("not a PNG, JPEG, TGA or BMP picture of up to %zu pixels", pixelLimit));
    }
    // The rows of a BMP go from top to bottom where its height is below 0.
    height = height < 0 && height > INT_MIN ? -height : height;
    if (width <= 0 || height <= 0)
    {
        throw G_ImageException(name, S_STR("%i x %i pixels are no picture", width, height));
    }
    const auto columns = static_cast<std::size_t>(width);
    const auto rows = static_cast<std::size_t>(height);
    if (columns > pixelLimit / rows)
    {
        throw G_ImageException(name, S_STR("%i x %i pixels are more than %zu", width, height, pixelLimit));
    }
    requireSound(findMissingPixels(data, static_cast<std::size_t>(size), columns, rows));
}
}  // namespace

void inspectImage(const unsigned char* data, std::size_t size, const char* name, std::size_t pixelLimit,
                  unsigned int& width, unsigned int& height, bool& alpha)
{
    if (size > INT_MAX)
    {
        throw G_ImageException(name, "the file is larger than 2 GB");
    }
    try
    {
        const Arena arena(getDecoderLimit(0, size));
        int columns = 0;
        int rows = 0;
        int channels = 0;
        inspect(data, static_cast<int>(size), name, pixelLimit, columns, rows, channels);
        width = static_cast<unsigned int>(columns);
        height = static_cast<unsigned int>(rows);
        alpha = channels % 2 == 0;  // beside one value or three
    }
    catch (const DecoderFailure& failure)
    {
        throw G_ImageException(name, failure.m_szReason);
    }
}

S_Bytes decodeImage(const unsigned char* data, std::size_t size, const char* name, std::size_t pixelLimit,
                    unsigned int& width, unsigned int& height)
{
    bool alpha = false;
    inspectImage(data, size, name, pixelLimit, width, height, alpha);
    try
    {
        int columns = static_cast<int>(width);
        int rows = static_cast<int>(height);
        const int length = static_cast<int>(size);
        const std::size_t pixels = static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows);
        const Arena arena(getDecoderLimit(pixels, size));
        int channels = 0;
        const unsigned char* decoded = stbi_load_from_memory(data, length, &columns, &rows, &channels, bytesPerPixel);
        if (!decoded)
        {
            throw DecoderFailure{stbi_failure_reason()};
        }
        width = static_cast<unsigned int>(columns);
        height = static_cast<unsigned int>(rows);
        return {decoded, decoded + pixels * bytesPerPixel};
    }
    catch (const DecoderFailure& failure)
    {
        throw G_ImageException(name, failure.m_szReason);
    }
}

S_Bytes encodeImage(const unsigned char* pixels, unsigned int width, unsigned int height)
{
    const Arena arena(SIZE_MAX);
    int size = 0;
    const unsigned char* encoded =
        stbi_write_png_to_mem(pixels, static_cast<int>(width) * bytesPerPixel, static_cast<int>(width),
                              static_cast<int>(height), bytesPerPixel, &size);
    return {encoded, encoded + size};
}
