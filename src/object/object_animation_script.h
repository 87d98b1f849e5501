#pragma once

#include <tw2/keyframe/interpolation_mode.h>

#include <platform/math/vector3.h>
#include <platform/runtime/allocator.h>
#include <platform/runtime/script.h>

namespace TW2
{
/// @name The blocks and keys of animated objects in scripts
/// @{

/// What stands inside an object's block: "geometry" once, "animation" any number of times.
extern const S_Script::Blocks s_objectBlocks[];
/// What stands inside a block that only adds animations.
extern const S_Script::Blocks s_animationBlocks[];

/// The keys of a "geometry" block. All kinds of animated objects share it; each uses its part.
struct GeometryParameters
{
    S_String m_strExportData;      ///< geometry file
    S_String m_strSkinData;        ///< skin data file of a skinned object; empty: none
    S_String m_strCrossMode;       ///< see `parseCrossMode`
    float m_fDistance = 0.0f;      ///< of a level of detail
    int m_iEnableBoundingBox = 1;  ///< 1: the box is used
    M_Vector3Template<float> m_vBoundingBoxMin;
    M_Vector3Template<float> m_vBoundingBoxMax;
    int m_iEnableBoundingSphere = 1;  ///< 1: the sphere is used
    float m_fBoundingSphereRadius = -1.0f;

    /// A box whose corners are both (-1, -1, -1) and a radius of -1 stand for volumes that follow the meshes.
    [[nodiscard]] bool isBoxAutomatic() const noexcept;
    [[nodiscard]] bool isSphereAutomatic() const noexcept { return m_fBoundingSphereRadius == -1.0f; }
};

/// The keys of an "animation" block.
struct AnimationParameters
{
    int m_iIndex = 0;
    S_String m_strFileName;
};

/// Reads the "geometry" block inside the script's current one.
[[nodiscard]] GeometryParameters parseGeometry(const S_Script& script);
/// Reads the `occurrence`-th "animation" block inside the script's current one.
[[nodiscard]] AnimationParameters parseAnimation(const S_Script& script, unsigned int occurrence);
/// Throws TW_Exception_InvalidScriptParameter unless `crossMode` is exactly one of the three words.
[[nodiscard]] InterpolationMode parseCrossMode(const S_Script& script, const S_String& crossMode);

/// Checks that the block stands exactly once at the script's position, makes it the current one and checks the blocks
/// inside.
void lockObjectBlock(S_Script& script, const char* blockName);
/// Makes a block the current one by its position and checks the blocks inside.
void lockObjectBlock(S_Script& script, int blockIndex);
/// The same for a block that only adds animations; of several blocks of that name it is the first.
void lockAnimationBlock(S_Script& script, const char* blockName);
void lockAnimationBlock(S_Script& script, int blockIndex);
/// @}
}  // namespace TW2
