#pragma once

#include "convert/gltf_library.h"
#include "convert/model.h"
#include "convert/warnings.h"

#include <platform/runtime/allocator.h>

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace TW2::convert
{
/// A glTF 2.0 file, text or binary: its description, and the bytes that it refers to.
///
/// Every failure is a ConvertException that names the file and the place in it, such as `accessors[3]`.
class GltfFile
{
public:
    using Bytes = std::span<const unsigned char>;

    /// Reads the description and every buffer. Extensions that the file cannot do without and that are not known are an
    /// error, others that are not known are named in `warnings`.
    GltfFile(const std::string& fileName, Warnings& warnings);

    [[nodiscard]] const std::string& getName() const noexcept { return m_strName; }
    [[nodiscard]] const tinygltf::Model& getModel() const noexcept { return m_model; }

    /// The files that buffers were read from.
    [[nodiscard]] const std::vector<std::string>& getSources() const noexcept { return m_vecSources; }

    /// The bytes of a buffer view, unpacked when they are packed. Valid as long as the file.
    [[nodiscard]] Bytes getView(int index, const std::string& place) const;
    /// Bytes from the start of one element of a buffer view to the next; 0: they stand side by side.
    [[nodiscard]] std::size_t getStride(int index) const;

    [[nodiscard]] std::size_t getImageCount() const noexcept { return m_vecImages.size(); }
    /// Where a picture comes from: its bytes, or the name of a file that is not looked for yet.
    [[nodiscard]] Picture getImage(std::size_t index) const;

    /// Throws.
    [[noreturn]] void fail(const std::string& place, const std::string& reason) const;

    /// The element of a list of the description that `index` names. Throws when there is none.
    template <typename T>
    [[nodiscard]] const T& at(const std::vector<T>& list, int index, const char* what, const std::string& place) const
    {
        if (index < 0 || static_cast<std::size_t>(index) >= list.size())
        {
            failIndex(place, what, index, list.size());
        }
        return list[static_cast<std::size_t>(index)];
    }

private:
    struct Image
    {
        std::string m_strName;
        std::string m_strURI;
        int m_iView;  ///< -1: none
    };
    /// A buffer view packed by EXT_meshopt_compression.
    struct PackedView
    {
        mutable std::vector<unsigned char> m_vecUnpacked;
        mutable bool m_bUnpacked = false;
    };

    void checkExtensions(Warnings& warnings) const;
    void loadBuffer(const std::string& uri, std::size_t size, bool mayBeAbsent, std::size_t index, Bytes binary);
    [[nodiscard]] Bytes getBytes(int buffer, std::size_t offset, std::size_t length, const std::string& place) const;
    [[nodiscard]] Bytes unpack(int index, const tinygltf::Value& extension, const std::string& place) const;
    [[noreturn]] void failIndex(const std::string& place, const char* what, int index, std::size_t count) const;

    std::string m_strName;
    S_Bytes m_vecContent;
    std::vector<std::vector<unsigned char>> m_vecOwnBuffers;
    std::vector<std::string> m_vecSources;
    std::vector<Bytes> m_vecBuffers;
    std::vector<Image> m_vecImages;
    std::vector<PackedView> m_vecPackedViews;
    tinygltf::Model m_model;
};
}  // namespace TW2::convert
