#pragma once

#include <platform/math/matrix4x3.h>
#include <platform/runtime/allocator.h>

class P_TriangleMesh;
class P_VirtualObject;
class S_MemoryFile;

namespace TW2
{
struct DirectionalLightAnimationChunk;
struct DirectionalLightChunk;
struct EnvironmentChunk;
struct HelperChunk;
struct KeyframeAnimationChunk;
struct MaterialListChunk;
struct MeshChunk;
struct PointLightAnimationChunk;
struct PointLightChunk;
struct SpotLightAnimationChunk;
struct SpotLightChunk;

/// What a host implements to receive the chunks of a file that TW_Loader walks.
///
/// The loader never deletes a callback; whoever registers one owns it. A record lives for the call only: copy what is
/// to be kept. A callback may change the loader's callbacks (for the chunks after this one), and may load.
/// @{

/// Receives cameras.
class TW_CameraCallback
{
public:
    /// Note the order: the camera's second and third value, then its first.
    virtual void operator()(const M_Matrix4x3Template<float>& transform, float value1, float value2, float value0) = 0;

protected:
    ~TW_CameraCallback() = default;
};

/// Receives lights and light animations. A kind that a host does not override is passed over; who overrides one writes
/// `using TW_LightCallback::operator();` to keep the others visible under the host's own class.
class TW_LightCallback
{
public:
    /// An animation of a light, or a light. The record is the loader's and goes with the call; copy what is to stay. An
    /// exception ends the reading of the file and reaches whoever began it. By itself nothing happens.
    virtual void operator()(const SpotLightAnimationChunk&) {}
    virtual void operator()(const DirectionalLightAnimationChunk&) {}
    virtual void operator()(const PointLightAnimationChunk&) {}
    virtual void operator()(const SpotLightChunk&) {}
    virtual void operator()(const DirectionalLightChunk&) {}
    virtual void operator()(const PointLightChunk&) {}

protected:
    ~TW_LightCallback() = default;
};

/// Receives helpers.
class TW_HelperCallback
{
public:
    /// A helper; the record is the loader's and goes with the call.
    virtual void operator()(const HelperChunk& helper) = 0;

protected:
    ~TW_HelperCallback() = default;
};

/// Receives the environment.
class TW_EnvironmentCallback
{
public:
    /// The environment; the record is the loader's and goes with the call.
    virtual void operator()(const EnvironmentChunk& environment) = 0;

protected:
    ~TW_EnvironmentCallback() = default;
};

/// Receives meshes, and makes the triangle mesh of each primitive while an engine mesh is built from one.
class TW_MeshCallback
{
public:
    /// The record is the loader's; it may be changed.
    virtual void operator()(MeshChunk& mesh) = 0;
    /// Makes the triangle mesh of one primitive of `mesh`, with room for the counts; the loader itself never asks.
    /// `vertexMap` is empty, or gives for each vertex the vertex of the file that it was made from.
    virtual P_TriangleMesh* createTriangleMesh(P_VirtualObject* mesh, int primitive, int vertexFormatFlags,
                                               int triangleCount, int vertexCount, const S_Vector<int>& vertexMap) = 0;

protected:
    ~TW_MeshCallback() = default;
};

/// Receives material lists.
class TW_MaterialListCallback
{
public:
    /// The record is the loader's; it may be changed.
    virtual void operator()(MaterialListChunk& materials) = 0;

protected:
    ~TW_MaterialListCallback() = default;
};

/// Receives keyframe animations.
class TW_KeyframeAnimationCallback
{
public:
    /// The record is the loader's; it may be changed.
    virtual void operator()(KeyframeAnimationChunk& animation) = 0;

protected:
    ~TW_KeyframeAnimationCallback() = default;
};

/// Receives what no other callback is for.
class TW_UnknownChunkCallback
{
public:
    /// `file` stands at the header of the chunk, which may be opened and read; the loader skips past it in any case.
    virtual void operator()(S_MemoryFile& file) = 0;

protected:
    ~TW_UnknownChunkCallback() = default;
};
/// @}
}  // namespace TW2
