#include "render/texture_cache.h"

#include <platform/scene/map.h>

#include <algorithm>

namespace TW2::render
{
namespace
{
GLTexture upload(unsigned int width, unsigned int height, int levels, const unsigned char* pixels)
{
    GLTexture texture = GLTexture::create();
    glBindTexture(GL_TEXTURE_2D, texture.get());
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, static_cast<GLsizei>(width), static_cast<GLsizei>(height), 0, GL_RGBA,
                 GL_UNSIGNED_BYTE, pixels);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, levels - 1);
    glGenerateMipmap(GL_TEXTURE_2D);
    return texture;
}

struct Filter
{
    GLint m_iMinify;
    GLint m_iMagnify;
};

Filter translate(P_Material::FILTER_MODE filter)
{
    switch (filter)
    {
        case P_Material::FILTER_MODE::Point:
            return {GL_NEAREST, GL_NEAREST};
        case P_Material::FILTER_MODE::PointMipMapped:
            return {GL_NEAREST_MIPMAP_NEAREST, GL_NEAREST};
        case P_Material::FILTER_MODE::PointMipLinear:
            return {GL_NEAREST_MIPMAP_LINEAR, GL_NEAREST};
        case P_Material::FILTER_MODE::Bilinear:
            return {GL_LINEAR, GL_LINEAR};
        case P_Material::FILTER_MODE::BilinearMipMapped:
            return {GL_LINEAR_MIPMAP_NEAREST, GL_LINEAR};
        case P_Material::FILTER_MODE::Trilinear:
        case P_Material::FILTER_MODE::Anisotropic:
            break;
    }
    return {GL_LINEAR_MIPMAP_LINEAR, GL_LINEAR};
}

GLint translate(P_Material::TEXTURE_ADDRESS_MODE address)
{
    switch (address)
    {
        case P_Material::TEXTURE_ADDRESS_MODE::Mirror:
            return GL_MIRRORED_REPEAT;
        case P_Material::TEXTURE_ADDRESS_MODE::Clamp:
            return GL_CLAMP_TO_EDGE;
        case P_Material::TEXTURE_ADDRESS_MODE::Wrap:
            break;
    }
    return GL_REPEAT;
}

void allowAnisotropy(const GLSampler& sampler)
{
    constexpr float most = 8.0F;
    constexpr GLenum anisotropy = 0x84FE;  // GL_TEXTURE_MAX_ANISOTROPY_EXT, which not every header has
    constexpr GLenum largestAnisotropy = 0x84FF;
    if (hasExtension("GL_EXT_texture_filter_anisotropic"))
    {
        GLfloat largest = 1.0F;
        glGetFloatv(largestAnisotropy, &largest);
        glSamplerParameterf(sampler.get(), anisotropy, std::min(most, largest));
    }
}
}  // namespace

TextureCache::TextureCache()
{
    constexpr unsigned char white[] = {255, 255, 255, 255};
    m_white = upload(1, 1, 1, white);
}

TextureCache::Entry& TextureCache::find(P_Map& map)
{
    const auto found = m_mapTextures.find(map.getId());
    if (found != m_mapTextures.end())
    {
        return found->second;
    }
    map.validate();
    const G_Image& image = map.getImage();
    Entry entry;
    entry.m_texture = upload(image.getWidth(), image.getHeight(), map.getUsedMipLevelCount(), image.getPixels());
    return m_mapTextures.emplace(map.getId(), std::move(entry)).first->second;
}

const GLSampler& TextureCache::findSampler(P_Material::FILTER_MODE filter, P_Material::TEXTURE_ADDRESS_MODE address)
{
    GLSampler& sampler = m_mapSamplers[{static_cast<unsigned int>(filter), static_cast<unsigned int>(address)}];
    if (sampler.get() == 0)
    {
        sampler = GLSampler::create();
        const Filter modes = translate(filter);
        glSamplerParameteri(sampler.get(), GL_TEXTURE_MIN_FILTER, modes.m_iMinify);
        glSamplerParameteri(sampler.get(), GL_TEXTURE_MAG_FILTER, modes.m_iMagnify);
        glSamplerParameteri(sampler.get(), GL_TEXTURE_WRAP_S, translate(address));
        glSamplerParameteri(sampler.get(), GL_TEXTURE_WRAP_T, translate(address));
        if (filter == P_Material::FILTER_MODE::Anisotropic)
        {
            allowAnisotropy(sampler);
        }
    }
    return sampler;
}

void TextureCache::bind(unsigned int unit, P_Map* map, P_Material::FILTER_MODE filter,
                        P_Material::TEXTURE_ADDRESS_MODE address)
{
    glActiveTexture(GL_TEXTURE0 + unit);
    GLuint texture = m_white.get();
    if (map)
    {
        Entry& entry = find(*map);
        entry.m_bUsed = true;
        texture = entry.m_texture.get();
    }
    glBindTexture(GL_TEXTURE_2D, texture);
    glBindSampler(unit, findSampler(filter, address).get());
}

void TextureCache::sweep()
{
    std::erase_if(m_mapTextures, [](const auto& item) { return !item.second.m_bUsed; });
    for (auto& [id, entry] : m_mapTextures)
    {
        entry.m_bUsed = false;
    }
}
}  // namespace TW2::render
