// What every class that is constructed in two phases has in common.

#include "tests/support/character_files.h"
#include "tests/support/expectations.h"
#include "tests/support/material_records.h"

#include <tw2/tw2.h>

#include <platform/runtime/memory_scope.h>
#include <platform/runtime/script.h>
#include <platform/scene/scene.h>
#include <platform/scene/spot_light.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>

using namespace TW2;

namespace
{
constexpr const char* scopeName = "TW Memory Container";

template <typename T>
class TwoPhases : public testing::Test
{
};
using Classes =
    testing::Types<TW_Texture, TextureAnimation, TW_MaterialManager, TW_KeyframeAnimation, TW_PointLightAnimation,
                   TW_DirectionalLightAnimation, TW_SpotLightAnimation, TW_ObjectAnimation, TW_ObjectAnimationState,
                   TW_BoneHandle, TW_BoneGroupHandle, TW_VertexAnimation, TW_VertexAnimation::Skin,
                   TW_ObjectAnimationLODs, TW_VertexAnimationLODs>;
TYPED_TEST_SUITE(TwoPhases, Classes);

template <typename T>
T makeNothing()
{
    if constexpr (std::is_same_v<T, TextureAnimation>)
    {
        support::TextureFolder folder;
        folder.add({"picture.png"});
        MaterialTextureChunk slot;
        slot.frameFiles = {"picture.png"};
        TextureAnimation animation(slot, nullptr);
        animation.destruct();
        return animation;
    }
    else
    {
        T nothing;
        nothing.destruct();
        return nothing;
    }
}

/// What a copy is put in the place of.
template <typename T>
T makeConstructed()
{
    if constexpr (requires(T & t) { t.construct(); })
    {
        T t;
        t.construct();
        return t;
    }
    else if constexpr (requires { T(3u); })
    {
        return T(3u);
    }
    else if constexpr (std::is_same_v<T, TW_BoneHandle>)
    {
        return T("hip", 3);
    }
    else
    {
        return makeNothing<T>();
    }
}
}  // namespace

TYPED_TEST(TwoPhases, ACopyOfWhatIsNotConstructedIsNotConstructedEither)
{
    deleteStaticData();  // of whatever was played before
    TW_Loader::freeCachedFile();
    const support::NothingLeft check;
    TypeParam nothing = makeNothing<TypeParam>();
    EXPECT_FALSE(nothing.isConstructed());
    TypeParam copy(nothing);
    EXPECT_FALSE(copy.isConstructed());
    if constexpr (std::is_copy_assignable_v<TypeParam>)
    {
        TypeParam assigned = makeConstructed<TypeParam>();
        assigned = nothing;
        EXPECT_FALSE(assigned.isConstructed());
        const TypeParam& same = assigned;
        assigned = same;
        EXPECT_FALSE(assigned.isConstructed());
    }
    copy.destruct();
    copy.destruct();
}

TEST(MemoryScopes, EveryConstructionBooksWhatItAllocates)
{
    const support::CharacterFiles files;
    const std::string script = files.write();
    const S_String animation = files.getDirectory().file("animation0.tw").c_str();
    const std::string more = files.getDirectory().write(
        "more.txt", "more { animation { index 5 filename \"" + std::string(animation) + "\" } }");
    SpotLightAnimationChunk record;
    record.header.targetName = "a lamp whose name is longer than a string has room for in itself";
    const TW_SpotLightAnimation lamp(record);
    KeyframeAnimationChunk trackRecord;
    trackRecord.header.targetName = record.header.targetName;
    const TW_KeyframeAnimation track(trackRecord, false);
    TW_ObjectAnimation object(script.c_str(), "skeleton", nullptr, false);
    const TWMaterialChunk paint = support::makeSolidMaterial("a name that needs memory of its own");
    TW_MaterialManager materials;
    // What the engine allocates for an object that is not constructed yet is its own business.
    const auto count = [](const std::function<void()>& call)
    {
        const long long before = S_Memory::sm_iNewCount;
        call();
        return S_Memory::sm_iNewCount - before;
    };
    const long long plain = count([] { const TW_ObjectAnimation nothing; });
    ASSERT_EQ(count([] { const TW_VertexAnimation nothing; }), plain);

    // Also of names, scripts and files: nothing is left outside the scope.
    const std::pair<const char*, std::function<void()>> calls[] = {
        {"light from record", [&] { const TW_SpotLightAnimation made(record); }},
        {"material", [&] { materials.addMaterial(paint); }},
        {"light copy", [&] { const TW_SpotLightAnimation made(lamp); }},
        {"keyframe animation copy", [&] { const TW_KeyframeAnimation made(track); }},
        {"object from file", [&] { const TW_ObjectAnimation made(script.c_str(), "skeleton", nullptr, false); }},
        {"object copy", [&] { const TW_ObjectAnimation made(object); }},
        {"character from file", [&] { const TW_VertexAnimation made(script.c_str(), "skeleton", "skin"); }},
        {"character from files",
         [&] { const TW_VertexAnimation made(script.c_str(), "skeleton", script.c_str(), "skin"); }},
        {"append a script", [&] { object.appendAnimations(more.c_str(), "more", false); }},
        {"append a file", [&] { object.appendSingleAnimation(7, animation, false); }},
    };
    for (const auto& [name, call] : calls)
    {
        const long long booked = S_MemoryScope::getUsage(scopeName).m_iBlocks;
        const bool makesEngineObject = std::string_view(name).starts_with("object") ||  //
                                       std::string_view(name).starts_with("character");
        const long long all = count(call) - (makesEngineObject ? plain : 0);
        EXPECT_GT(all, 0) << name;
        EXPECT_EQ(S_MemoryScope::getUsage(scopeName).m_iBlocks - booked, all) << name;
    }
}

namespace
{
template <typename T>
class AnimatedObjects : public testing::Test
{
};
using Objects = testing::Types<TW_ObjectAnimation, TW_VertexAnimation, TW_ObjectAnimationLODs, TW_VertexAnimationLODs>;
TYPED_TEST_SUITE(AnimatedObjects, Objects);
}  // namespace

TYPED_TEST(AnimatedObjects, AnswerAlikeWhileTheyAreNotConstructed)
{
    TypeParam object;
    TW_ObjectAnimationState state(3);
    TW_BoneHandle handle("hip", 0);
    TW_BoneGroupHandle group(1, &handle);
    group.attach(&object);
    handle.attach(&object);
    EXPECT_EQ(handle.getBoneObject(), nullptr);
    EXPECT_EQ(object.getTotalMeshes(), 0u);
    EXPECT_EQ(object.getMesh(0), nullptr);
    EXPECT_EQ(object.getTotalAnimations(), 0u);
    EXPECT_EQ(object.getMaximumAnimationIndex(), -1);
    EXPECT_FALSE(object.isValidAnimation(0));
    EXPECT_EQ(object.getAnimationFrames(0), 0u);
    EXPECT_EQ(object.getAnimationLength(0) + object.getAnimationFPS(0) + object.getAnimationLoopToTime(0), 0.0f);
    EXPECT_EQ(object.getAnimationLoopToFrame(0), 0u);
    EXPECT_FALSE(object.hasAnimation("walk"));
    object.setAnimationFPS(0, 30.0f);
    for (TW_BoneGroupHandle* g : {static_cast<TW_BoneGroupHandle*>(nullptr), &group})
    {
        EXPECT_FALSE(object.animateObject(0, 0.5f, g));
        EXPECT_FALSE(object.animateObjectFrame(0, 0.5f, g));
        EXPECT_FALSE(object.crossAnimateObject(0, 0.5f, 0.5f, 1, 0.5f, g));
        EXPECT_FALSE(object.crossAnimateObjectFrame(0, 0.5f, 0.5f, 1, 0.5f, 0.1f, 2, 0.4f, g));
        EXPECT_FALSE(object.crossAnimateObject(&state, 0.5f, 1, 0.5f, g));
        object.crossAnimateObject(&state, 0.5f, &state, g);
        object.crossAnimateObject(&state, 0.5f, &state, handle, g);
        object.freezeAnimationState(&state, g);
    }
    object.restoreAnimationState(&state);
    object.freezeAnimationState(nullptr, nullptr);
    object.restoreAnimationState(nullptr);
    EXPECT_THROW(static_cast<void>(object.getBoneHandle("hip")), TW_Exception_BoneNotFound);
    EXPECT_THROW(static_cast<void>(object.getBoneHandle(nullptr)), TW_Exception_BoneNotFound);
    EXPECT_FALSE(object.updateVisibility(0, 0.5f) || object.updateVisibilityFrame(0, 0.5f));
    object.uploadTextures();
    EXPECT_FALSE(object.isValidTextureAnimationSet("flames") || object.isValidTextureAnimation("flames", 0));
    EXPECT_EQ(object.getTotalTextureAnimationSets() + object.getTotalTextureAnimations("flames"), 0u);
    EXPECT_EQ(object.getTextureAnimationFrames("flames", 0), 0u);
    EXPECT_EQ(object.getTextureAnimationLength("flames", 0) + object.getTextureAnimationFPS("flames", 0), 0.0f);
    object.setTextureAnimationFPS("flames", 0, 30.0f);
    EXPECT_FALSE(object.animateTexture("flames", 0.5f) || object.animateTextureFrame("flames", 0.5f));
    EXPECT_EQ(object.getBoundingRadius(), 0.0f);
    EXPECT_EQ(object.getPlayedObject(1), nullptr);
    EXPECT_EQ(TW_ObjectAnimationState(object).accessMatrixVector().size(), 0u);
    if constexpr (requires { object.getLevelCount(); })
    {
        object.calculateLOD();
        EXPECT_EQ(object.getLevelCount(), 0);
        EXPECT_EQ(object.getLODObject(0), nullptr);
        EXPECT_EQ(object.getUsedLODObject(), nullptr);
        EXPECT_EQ(object.getEngineLODObject(), nullptr);
    }
    if constexpr (requires { object.getSkeleton(); })
    {
        EXPECT_EQ(object.getSkeleton(), nullptr);
        object.remapMaterials(nullptr);
        object.loadMaterials("missing.tw");
    }
    if constexpr (requires { object.getMaterialManager(); })
    {
        TW_MaterialManager materials;
        object.remapMaterials(&materials);
        object.loadMaterials("missing.tw");
        EXPECT_EQ(object.getMaterialManager(), nullptr);
    }
    P_Scene scene;
    object.addTo(&scene);
    EXPECT_NO_THROW(scene.executeFrame());
    EXPECT_FALSE(object.isConstructed());
}

// A literal 0 as the first index of a call whose weight was forgotten would be a null state.
template <typename T>
concept TakesTwoAnimationsWithoutAWeight = requires(T& object)
{
    object.crossAnimateObject(0, 0.5f, 1, 0.5f, nullptr);
}
|| requires(T& object)
{
    object.crossAnimateObjectFrame(0, 0.5f, 1, 0.5f, nullptr);
};
static_assert(!TakesTwoAnimationsWithoutAWeight<TW_VirtualObject> &&
              !TakesTwoAnimationsWithoutAWeight<TW_ObjectAnimation> &&
              !TakesTwoAnimationsWithoutAWeight<TW_VertexAnimation> &&
              !TakesTwoAnimationsWithoutAWeight<TW_ObjectAnimationLODs> &&
              !TakesTwoAnimationsWithoutAWeight<TW_VertexAnimationLODs>);

TEST(NullArguments, AreNothingToAskAboutAndAnErrorToBuildFrom)
{
    const support::CharacterFiles files;
    const std::string file = files.write();
    S_Script script(file.c_str());
    TW_ObjectAnimation object(&script, 0, nullptr, false);
    TW_VertexAnimation character(&script, 0, &script, 1);
    S_Script* const noScript = nullptr;
    const char* const noName = nullptr;
    const int blocks[] = {1, 2};

    EXPECT_EQ(object.getMeshByName(noName), nullptr);
    EXPECT_EQ(object.getMeshByNameCaseSensitive(noName), nullptr);
    EXPECT_THROW(static_cast<void>(character.getBoneHandle(noName)), TW_Exception_BoneNotFound);
    EXPECT_FALSE(object.hasAnimation(noName));
    EXPECT_THROW(static_cast<void>(object.findAnimation(noName)), TW_Exception_AnimationNotFound);
    EXPECT_FALSE(object.insertAnimation(noName, 0, nullptr));
    object.deleteAnimation(noName, 0);
    object.shareAnimation(0, nullptr);
    object.remapMaterials(nullptr);
    character.remapMaterials(nullptr);
    object.getMaterialManager()->remapMaterials(object.getMesh(0), nullptr);
    object.getMaterialManager()->remapMaterials(nullptr, character.getSkeleton()->getMaterialManager());
    TW_ObjectAnimation::loadMaterials(nullptr, file.c_str());
    EXPECT_THROW(object.loadMaterials(noName), S_FileException);
    EXPECT_THROW(object.appendAnimations(noScript, 0, false), TW_Exception_InvalidScriptParameter);
    EXPECT_THROW(object.appendAnimations(noScript, "skeleton", false), TW_Exception_InvalidScriptParameter);
    EXPECT_THROW(object.appendAnimations(noName, "skeleton", false), S_FileException);
    EXPECT_THROW(object.appendAnimations(&script, noName, false), S_ScriptException);
    EXPECT_TRUE(object.isConstructed() && object.isValidAnimation(1) && object.getMaterialManager());
    EXPECT_TRUE(character.isConstructed());

    TW_ObjectAnimationLODs levels;
    TW_VertexAnimationLODs skinned;
    TW_ObjectAnimationState state;
    const std::function<void()> constructions[] = {
        [&] { object.construct(noScript, 0, nullptr, false); },
        [&] { object.construct(noScript, "skeleton", nullptr, false); },
        [&] { object.construct(&script, noName, nullptr, false); },
        [&] { object.construct(noName, "skeleton", nullptr, false); },
        [&] { object.construct(file.c_str(), noName, nullptr, false); },
        [&] { character.construct(noScript, 0, &script, 1); },
        [&] { character.construct(&script, 0, noScript, 1); },
        [&] { character.construct(&script, "skeleton", noScript, "skin"); },
        [&] { character.construct(&script, noName, &script, "skin"); },
        [&] { character.construct(noName, "skeleton", "skin"); },
        [&] { character.construct(static_cast<TW_ObjectAnimation*>(nullptr), &object); },
        [&] { character.construct(static_cast<TW_VertexAnimation*>(nullptr), &script, 1); },
        [&] { character.construct(object, noScript, 1); },
        [&] { levels.construct(noScript, 2, blocks, false); },
        [&] { levels.construct(&script, 2, nullptr, false); },
        [&] { skinned.construct(noScript, 0, 2, &script, blocks); },
        [&] { skinned.construct(&script, 0, 2, noScript, blocks); },
        [&] { skinned.construct(&script, 0, 2, &script, nullptr); },
        [&] { state.construct(static_cast<const TW_ObjectAnimation*>(nullptr)); },
    };
    for (const auto& construction : constructions)
    {
        object.construct(&script, 0, nullptr, false);
        EXPECT_NE(support::messageOf(construction), "") << &construction - constructions;
    }
    EXPECT_FALSE(character.isConstructed() || levels.isConstructed() || skinned.isConstructed() ||
                 state.isConstructed());
}
