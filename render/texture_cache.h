#pragma once

#include "render/gl_handle.h"

#include <platform/scene/material.h>

#include <map>
#include <unordered_map>

class P_Map;

namespace TW2::render
{
/// The renderer's copies of texture maps, made when a map is first drawn.
class TextureCache
{
public:
    TextureCache();

    /// Binds a map (null, or one without a picture: plain white) and the way it is sampled to a texture unit. A map
    /// that was not validated yet is validated, which may throw.
    void bind(unsigned int unit, P_Map* map, P_Material::FILTER_MODE filter, P_Material::TEXTURE_ADDRESS_MODE address);
    /// Forgets the copies that were not bound since the last call.
    void sweep();
    /// Maps there is a copy of.
    [[nodiscard]] std::size_t getMapCount() const noexcept { return m_mapTextures.size(); }

private:
    struct Entry
    {
        GLTexture m_texture;
        bool m_bUsed = true;
    };
    Entry& find(P_Map& map);
    const GLSampler& findSampler(P_Material::FILTER_MODE filter, P_Material::TEXTURE_ADDRESS_MODE address);

    std::unordered_map<unsigned long long, Entry> m_mapTextures;
    std::map<std::pair<unsigned int, unsigned int>, GLSampler> m_mapSamplers;
    GLTexture m_white;
};
}  // namespace TW2::render
