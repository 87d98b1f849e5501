#pragma once

#include <tw2/export.h>

#include <platform/runtime/allocator.h>

class P_VirtualObject;

namespace TW2
{
class TW_KeyframeAnimation;
class TW_ObjectAnimation;
struct MeshChunk;

/// Asked before a mesh is built from a record of a geometry file. Set with `TW_ObjectAnimation::setLoadMeshCallback`;
/// stays the host's.
class TW2_API TW_LoadMeshCallback
{
public:
    /// False leaves the record out. The record may be changed; it lives only for the call. Parts that do not fit each
    /// other any more end the construction with TW_Exception_InvalidGeometry.
    virtual bool operator()(MeshChunk& record) = 0;
    virtual ~TW_LoadMeshCallback() = default;
};

/// Told of each mesh after it was added to its object. Set with `TW_ObjectAnimation::setMeshLoadedCallback`; stays the
/// host's.
class TW2_API TW_MeshLoadedCallback
{
public:
    /// Called once per mesh. An exception ends the construction and reaches whoever began it.
    virtual void operator()(TW_ObjectAnimation* object, P_VirtualObject* mesh) = 0;
    virtual ~TW_MeshLoadedCallback() = default;
};

/// Told of a mesh whose parent is not, or not yet, a mesh of the object. The mesh hangs under nothing unless the
/// callback hangs it somewhere; it is added to the object all the same, afterwards. Its own name comes later: it has
/// none yet, or, as an instance, its source's. Set with `TW_ObjectAnimation::setMeshParentNotFoundCallback`; stays the
/// host's.
class TW2_API TW_MeshParentNotFoundCallback
{
public:
    /// Called instead of hanging the mesh under its parent; `parentName` is the name that was not found.
    virtual void operator()(P_VirtualObject* mesh, const S_String& parentName) = 0;
    virtual ~TW_MeshParentNotFoundCallback() = default;
};

/// Given the keyframe animations whose target is not a mesh of the object; without this callback such an animation is
/// an error. Set with `TW_ObjectAnimation::setKeyframeAnimationCallback`; stays the host's.
class TW2_API TW_ObjectKeyframeAnimationCallback
{
public:
    /// Who wants to keep `animation` takes a reference (`increaseObjectReferenceCount`).
    virtual void operator()(int animationIndex, TW_KeyframeAnimation* animation) = 0;
    virtual ~TW_ObjectKeyframeAnimationCallback() = default;
};
}  // namespace TW2
