#pragma once

#include "convert/model.h"

#include <platform/image/image.h>

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace TW2::convert
{
/// The content of a picture's file. Throws S_FileException.
[[nodiscard]] std::vector<unsigned char> loadPicture(const Picture& picture);
/// Decodes a picture: what G_Image reads, and WebP where it is built in. Throws S_FileException or G_ImageException.
[[nodiscard]] G_Image decodePicture(const Picture& picture);
/// The image as the content of a PNG file.
[[nodiscard]] std::vector<unsigned char> encodePicture(const G_Image& image);
/// Whether it is a picture of a format that the library itself does not read.
[[nodiscard]] bool isWebP(const std::vector<unsigned char>& content);

/// The pictures that a model's textures show, each once.
class PictureCollector
{
public:
    /// `folders` are searched for pictures besides the model's own.
    PictureCollector(std::string modelFile, std::vector<std::string> folders);

    /// Adds a picture, whose file is searched for when the model does not carry it: under the name as written, by its
    /// last part beside the model, in a folder of textures there and in the folders given, and there under other
    /// endings of pictures as well. Returns its index; -1 when it is not found or cannot be decoded, for which `reason`
    /// says why.
    [[nodiscard]] int add(Picture picture, std::string& reason);
    /// The pictures added so far; the collector is empty afterwards.
    [[nodiscard]] std::vector<Picture> take() { return std::move(m_vecPictures); }
    [[nodiscard]] const Picture& get(int index) const { return m_vecPictures[static_cast<std::size_t>(index)]; }

private:
    struct Known
    {
        int m_iIndex = -1;
        std::string m_strReason;
    };
    [[nodiscard]] std::string find(const std::string& name) const;
    [[nodiscard]] std::string findByStem(const std::string& name) const;

    std::vector<std::string> m_vecFolders;  // each with a closing separator
    std::vector<Picture> m_vecPictures;
    std::map<std::string, Known> m_mapFiles;
};
}  // namespace TW2::convert
