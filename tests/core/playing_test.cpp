// Playing allocates nothing: everything that a host calls from frame to frame, of every class that plays.

#include "tests/support/character_files.h"
#include "tests/support/lamps.h"
#include "tests/support/material_records.h"
#include "tests/support/played.h"

#include <tw2/light/light_animation_chunks.h>
#include <tw2/tw2.h>

#include <platform/runtime/script.h>
#include <platform/scene/directional_light.h>
#include <platform/scene/point_light.h>
#include <platform/scene/spot_light.h>

#include <gtest/gtest.h>

#include <memory>

using namespace TW2;

namespace
{
using support::Calls;
using support::Played;
using support::waterName;

void expectNothingAllocated(const Calls& calls)
{
    for (int frame = 0; frame < 30; ++frame)
    {
        for (const auto& [name, call] : calls)
        {
            const long long made = S_Memory::sm_iNewCount;
            const long long released = S_Memory::sm_iDeleteCount;
            call(0.13F * static_cast<float>(frame));
            ASSERT_EQ(S_Memory::sm_iNewCount, made) << name << ", frame " << frame;
            ASSERT_EQ(S_Memory::sm_iDeleteCount, released) << name << ", frame " << frame;
        }
    }
}

template <typename Object>
void expectNothingAllocated(Played<Object>&& played)
{
    Calls calls = played.listCalls();
    calls.emplace_back("frame rate", [&played](float t) { played.getObject().setAnimationFPS(0, 10.0F + t); });
    expectNothingAllocated(calls);
}

/// A character whose skin has an animated texture.
class Playing : public testing::Test
{
protected:
    Playing()
    {
        m_folder.add({"0.png", "1.png"});
        m_files.m_materials.texturePath = m_folder.getDirectory().getPath().string();
        m_files.m_materials.materials = {support::makeSolidMaterial("material0"),
                                         support::makeSolidMaterial("material1")};
        support::fillTexture(m_files.m_materials.materials[0].accessDiffuseTexture(), waterName, {"0.png", "1.png"})
            .framesPerSecond = 2;
        m_files.m_animations[1][2].visibilityKeys = {{0, 1.0F}, {9, 0.0F}};
        m_script = std::make_unique<S_Script>(m_files.write().c_str());
    }

    support::TextureFolder m_folder;
    support::CharacterFiles m_files{{.bones = 16}};
    std::unique_ptr<S_Script> m_script;
};
}  // namespace

TEST_F(Playing, AllocatesNothingInAnyObject)
{
    const int levels[] = {0, 0};
    const int skins[] = {1, 2};
    S_Script* const script = m_script.get();
    expectNothingAllocated(Played<TW_ObjectAnimation>(script, 0, nullptr, true));
    expectNothingAllocated(Played<TW_VertexAnimation>(script, 0, script, 1, true));
    EXPECT_TRUE(TW_VertexAnimation(script, 0, script, 1).animateTextureSet(waterName, 0.5F)) << "of the skin";
    expectNothingAllocated(Played<TW_ObjectAnimationLODs>(script, 2, levels, true));
    expectNothingAllocated(Played<TW_VertexAnimationLODs>(script, 0, 2, script, skins));
}

TEST_F(Playing, AllocatesNothingInTracksAndLights)
{
    const TW_KeyframeAnimation track(m_files.m_animations[1][2], true);
    const char* const name = "a lamp whose name is longer than a string has room for in itself";
    const TW_PointLightAnimation pointAnimation(support::makeLamp<PointLightAnimationChunk>(name));
    const TW_DirectionalLightAnimation directionalAnimation(support::makeLamp<DirectionalLightAnimationChunk>(name));
    const TW_SpotLightAnimation spotAnimation(support::makeLamp<SpotLightAnimationChunk>(name));
    P_PointLight point;
    P_DirectionalLight directional;
    P_SpotLight spot;
    M_Matrix4x3Template<float> matrix;
    int last = 0;
    expectNothingAllocated({
        {"track", [&](float t) { track.animate(matrix, t); }},
        {"track with a hint", [&](float t) { last = track.animateFrameWithLastFrame(matrix, 10.0F * t, last); }},
        {"visibility", [&](float t) { (void)track.getVisibility(t); }},
        {"point light", [&](float t) { pointAnimation.animate(&point, t); }},
        {"directional light", [&](float t) { directionalAnimation.animate(&directional, t); }},
        {"spot light", [&](float t) { spotAnimation.animate(&spot, t); }},
    });
}
