#pragma once

#include "convert/fbx_scene.h"
#include "convert/pictures.h"
#include "convert/warnings.h"

#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

namespace TW2::convert
{
/// The materials of an FBX file as surfaces, each once.
class FbxSurfaces
{
public:
    /// All have to stay.
    FbxSurfaces(const FbxScene& scene, PictureCollector& pictures, Warnings& warnings);

    /// The surfaces of a node's materials, in the file's order; a plain one when it has none. Pictures that are not
    /// found, or that cannot be decoded, leave the surface without them, which a warning tells.
    [[nodiscard]] std::vector<int> getSurfaces(std::size_t place);
    /// The surfaces asked for so far; their names are different.
    [[nodiscard]] std::vector<Surface> take();

private:
    [[nodiscard]] Surface read(const FbxObject& material);
    /// The first texture on one of the properties: none for null.
    [[nodiscard]] Texture readTexture(const FbxObject* source, const std::string& part);
    [[nodiscard]] const FbxObject* findTexture(std::int64_t id, std::string_view property) const;

    const FbxScene& m_scene;
    PictureCollector& m_pictures;
    Warnings& m_warnings;
    std::vector<Surface> m_vecSurfaces;
    std::unordered_map<std::int64_t, int> m_mapSurfaces;
    std::optional<int> m_plain;
};
}  // namespace TW2::convert
