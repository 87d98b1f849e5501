#pragma once

#include "convert/collada_scene.h"
#include "convert/pictures.h"
#include "convert/warnings.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace TW2::convert
{
/// The materials of a COLLADA file as surfaces, each once for every way in which it is bound to coordinates.
class ColladaSurfaces
{
public:
    /// All have to stay.
    ColladaSurfaces(const ColladaDocument& document, PictureCollector& pictures, Warnings& warnings);

    /// The surface that an instance of a geometry shows for a symbol of its triangles, whose coordinates have these
    /// numbers of sets; a plain one when it has no material.
    [[nodiscard]] int getSurface(const pugi::xml_node& instance, const std::string& symbol,
                                 const std::vector<int>& sets);
    /// The surfaces asked for so far; their names are different.
    [[nodiscard]] std::vector<Surface> take();

private:
    class EffectReader;

    const ColladaDocument& m_document;
    PictureCollector& m_pictures;
    Warnings& m_warnings;
    std::vector<Surface> m_vecSurfaces;
    std::map<std::pair<std::string, std::string>, int> m_mapSurfaces;  ///< by material and how it is bound
};
}  // namespace TW2::convert
