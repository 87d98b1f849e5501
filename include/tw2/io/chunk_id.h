#pragma once

namespace TW2
{
/// Ids of all chunks of animation, keyframe and skin data files.
enum ChunkId : unsigned int
{
    CHUNK_NODE = 0x10000,                         ///< first nested chunk of objects: NodeChunk
    CHUNK_CAMERA = 0x10001,                       ///< top level: CameraChunk
    CHUNK_POINT_LIGHT = 0x10002,                  ///< top level: PointLightChunk
    CHUNK_DIRECTIONAL_LIGHT = 0x10003,            ///< top level: DirectionalLightChunk
    CHUNK_SPOT_LIGHT = 0x10004,                   ///< top level: SpotLightChunk
    CHUNK_MESH = 0x10005,                         ///< top level: MeshChunk
    CHUNK_MESH_VERTICES = 0x10006,                ///< inside a mesh: MeshVertexChunk
    CHUNK_MESH_FACES = 0x10007,                   ///< inside a mesh: MeshFaceChunk
    CHUNK_POLYGON = 0x10008,                      ///< inside old faces and texture channels: PolygonChunk
    CHUNK_MESH_SMOOTHING_GROUPS = 0x1000B,        ///< inside a mesh: MeshSmoothingGroupChunk
    CHUNK_MESH_MATERIALS = 0x1000C,               ///< inside a mesh: MeshMaterialChunk
    CHUNK_TEXTURE_CHANNEL = 0x1000E,              ///< inside a mesh, repeatable: TextureChannelChunk
    CHUNK_MATERIAL_LIST = 0x1000F,                ///< top level: MaterialListChunk
    CHUNK_MATERIAL = 0x10010,                     ///< inside a material list: TWMaterialChunk
    CHUNK_MATERIAL_TEXTURE = 0x10011,             ///< inside a material: MaterialTextureChunk
    CHUNK_KEYFRAME_ANIMATION = 0x10012,           ///< top level: KeyframeAnimationChunk
    CHUNK_ANIMATION_HEADER = 0x10013,             ///< first nested chunk of animations: AnimationHeader
    CHUNK_SKIN = 0x10014,                         ///< top level of a skin data file: SkinChunk
    CHUNK_ENVIRONMENT = 0x10015,                  ///< top level: EnvironmentChunk
    CHUNK_HELPER = 0x10016,                       ///< top level: HelperChunk
    CHUNK_POINT_LIGHT_ANIMATION = 0x10017,        ///< top level: PointLightAnimationChunk
    CHUNK_DIRECTIONAL_LIGHT_ANIMATION = 0x10018,  ///< top level: DirectionalLightAnimationChunk
    CHUNK_SPOT_LIGHT_ANIMATION = 0x10019,         ///< top level: SpotLightAnimationChunk
    CHUNK_MESH_INSTANCE = 0x1001A                 ///< inside a mesh: the name of the mesh it copies
};
}  // namespace TW2
