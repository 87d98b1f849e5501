#pragma once

#include <tw2/export.h>
#include <tw2/material/material.h>

#include <platform/runtime/allocator.h>

#include <memory>

class P_VirtualObject;

namespace TW2
{
struct TWMaterialChunk;

/// The materials of one animated object, and their animated textures grouped into sets by texture name.
///
/// A new manager is constructed and empty. It owns its materials; the engine materials in them are shared with copies
/// of the manager unless a texture is animated. Set indices stay valid until the manager is destructed or constructed
/// again. Names are compared byte by byte.
class TW2_API TW_MaterialManager : public S_Allocated
{
public:
    /// @name Life
    /// @{
    TW_MaterialManager() noexcept;
    /// Copies every material, in order, and builds the sets afresh.
    TW_MaterialManager(const TW_MaterialManager& other);
    ~TW_MaterialManager();

    void construct() noexcept;
    /// When an exception passes, the manager is unconstructed.
    void construct(const TW_MaterialManager& other);
    void destruct() noexcept;
    [[nodiscard]] bool isConstructed() const noexcept { return m_bConstructed; }
    /// @}

    /// @name Materials
    /// @{

    /// Builds a material and adds it; an unconstructed manager is constructed then. Throws what TW_Material::construct
    /// throws; the manager is then as before.
    void addMaterial(const TWMaterialChunk& chunk);
    /// The first material of that name, or null.
    [[nodiscard]] TW_Material* findMaterial(const S_String& name) const;
    /// `index` is below the count.
    [[nodiscard]] TW_Material* getMaterial(int index) const noexcept;
    [[nodiscard]] unsigned int getMaterialCount() const noexcept
    {
        return static_cast<unsigned int>(m_vecMaterials.size());
    }
    /// Gives the primitives of `object`, which use engine materials of `source`, this manager's materials of the same
    /// names. A primitive whose material is not one of `source`, or whose name is not found here, is left alone.
    void remapMaterials(P_VirtualObject* object, TW_MaterialManager* source);
    void addToTextureMemory();
    void removeFromTextureMemory() noexcept;
    /// @}

    /// @name Texture animation sets
    /// A set holds every animated texture slot whose texture carries the set's name. An unknown set or animation gives
    /// 0, false or nothing, unless stated otherwise.
    /// @{
    [[nodiscard]] unsigned int getTotalTextureAnimationSets() const noexcept
    {
        return static_cast<unsigned int>(m_vecTextureAnimationSets.size());
    }
    /// Throws TW_Exception_TextureNotFound with the name when there is no such set.
    [[nodiscard]] int getTextureAnimationIndex(const S_String& set) const;
    [[nodiscard]] bool textureAnimationExists(const S_String& set) const;
    [[nodiscard]] bool isValidAnimationSet(int set) const noexcept;
    [[nodiscard]] bool isValidAnimationSet(const S_String& set) const;
    [[nodiscard]] bool isValidAnimation(int set, int animation) const noexcept;
    [[nodiscard]] bool isValidAnimation(const S_String& set, int animation) const;
    /// `set` is valid.
    [[nodiscard]] unsigned int getTotalTextureAnimations(int set) const noexcept;
    [[nodiscard]] unsigned int getTotalTextureAnimations(const S_String& set) const;
    [[nodiscard]] unsigned int getTextureAnimationFrames(int set, int animation) const noexcept;
    [[nodiscard]] unsigned int getTextureAnimationFrames(const S_String& set, int animation) const;
    /// Seconds.
    [[nodiscard]] float getTextureAnimationLength(int set, int animation) const noexcept;
    [[nodiscard]] float getTextureAnimationLength(const S_String& set, int animation) const;
    /// Frames per second.
    [[nodiscard]] float getTextureAnimationFPS(int set, int animation) const noexcept;
    [[nodiscard]] float getTextureAnimationFPS(const S_String& set, int animation) const;
    void setTextureAnimationFPS(int set, int animation, float rate) noexcept;
    void setTextureAnimationFPS(const S_String& set, int animation, float rate);
    /// Animates every texture of the set; true when at least one was animated.
    bool animateTexture(int set, float seconds);
    bool animateTexture(const S_String& set, float seconds);
    bool animateTextureFrame(int set, float frame);
    bool animateTextureFrame(const S_String& set, float frame);
    /// @}

private:
    /// One animated texture slot.
    struct TextureAnimationEntry : S_Allocated
    {
        TextureAnimationEntry(TW_Material* material, TW_Material::TextureType type) noexcept
            : m_pMaterial(material), m_eType(type)
        {
        }

        TW_Material* m_pMaterial;
        TW_Material::TextureType m_eType;
    };
    using TextureAnimationSet = S_Vector<TextureAnimationEntry*>;

    TW_MaterialManager& operator=(const TW_MaterialManager&) = delete;
    void initializeMembers() noexcept;
    void add(std::unique_ptr<TW_Material> added);
    void removeLast() noexcept;
    void addTextureAnimation(TW_Material* material, TW_Material::TextureType type);
    [[nodiscard]] int findSet(const S_String& set) const;
    [[nodiscard]] const TextureAnimationEntry* findEntry(int set, int animation) const noexcept;
    template <typename Animate>
    bool animateSet(int set, Animate animate);

    bool m_bConstructed = false;
    S_Map<S_String, TW_Material*> m_mapMaterials;
    S_Vector<TW_Material*> m_vecMaterials;
    S_Map<S_String, int> m_mapTextureAnimationSets;
    S_Vector<TextureAnimationSet> m_vecTextureAnimationSets;
};
}  // namespace TW2
