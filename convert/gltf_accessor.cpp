#include "convert/gltf_accessor.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

namespace TW2::convert
{
namespace
{
/// Elements without bytes of their own take memory that the file does not.
constexpr std::size_t mostEmptyElements = std::size_t{1} << 24U;

std::size_t getComponentSize(int type)
{
    const int size = tinygltf::GetComponentSizeInBytes(static_cast<std::uint32_t>(type));
    return size > 0 && type != TINYGLTF_COMPONENT_TYPE_DOUBLE ? static_cast<std::size_t>(size) : 0;
}

template <typename T>
T readAs(const unsigned char* bytes)
{
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

template <typename T>
float readNumber(const unsigned char* bytes, bool normalized)
{
    const auto value = static_cast<float>(readAs<T>(bytes));
    if (!normalized || std::is_floating_point_v<T>)
    {
        return value;
    }
    return std::max(value / static_cast<float>(std::numeric_limits<T>::max()), -1.0F);
}

float readNumber(const unsigned char* bytes, int type, bool normalized)
{
    switch (type)
    {
        case TINYGLTF_COMPONENT_TYPE_BYTE:
            return readNumber<std::int8_t>(bytes, normalized);
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE:
            return readNumber<std::uint8_t>(bytes, normalized);
        case TINYGLTF_COMPONENT_TYPE_SHORT:
            return readNumber<std::int16_t>(bytes, normalized);
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT:
            return readNumber<std::uint16_t>(bytes, normalized);
        case TINYGLTF_COMPONENT_TYPE_INT:
            return readNumber<std::int32_t>(bytes, normalized);
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT:
            return readNumber<std::uint32_t>(bytes, normalized);
        default:
            return readNumber<float>(bytes, false);
    }
}

unsigned int readIndex(const unsigned char* bytes, int type)
{
    switch (type)
    {
        case TINYGLTF_COMPONENT_TYPE_BYTE:
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE:
            return readAs<std::uint8_t>(bytes);
        case TINYGLTF_COMPONENT_TYPE_SHORT:
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT:
            return readAs<std::uint16_t>(bytes);
        case TINYGLTF_COMPONENT_TYPE_FLOAT:
            return static_cast<unsigned int>(std::clamp(readAs<float>(bytes), 0.0F, 1e9F));
        default:
            return readAs<std::uint32_t>(bytes);
    }
}

/// Reads the elements of one accessor, each number by a function.
class Reader
{
public:
    Reader(const GltfFile& file, int accessor, std::size_t components, const std::string& place)
        : m_file(file),
          m_accessor(file.at(file.getModel().accessors, accessor, "accessors", place)),
          m_strPlace("accessors[" + std::to_string(accessor) + "]"),
          m_uiComponents(components)
    {
        m_uiSize = getComponentSize(m_accessor.componentType);
        const int own = tinygltf::GetNumComponentsInType(static_cast<std::uint32_t>(m_accessor.type));
        if (m_uiSize == 0 || own != static_cast<int>(components))
        {
            m_file.fail(m_strPlace, "has elements of " + std::to_string(std::max(own, 0)) + " numbers, " + place +
                                        " needs " + std::to_string(components));
        }
        // Columns of small numbers lie apart from each other.
        const bool matrix = m_accessor.type == TINYGLTF_TYPE_MAT4 || m_accessor.type == TINYGLTF_TYPE_MAT2;
        if (matrix && m_uiSize != sizeof(float))
        {
            m_file.fail(m_strPlace, "has matrices of whole numbers");
        }
    }

    template <typename T, typename Convert>
    std::vector<T> read(Convert convert) const
    {
        std::vector<T> values;
        if (m_accessor.bufferView >= 0)
        {
            const std::size_t elementSize = m_uiSize * m_uiComponents;
            const GltfFile::Bytes bytes = m_file.getView(m_accessor.bufferView, m_strPlace);
            std::size_t stride = m_file.getStride(m_accessor.bufferView);
            stride = stride == 0 ? elementSize : stride;
            checkRoom(bytes.size(), m_accessor.byteOffset, m_accessor.count, stride, elementSize);
            values.resize(m_accessor.count * m_uiComponents);
            for (std::size_t i = 0; i < m_accessor.count; ++i)
            {
                copy(bytes.data() + m_accessor.byteOffset + i * stride, i, values, convert);
            }
        }
        else if (m_accessor.count > mostEmptyElements)
        {
            m_file.fail(m_strPlace, "has " + std::to_string(m_accessor.count) + " elements without bytes");
        }
        values.resize(m_accessor.count * m_uiComponents);
        if (m_accessor.sparse.isSparse)
        {
            fillIn(values, convert);
        }
        return values;
    }

    [[nodiscard]] const tinygltf::Accessor& getAccessor() const noexcept { return m_accessor; }

private:
    void checkRoom(std::size_t bytes, std::size_t offset, std::size_t count, std::size_t stride, std::size_t size) const
    {
        const bool fits = count == 0 || (stride >= size && offset <= bytes && bytes - offset >= size &&
                                         count - 1 <= (bytes - offset - size) / stride);
        if (!fits)
        {
            m_file.fail(m_strPlace, std::to_string(count) + " elements of " + std::to_string(size) +
                                        " bytes from byte " + std::to_string(offset) + " do not fit its " +
                                        std::to_string(bytes) + " bytes");
        }
    }

    template <typename T, typename Convert>
    void copy(const unsigned char* element, std::size_t target, std::vector<T>& values, Convert convert) const
    {
        for (std::size_t c = 0; c < m_uiComponents; ++c)
        {
            values[target * m_uiComponents + c] = convert(element + c * m_uiSize);
        }
    }

    /// Puts the elements that differ in their places.
    template <typename T, typename Convert>
    void fillIn(std::vector<T>& values, Convert convert) const
    {
        const auto& sparse = m_accessor.sparse;
        const std::size_t count = sparse.count < 0 ? 0 : static_cast<std::size_t>(sparse.count);
        const std::size_t indexSize = getComponentSize(sparse.indices.componentType);
        if (indexSize == 0 || sparse.indices.byteOffset < 0 || sparse.values.byteOffset < 0)
        {
            m_file.fail(m_strPlace, "its sparse elements cannot be found");
        }
        const auto indexOffset = static_cast<std::size_t>(sparse.indices.byteOffset);
        const auto valueOffset = static_cast<std::size_t>(sparse.values.byteOffset);
        const std::size_t elementSize = m_uiSize * m_uiComponents;
        const GltfFile::Bytes indices = m_file.getView(sparse.indices.bufferView, m_strPlace);
        const GltfFile::Bytes elements = m_file.getView(sparse.values.bufferView, m_strPlace);
        checkRoom(indices.size(), indexOffset, count, indexSize, indexSize);
        checkRoom(elements.size(), valueOffset, count, elementSize, elementSize);
        for (std::size_t i = 0; i < count; ++i)
        {
            const unsigned int target =
                readIndex(indices.data() + indexOffset + i * indexSize, sparse.indices.componentType);
            if (target >= m_accessor.count)
            {
                m_file.fail(m_strPlace, "its sparse element " + std::to_string(i) + " replaces element " +
                                            std::to_string(target) + " of " + std::to_string(m_accessor.count));
            }
            copy(elements.data() + valueOffset + i * elementSize, target, values, convert);
        }
    }

    const GltfFile& m_file;
    const tinygltf::Accessor& m_accessor;
    std::string m_strPlace;
    std::size_t m_uiComponents;
    std::size_t m_uiSize = 0;  // of one number, in bytes
};
}  // namespace

std::vector<float> readNumbers(const GltfFile& file, int accessor, std::size_t components, const std::string& place)
{
    const Reader reader(file, accessor, components, place);
    const int type = reader.getAccessor().componentType;
    const bool normalized = reader.getAccessor().normalized;
    return reader.read<float>([type, normalized](const unsigned char* bytes)
                              { return readNumber(bytes, type, normalized); });
}

std::vector<unsigned int> readIndices(const GltfFile& file, int accessor, std::size_t components,
                                      const std::string& place)
{
    const Reader reader(file, accessor, components, place);
    const int type = reader.getAccessor().componentType;
    return reader.read<unsigned int>([type](const unsigned char* bytes) { return readIndex(bytes, type); });
}

std::size_t getComponents(const GltfFile& file, int accessor)
{
    const auto& accessors = file.getModel().accessors;
    if (accessor < 0 || static_cast<std::size_t>(accessor) >= accessors.size())
    {
        return 0;
    }
    const int count = tinygltf::GetNumComponentsInType(
        static_cast<std::uint32_t>(accessors[static_cast<std::size_t>(accessor)].type));
    return static_cast<std::size_t>(std::max(count, 0));
}

float getNormalizer(const GltfFile& file, int accessor)
{
    const auto& accessors = file.getModel().accessors;
    if (accessor < 0 || static_cast<std::size_t>(accessor) >= accessors.size() ||
        !accessors[static_cast<std::size_t>(accessor)].normalized)
    {
        return 1.0F;
    }
    switch (accessors[static_cast<std::size_t>(accessor)].componentType)
    {
        case TINYGLTF_COMPONENT_TYPE_BYTE:
            return 127.0F;
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE:
            return 255.0F;
        case TINYGLTF_COMPONENT_TYPE_SHORT:
            return 32767.0F;
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT:
            return 65535.0F;
        default:
            return 1.0F;
    }
}
}  // namespace TW2::convert
