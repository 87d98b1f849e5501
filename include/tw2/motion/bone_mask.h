#pragma once

#include <tw2/core/text.h>
#include <tw2/export.h>

#include <platform/runtime/allocator.h>

#include <cstdint>

namespace TW2
{
class TW_BoneGroupHandle;
class TW_VirtualObject;

/// How much of a motion each bone takes: a weight from 0 to 1 per bone.
///
///     const TW_BoneMask upper = TW_BoneMask::below(soldier, "spine", 2) * TW_BoneMask::matching(soldier,
///     "*finger*").complement();
///
/// A mask belongs to the skeleton of the object that it was made from, and fits every object whose bones have the same
/// names in the same order. It keeps no reference to the object.
class TW2_API TW_BoneMask
{
public:
    /// @name Making
    /// @{

    /// The same weight for all bones, 0 to 1; what is not a number is 0.
    explicit TW_BoneMask(const TW_VirtualObject& object, float weight = 1.0F);
    /// 1 for the bones of a group, which must be attached to the object, 0 for the others.
    [[nodiscard]] static TW_BoneMask ofGroup(const TW_VirtualObject& object, const TW_BoneGroupHandle& group);
    /// A bone (any letter case) and everything below it, 0 for the others. With `falloff` the weight rises over that
    /// many bones: with 2 it is 1/3 at the bone, 2/3 at its children, 1 below them. Throws TW_Exception_BoneNotFound.
    [[nodiscard]] static TW_BoneMask below(const TW_VirtualObject& object, const char* bone, unsigned int falloff = 0);
    /// 1 for the bones whose names fit (any letter case): `*` stands for any letters, `?` for one, and `|` separates
    /// patterns: "*arm*|*hand*".
    [[nodiscard]] static TW_BoneMask matching(const TW_VirtualObject& object, const char* patterns);
    /// The same with a string of the host's.
    template <TW_String Bone>
    [[nodiscard]] static TW_BoneMask below(const TW_VirtualObject& object, const Bone& bone, unsigned int falloff = 0)
    {
        return below(object, bone.c_str(), falloff);
    }
    /// The same with a string of the host's.
    template <TW_String Patterns>
    [[nodiscard]] static TW_BoneMask matching(const TW_VirtualObject& object, const Patterns& patterns)
    {
        return matching(object, patterns.c_str());
    }
    /// 1 for the bones that an animation has tracks for; 0 for all when there is no such animation.
    [[nodiscard]] static TW_BoneMask movedBy(const TW_VirtualObject& object, int animation);
    /// @}

    /// @name Calculating
    /// @{

    /// 1 minus each weight.
    [[nodiscard]] TW_BoneMask complement() const;
    /// The product, bone by bone. Throws TW_Exception_BoneMaskMismatch for a mask of another skeleton.
    TW_BoneMask& operator*=(const TW_BoneMask& other);
    /// The product, bone by bone. Throws TW_Exception_BoneMaskMismatch for masks of different skeletons.
    friend TW_BoneMask operator*(TW_BoneMask a, const TW_BoneMask& b) { return a *= b; }
    /// @}

    /// @name Asking and changing
    /// Bones are mesh indices of the object, of levels of detail those of level 0.
    /// @{

    /// Bones of the object, of levels of detail those of level 0.
    [[nodiscard]] unsigned int getBoneCount() const noexcept { return getBoneCount(0); }
    /// 0 for a bone that there is not.
    [[nodiscard]] float getWeight(unsigned int bone) const noexcept { return getWeight(0, bone); }
    /// Weights outside 0 to 1 become the nearer end, what is not a number 0. Of
    /// levels of detail, bones of the same name in all of them.
    void setWeight(unsigned int bone, float weight);
    /// Throws TW_Exception_BoneMaskMismatch, naming both objects, unless the object's bones are those of the mask.
    void checkFits(const TW_VirtualObject& object) const;
    /// @}

private:
    friend class TW_AnimationMixer;

    struct Bone
    {
        float m_fWeight = 0.0F;
        std::uint32_t m_uName = 0;  // hash of its name in small letters
    };
    using Part = S_Vector<Bone>;  // the bones of one object animation

    template <typename WeightOf>
    void fill(const TW_VirtualObject& object, const WeightOf& weightOf);
    [[nodiscard]] unsigned int getBoneCount(unsigned int part) const noexcept;
    [[nodiscard]] float getWeight(unsigned int part, unsigned int bone) const noexcept;

    S_String m_strObject;  // whose skeleton it is, for messages
    S_Vector<Part> m_vecParts;
};
}  // namespace TW2
