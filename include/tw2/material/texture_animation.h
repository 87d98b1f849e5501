#pragma once

#include <tw2/export.h>

#include <platform/runtime/allocator.h>

#include <cstddef>

namespace TW2
{
class TW_Texture;
struct MaterialTextureChunk;

/// The textures of one texture slot, a frame each, and how they are played. A still texture has one frame.
class TW2_API TextureAnimation : public S_Allocated
{
public:
    /// @name Life
    /// @{

    /// Builds the frames of `slot`; the files of `alpha` (null: none) supply their alpha channels. The longer list of
    /// files gives the number of frames, the shorter one repeats from its start; an `alpha` without files counts as
    /// none. Throws TW_Exception_TextureNotFound for a file that is not found, and with the slot's name for a slot
    /// without files.
    explicit TextureAnimation(const MaterialTextureChunk& slot, const MaterialTextureChunk* alpha = nullptr)
        : TextureAnimation()
    {
        construct(slot, alpha);
    }
    /// Shares the engine maps.
    TextureAnimation(const TextureAnimation& other) : TextureAnimation() { construct(other); }
    /// Shares the engine maps; an animation assigned to itself stays as it is.
    TextureAnimation& operator=(const TextureAnimation& other);
    /// Lets the maps go.
    ~TextureAnimation() { destruct(); }

    /// As the constructors of the same arguments, in the place of what was there. When it throws, the animation is not
    /// constructed.
    void construct(const MaterialTextureChunk& slot, const MaterialTextureChunk* alpha = nullptr);
    void construct(const TextureAnimation& other);
    /// Lets the maps go; nothing happens to an animation that has none.
    void destruct() noexcept;
    /// Whether it has frames.
    [[nodiscard]] bool isConstructed() const noexcept { return m_bConstructed; }
    /// @}

    /// @name Frames of a constructed animation
    /// @{

    /// Entries in playing order, at least 1; a ping-pong sequence counts both ways.
    [[nodiscard]] unsigned int getFrameCount() const noexcept { return static_cast<unsigned int>(m_vecFrames.size()); }
    /// The texture shown at a frame number, counted from the start frame: past the end the last one, or around when the
    /// animation loops.
    [[nodiscard]] TW_Texture* getFrame(unsigned int frame) const noexcept;
    /// Frames per second; 0 stands still.
    [[nodiscard]] int getFramesPerSecond() const noexcept { return m_iFramesPerSecond; }
    void setFramesPerSecond(int rate) noexcept { m_iFramesPerSecond = rate; }
    /// Frames by which the animation is advanced: given by the file, or chosen by chance when it was built.
    [[nodiscard]] int getStartFrame() const noexcept { return m_iStartFrame; }
    /// Whether it begins again after its last entry.
    [[nodiscard]] bool isLooping() const noexcept { return m_bLooping; }
    /// @}

    /// @name Texture memory, of every entry
    /// @{

    /// Has the maps ready before they are first drawn; throws what reading a picture throws.
    void addToTextureMemory();
    /// Gives the maps' memory back until they are needed again.
    void removeFromTextureMemory() noexcept;
    /// @}

private:
    TextureAnimation() noexcept { initializeMembers(); }
    void initializeMembers() noexcept;
    void createFrames(const MaterialTextureChunk& slot, const S_Vector<S_String>& alphaFiles);

    bool m_bConstructed;
    S_Vector<TW_Texture*> m_vecFrames;  // owned, each distinct one once
    int m_iFramesPerSecond;
    int m_iStartFrame;
    bool m_bLooping;
};
}  // namespace TW2
