#pragma once

#include "object/object_animation_script.h"

#include <tw2/object/object_animation.h>

#include <platform/runtime/allocator.h>

#include <cstddef>

class S_Script;

namespace TW2
{
/// The steps in which an object animation is put together. Whatever a step throws, the current directory and the
/// loader's callbacks are as they were before it.
class TW_ObjectAnimation::Builder
{
public:
    explicit Builder(TW_ObjectAnimation& object) noexcept : m_object(object), m_uiDestructions(object.m_uiDestructions)
    {
    }

    /// Builds from a block, given by its name or its position: name, geometry, animations.
    template <typename Block>
    void build(S_Script& script, Block block, TW_MeshCallback* meshCallback, bool withVisibility);
    /// Copies meshes and animations of another object and the materials of a manager (null: none).
    void copy(const TW_ObjectAnimation& source, bool deepCopy, const TW_MaterialManager* materials);

    /// Loads the animations of a block, given by its name or its position.
    template <typename Block>
    void append(S_Script& script, Block block, bool withVisibility);
    /// Loads the "animation" blocks of the block that is locked. When one fails, those before it stay and the object
    /// has no animation of the failing one's index.
    void loadAnimations(S_Script& script, bool withVisibility);
    /// Loads one file as an animation.
    void loadAnimation(int index, const S_String& fileName, bool withVisibility);

private:
    class Records;

    void loadGeometry(S_Script& script, TW_MeshCallback* meshCallback);
    void loadMaterials(const S_String& fileName);
    void loadMeshes(const S_String& fileName, TW_MeshCallback* meshCallback);
    void setBoundingVolumes(const GeometryParameters& parameters);
    void setFixedBoundingVolumes();
    void fillRecord(Records& records, const AnimationParameters& parameters, const S_Script* script,
                    bool withVisibility);
    void loadAnimationFile(const AnimationParameters& parameters);
    void copyMeshNames(const TW_ObjectAnimation& source);
    void copyMeshes(const TW_ObjectAnimation& source, bool deepCopy);
    P_VirtualObject& copyMesh(const P_VirtualObject& source, bool deepCopy);
    P_VirtualObject& copyDeeply(const P_VirtualObject& source);
    void copyAnimations(const TW_ObjectAnimation& source);

    /// Whether the object has not been destructed since the builder was made, which a host's callback may do.
    [[nodiscard]] bool hasObject() const noexcept { return m_object.m_uiDestructions == m_uiDestructions; }
    /// Throws TW_Exception_InvalidGeometry when it has; what was loaded since then is nobody's.
    void requireObject() const;

    TW_ObjectAnimation& m_object;
    unsigned int m_uiDestructions;
};
}  // namespace TW2
