#include <tw2/core/exceptions.h>
#include <tw2/material/material_texture_chunk.h>
#include <tw2/material/texture.h>
#include <tw2/material/texture_animation.h>

#include <platform/runtime/rollback.h>

#include <algorithm>
#include <cstdlib>
#include <functional>

namespace TW2
{
TextureAnimation& TextureAnimation::operator=(const TextureAnimation& other)
{
    construct(other);
    return *this;
}

void TextureAnimation::initializeMembers() noexcept
{
    m_bConstructed = false;
    S_Vector<TW_Texture*>().swap(m_vecFrames);
    m_iFramesPerSecond = 1;
    m_iStartFrame = 0;
    m_bLooping = false;
}

void TextureAnimation::construct(const MaterialTextureChunk& slot, const MaterialTextureChunk* alpha)
{
    destruct();
    if (slot.frameFiles.empty())
    {
        throw TW_Exception_TextureNotFound(slot.name.c_str());
    }
    TextureAnimation built;  // the callback of textures may do with this one what it likes
    built.m_bConstructed = true;
    built.createFrames(slot, alpha ? alpha->frameFiles : S_Vector<S_String>());
    if (slot.playback == MaterialTextureChunk::PLAYBACK_PING_PONG)
    {
        const S_Vector<TW_Texture*> forward = built.m_vecFrames;
        built.m_vecFrames.insert(built.m_vecFrames.end(), forward.rbegin(), forward.rend());
    }
    destruct();
    m_bConstructed = true;
    m_vecFrames.swap(built.m_vecFrames);
    m_iFramesPerSecond = slot.framesPerSecond;
    m_bLooping = slot.playback != MaterialTextureChunk::PLAYBACK_ONCE;
    m_iStartFrame = slot.randomStart ? std::rand() % static_cast<int>(m_vecFrames.size()) : slot.startFrame;
}

void TextureAnimation::createFrames(const MaterialTextureChunk& slot, const S_Vector<S_String>& alphaFiles)
{
    TW_Texture::CreateInfo info;
    info.name = slot.name;
    info.mipLevels = slot.mipLevels;
    const std::size_t count = std::max(slot.frameFiles.size(), alphaFiles.size());
    m_vecFrames.reserve(count);
    for (std::size_t frame = 0; frame < count; ++frame)
    {
        info.filename = slot.frameFiles[frame % slot.frameFiles.size()];
        if (!alphaFiles.empty())
        {
            info.alphaFilename = alphaFiles[frame % alphaFiles.size()];
        }
        m_vecFrames.push_back(new TW_Texture(info));
    }
}

void TextureAnimation::construct(const TextureAnimation& other)
{
    if (this == &other)
    {
        return;
    }
    destruct();
    if (!other.m_bConstructed)
    {
        return;
    }
    S_Rollback rollback([this]() noexcept { destruct(); });
    m_bConstructed = true;
    m_iFramesPerSecond = other.m_iFramesPerSecond;
    m_iStartFrame = other.m_iStartFrame;
    m_bLooping = other.m_bLooping;
    m_vecFrames.reserve(other.m_vecFrames.size());
    for (const TW_Texture* frame : other.m_vecFrames)
    {
        m_vecFrames.push_back(new TW_Texture(*frame));
    }
    rollback.keep();
}

void TextureAnimation::destruct() noexcept
{
    if (!m_bConstructed)
    {
        return;
    }
    // The way back of a ping-pong sequence names the textures of the way there once more.
    std::sort(m_vecFrames.begin(), m_vecFrames.end(), std::less<>());
    m_vecFrames.erase(std::unique(m_vecFrames.begin(), m_vecFrames.end()), m_vecFrames.end());
    for (TW_Texture* frame : m_vecFrames)
    {
        delete frame;
    }
    initializeMembers();
}

TW_Texture* TextureAnimation::getFrame(unsigned int frame) const noexcept
{
    const auto count = static_cast<unsigned int>(m_vecFrames.size());
    const unsigned int position = static_cast<unsigned int>(m_iStartFrame) + frame;
    if (position >= count && !m_bLooping)
    {
        return m_vecFrames.back();
    }
    return m_vecFrames[position % count];
}

void TextureAnimation::addToTextureMemory()
{
    for (TW_Texture* frame : m_vecFrames)
    {
        frame->addToTextureMemory();
    }
}

void TextureAnimation::removeFromTextureMemory() noexcept
{
    for (TW_Texture* frame : m_vecFrames)
    {
        frame->removeFromTextureMemory();
    }
}
}  // namespace TW2
