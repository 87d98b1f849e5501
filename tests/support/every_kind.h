#pragma once

#include "tests/support/mesh_builder.h"

#include <tw2/io/camera_chunk.h>
#include <tw2/io/environment_chunk.h>
#include <tw2/io/helper_chunk.h>
#include <tw2/io/light_chunks.h>
#include <tw2/io/loader.h>
#include <tw2/keyframe/keyframe_animation_chunk.h>
#include <tw2/light/light_animation_chunks.h>
#include <tw2/material/material_list_chunk.h>
#include <tw2/skin/skin_chunk.h>

namespace support
{
/// The callbacks for every kind of chunk in one object.
class EveryCallback : public TW2::TW_CameraCallback,
                      public TW2::TW_LightCallback,
                      public TW2::TW_HelperCallback,
                      public TW2::TW_EnvironmentCallback,
                      public TW2::TW_MeshCallback,
                      public TW2::TW_MaterialListCallback,
                      public TW2::TW_KeyframeAnimationCallback,
                      public TW2::TW_UnknownChunkCallback
{
public:
    /// Makes this object the loader's for every kind.
    void listen()
    {
        TW2::TW_Loader::setCameraCallback(this);
        TW2::TW_Loader::setLightCallback(this);
        TW2::TW_Loader::setHelperCallback(this);
        TW2::TW_Loader::setEnvironmentCallback(this);
        TW2::TW_Loader::setMeshCallback(this);
        TW2::TW_Loader::setMaterialListCallback(this);
        TW2::TW_Loader::setKeyframeAnimationCallback(this);
        TW2::TW_Loader::setUnknownChunkCallback(this);
    }
};

/// Writes one chunk of every top-level kind, each named after its kind: what a file with everything looks like.
inline void writeEveryKind(S_MemoryFileWriter& writer)
{
    const auto named = [](auto record, const char* name)
    {
        record.name = name;
        return record;
    };
    auto camera = named(TW2::CameraChunk(), "camera");
    camera.transform.setTranslation({1, 2, 3});
    camera.value0 = 1;
    camera.value1 = 2;
    camera.value2 = 3;
    auto point = named(TW2::PointLightChunk(), "point");
    point.brightness = 0.5f;
    auto directional = named(TW2::DirectionalLightChunk(), "directional");
    directional.brightness = 0.75f;
    auto spot = named(TW2::SpotLightChunk(), "spot");
    spot.brightness = 1.5f;
    TW2::MaterialListChunk materials;
    materials.texturePath = "textures;maps";
    materials.materials.resize(2);
    materials.materials[0].name = "brick";
    materials.materials[0].accessDiffuseTexture().name = "wall";
    materials.materials[0].accessDiffuseTexture().frameFiles = {"wall0.png", "wall1.png"};
    materials.materials[1].name = "plaster";
    TW2::KeyframeAnimationChunk animation;
    animation.header.targetName = "mesh";
    animation.header.frameRate = 30;
    animation.totalFrameCount = 11;
    animation.keys = {{0, {}}, {10, M_Matrix4x3Template<float>::translation({0, 0, 1})}};
    animation.visibilityKeys = {{0, 1.0f}};
    TW2::PointLightAnimationChunk pointAnimation;
    pointAnimation.header = {"point", 24, true};
    pointAnimation.totalFrameCount = 6;
    pointAnimation.brightnessKeys = {{0, 1.0f}, {5, 2.0f}};
    TW2::DirectionalLightAnimationChunk directionalAnimation;
    directionalAnimation.header.targetName = "directional";
    TW2::SpotLightAnimationChunk spotAnimation;
    spotAnimation.header.targetName = "spot";
    spotAnimation.colorKeys = {{3, {255, 0, 0}}};
    auto helper = named(TW2::HelperChunk(), "helper");
    helper.helperString = "spawn point";
    TW2::EnvironmentChunk environment;
    environment.firstColor = 0x80FF4020;
    environment.secondColor = 0xFF102030;
    TW2::SkinChunk skin = makeSkin({"hip", "leg"}, {{{{0, 0.25f}, {1, 0.75f}}}});
    skin.objectNames = {"mesh"};

    writer << camera << point << directional << spot << materials << makeStripMesh("mesh", 4, {"brick", "plaster"});
    write(writer, makeLegacyField(2, 2));
    writer << animation << environment << helper << pointAnimation << directionalAnimation << spotAnimation;
    writer << named(TW2::NodeChunk(), "node") << skin;
}
}  // namespace support
