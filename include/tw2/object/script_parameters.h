#pragma once

#include <tw2/export.h>

#include <platform/math/vector3.h>
#include <platform/runtime/allocator.h>

class S_Script;

namespace TW2
{
/// @name The keys of animated objects in scripts
/// What every animated object reads of its blocks, for hosts that show or check scripts. A script in which a key is
/// missing, unknown or of another form throws S_ScriptException, which names the file and the line.
/// @{

/// The keys of a "geometry" block. All kinds of animated objects share it; each uses its part.
struct GeometryParameters
{
    S_String m_strExportData;                    ///< geometry file
    S_String m_strSkinData;                      ///< skin data file of a skinned object; empty: none
    S_String m_strCrossMode;                     ///< "linear", "normalized" or "orthonormalized"
    float m_fDistance = 0.0F;                    ///< of a level of detail
    int m_iEnableBoundingBox = 1;                ///< 1: the box is used
    M_Vector3Template<float> m_vBoundingBoxMin;  ///< in the object's own space
    /// Both corners (-1, -1, -1): the box is computed from the meshes.
    M_Vector3Template<float> m_vBoundingBoxMax;
    int m_iEnableBoundingSphere = 1;        ///< 1: the sphere is used
    float m_fBoundingSphereRadius = -1.0F;  ///< in scene units; -1: computed

    /// A box whose corners are both (-1, -1, -1) and a radius of -1 stand for volumes that follow the meshes.
    [[nodiscard]] bool isBoxAutomatic() const noexcept
    {
        constexpr M_Vector3Template<float> automatic(-1.0F, -1.0F, -1.0F);
        return m_vBoundingBoxMin == automatic && m_vBoundingBoxMax == automatic;
    }
    /// Whether the radius is left to be computed.
    [[nodiscard]] bool isSphereAutomatic() const noexcept { return m_fBoundingSphereRadius == -1.0F; }
};

/// The keys of an "animation" block.
struct AnimationParameters
{
    int m_iIndex = 0;          ///< by which hosts play it
    S_String m_strFileName;    ///< the file of its tracks
    S_String m_strName;        ///< empty: called after its file
    S_String m_strRootMotion;  ///< file of its travel; empty: none
    /// A mark in it.
    struct Event
    {
        float m_fTime = 0.0F;  ///< seconds, from 0 to the end
        S_String m_strName;    ///< what happens; not empty
    };
    S_Vector<Event> m_vecEvents;  ///< in the order of the script
};

/// Reads the "geometry" block inside the script's current one, which has one.
[[nodiscard]] TW2_API GeometryParameters parseGeometry(const S_Script& script);
/// Reads the `occurrence`-th "animation" block inside the script's current one, from 0 on.
[[nodiscard]] TW2_API AnimationParameters parseAnimation(S_Script& script, unsigned int occurrence);
/// @}
}  // namespace TW2
