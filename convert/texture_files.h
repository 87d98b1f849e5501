#pragma once

#include "convert/model.h"
#include "convert/output_files.h"
#include "convert/unique_names.h"
#include "convert/warnings.h"

#include <platform/image/image.h>

#include <map>
#include <string>
#include <tuple>
#include <vector>

namespace TW2::convert
{
/// What is done to a picture because the library's materials have no word for it.
struct Retouch
{
    G_FColor m_factor{255.0F, 255.0F, 255.0F};  ///< multiplies the picture's light
    bool m_bMirrorU = false;                    ///< its mirror image stands beside it
    bool m_bMirrorV = false;                    ///< its mirror image stands below it
};

/// The picture files of a conversion: each picture once for each thing that is done to it, under a name of its own.
class TextureFiles
{
public:
    /// All must outlive this.
    TextureFiles(const std::vector<Picture>& pictures, OutputFiles& files, Warnings& warnings)
        : m_pictures(pictures), m_files(files), m_warnings(warnings)
    {
    }

    /// A picture of the model; as it is where nothing is done to it and the library reads its format. White stands for
    /// one that turns out to be damaged, which is told. Returns the name of the file.
    std::string add(int picture, const Retouch& retouch);
    /// A picture made here.
    std::string add(const G_Image& image, const std::string& name);

    static constexpr const char* folderName = "textures";

private:
    [[nodiscard]] G_Image decode(const Picture& picture, const std::string& name);

    using Key = std::tuple<int, float, float, float, bool, bool>;

    const std::vector<Picture>& m_pictures;
    OutputFiles& m_files;
    Warnings& m_warnings;
    UniqueNames m_names{"texture"};
    std::map<Key, std::string> m_mapNames;
};
}  // namespace TW2::convert
