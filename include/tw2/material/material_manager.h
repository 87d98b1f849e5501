#pragma once

#include <tw2/core/text.h>
#include <tw2/export.h>
#include <tw2/material/material.h>

#include <platform/runtime/allocator.h>

#include <functional>
#include <memory>
#include <string_view>

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

    /// Constructed and empty.
    TW_MaterialManager() noexcept
    {
        initializeMembers();
        construct();
    }
    /// Copies every material, in order, and builds the sets afresh.
    TW_MaterialManager(const TW_MaterialManager& other) : TW_MaterialManager() { construct(other); }
    /// Deletes the materials.
    ~TW_MaterialManager() { destruct(); }

    /// Back to an empty, constructed manager.
    void construct() noexcept;
    /// When an exception passes, the manager is unconstructed.
    void construct(const TW_MaterialManager& other);
    /// Deletes the materials; a material added afterwards constructs the manager again.
    void destruct() noexcept;
    /// True of a new manager, false after `destruct`.
    [[nodiscard]] bool isConstructed() const noexcept { return m_bConstructed; }
    /// @}

    /// @name Materials
    /// @{

    /// Builds a material and adds it; an unconstructed manager is constructed then. Throws what TW_Material::construct
    /// throws; the manager is then as before.
    void addMaterial(const TWMaterialChunk& chunk);
    /// The first material of that name, or null.
    [[nodiscard]] TW_Material* findMaterial(const S_String& name) const { return find(name); }
    /// The same with a string of the host's.
    template <TW_ForeignText Name>
    [[nodiscard]] TW_Material* findMaterial(const Name& name) const
    {
        return find(asView(name));
    }
    /// `index` is below the count.
    [[nodiscard]] TW_Material* getMaterial(int index) const noexcept;
    /// Materials in the order of adding, those of equal names included.
    [[nodiscard]] unsigned int getMaterialCount() const noexcept
    {
        return static_cast<unsigned int>(m_vecMaterials.size());
    }
    /// Gives the primitives of `object`, which use engine materials of `source`, this manager's materials of the same
    /// names. A primitive whose material is not one of `source`, or whose name is not found here, is left alone. Null
    /// changes nothing.
    void remapMaterials(P_VirtualObject* object, TW_MaterialManager* source);
    /// Has all materials' textures ready before they are first drawn; throws what reading a texture throws.
    void addToTextureMemory();
    /// Gives the textures' memory back until they are needed again.
    void removeFromTextureMemory() noexcept;
    /// @}

    /// @name Texture animation sets
    /// A set holds every animated texture slot whose texture carries the set's name. An unknown set or animation gives
    /// 0, false or nothing, unless stated otherwise. A set is given by its index or by its name, for which any string
    /// or C string is taken without a copy.
    /// @{

    /// Sets are numbered from 0 in the order in which the materials came.
    [[nodiscard]] unsigned int getTotalTextureAnimationSets() const noexcept
    {
        return static_cast<unsigned int>(m_vecTextureAnimationSets.size());
    }
    /// Throws TW_Exception_TextureNotFound with the name when there is no such set.
    [[nodiscard]] int getTextureAnimationIndex(const S_String& set) const { return requireSet(set); }
    /// The same with a string of the host's.
    template <TW_ForeignText Name>
    [[nodiscard]] int getTextureAnimationIndex(const Name& set) const
    {
        return requireSet(asView(set));
    }
    /// The name of set 0 to `getTotalTextureAnimationSets()` - 1; empty for any other index. Valid until a material is
    /// added or the manager changes otherwise.
    [[nodiscard]] const S_String& getTextureAnimationSetName(int set) const noexcept;
    /// Whether a set has that name, which is the name of its textures.
    [[nodiscard]] bool textureAnimationExists(const S_String& set) const { return isValidAnimationSet(findSet(set)); }
    /// The same with a string of the host's.
    template <TW_ForeignText Name>
    [[nodiscard]] bool textureAnimationExists(const Name& set) const
    {
        return isValidAnimationSet(findSet(asView(set)));
    }
    /// A set number, from 0 on, or a set's name.
    [[nodiscard]] bool isValidAnimationSet(int set) const noexcept;
    [[nodiscard]] bool isValidAnimationSet(const S_String& set) const { return textureAnimationExists(set); }
    /// The same with a string of the host's.
    template <TW_ForeignText Name>
    [[nodiscard]] bool isValidAnimationSet(const Name& set) const
    {
        return isValidAnimationSet(findSet(asView(set)));
    }
    /// Whether the set has so many animated textures; they are numbered from 0.
    [[nodiscard]] bool isValidAnimation(int set, int animation) const noexcept;
    [[nodiscard]] bool isValidAnimation(const S_String& set, int animation) const
    {
        return isValidAnimation(findSet(set), animation);
    }
    /// The same with a string of the host's.
    template <TW_ForeignText Name>
    [[nodiscard]] bool isValidAnimation(const Name& set, int animation) const
    {
        return isValidAnimation(findSet(asView(set)), animation);
    }
    /// `set` is valid.
    [[nodiscard]] unsigned int getTotalTextureAnimations(int set) const noexcept;
    [[nodiscard]] unsigned int getTotalTextureAnimations(const S_String& set) const { return countAnimations(set); }
    /// The same with a string of the host's.
    template <TW_ForeignText Name>
    [[nodiscard]] unsigned int getTotalTextureAnimations(const Name& set) const
    {
        return countAnimations(asView(set));
    }
    /// Entries in playing order; a ping-pong sequence counts both ways.
    [[nodiscard]] unsigned int getTextureAnimationFrames(int set, int animation) const noexcept;
    [[nodiscard]] unsigned int getTextureAnimationFrames(const S_String& set, int animation) const
    {
        return getTextureAnimationFrames(findSet(set), animation);
    }
    /// The same with a string of the host's.
    template <TW_ForeignText Name>
    [[nodiscard]] unsigned int getTextureAnimationFrames(const Name& set, int animation) const
    {
        return getTextureAnimationFrames(findSet(asView(set)), animation);
    }
    /// Seconds.
    [[nodiscard]] float getTextureAnimationLength(int set, int animation) const noexcept;
    [[nodiscard]] float getTextureAnimationLength(const S_String& set, int animation) const
    {
        return getTextureAnimationLength(findSet(set), animation);
    }
    /// The same with a string of the host's.
    template <TW_ForeignText Name>
    [[nodiscard]] float getTextureAnimationLength(const Name& set, int animation) const
    {
        return getTextureAnimationLength(findSet(asView(set)), animation);
    }
    /// Frames per second.
    [[nodiscard]] float getTextureAnimationFPS(int set, int animation) const noexcept;
    [[nodiscard]] float getTextureAnimationFPS(const S_String& set, int animation) const
    {
        return getTextureAnimationFPS(findSet(set), animation);
    }
    /// The same with a string of the host's.
    template <TW_ForeignText Name>
    [[nodiscard]] float getTextureAnimationFPS(const Name& set, int animation) const
    {
        return getTextureAnimationFPS(findSet(asView(set)), animation);
    }
    /// Changes the frames per second.
    void setTextureAnimationFPS(int set, int animation, float rate) noexcept;
    void setTextureAnimationFPS(const S_String& set, int animation, float rate)
    {
        setTextureAnimationFPS(findSet(set), animation, rate);
    }
    /// The same with a string of the host's.
    template <TW_ForeignText Name>
    void setTextureAnimationFPS(const Name& set, int animation, float rate)
    {
        return setTextureAnimationFPS(findSet(asView(set)), animation, rate);
    }
    /// Animates every texture of the set; true when at least one was animated.
    bool animateTexture(int set, float seconds);
    bool animateTexture(const S_String& set, float seconds) { return animateTexture(findSet(set), seconds); }
    /// The same with a string of the host's.
    template <TW_ForeignText Name>
    bool animateTexture(const Name& set, float seconds)
    {
        return animateTexture(findSet(asView(set)), seconds);
    }
    /// The same at a frame.
    bool animateTextureFrame(int set, float frame);
    bool animateTextureFrame(const S_String& set, float frame) { return animateTextureFrame(findSet(set), frame); }
    /// The same with a string of the host's.
    template <TW_ForeignText Name>
    bool animateTextureFrame(const Name& set, float frame)
    {
        return animateTextureFrame(findSet(asView(set)), frame);
    }
    /// @}

private:
    /// One animated texture slot.
    struct TextureAnimationEntry : S_Allocated
    {
        TextureAnimationEntry(TW_Material* owner, TW_Material::TextureType slot) noexcept : material(owner), type(slot)
        {
        }

        TW_Material* material;
        TW_Material::TextureType type;
    };
    using TextureAnimationSet = S_Vector<TextureAnimationEntry*>;

    TW_MaterialManager& operator=(const TW_MaterialManager&) = delete;
    void initializeMembers() noexcept;
    void add(std::unique_ptr<TW_Material> added);
    void removeLast() noexcept;
    void addTextureAnimation(TW_Material* material, TW_Material::TextureType type);
    [[nodiscard]] TW_Material* find(std::string_view name) const;
    [[nodiscard]] int findSet(std::string_view set) const noexcept;
    [[nodiscard]] int requireSet(std::string_view set) const;
    [[nodiscard]] unsigned int countAnimations(std::string_view set) const noexcept;
    [[nodiscard]] const TextureAnimationEntry* findEntry(int set, int animation) const noexcept;
    template <typename Animate>
    bool animateSet(int set, Animate animate);

    bool m_bConstructed;
    S_Map<S_String, TW_Material*, std::less<>> m_mapMaterials;
    S_Vector<TW_Material*> m_vecMaterials;
    S_Map<S_String, int, std::less<>> m_mapTextureAnimationSets;
    S_Vector<TextureAnimationSet> m_vecTextureAnimationSets;
};
}  // namespace TW2
