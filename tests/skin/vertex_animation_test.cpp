#include "tests/support/character_files.h"
#include "tests/support/expectations.h"
#include "tests/support/verbose_capture.h"

#include <tw2/core/static_data.h>
#include <tw2/lod/vertex_animation_lods.h>
#include <tw2/object/bone_group_handle.h>
#include <tw2/object/bone_handle.h>
#include <tw2/object/object_animation.h>
#include <tw2/object/object_animation_state.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/runtime/script.h>
#include <platform/scene/scene.h>
#include <platform/scene/skin_mesh.h>
#include <platform/scene/virtual_object.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

using namespace TW2;

namespace
{
using Matrix = M_Matrix4x3Template<float>;
using Character = std::unique_ptr<TW_VertexAnimation>;

/// The files of a character, opened, and something to build further characters on.
struct Source
{
    Source() : script(files.write().c_str()), original(&script, 0, &script, 1) {}

    support::CharacterFiles files;
    S_Script script;
    TW_VertexAnimation original;
};

/// Every way to build a character, with the name that it gets; %s stands for the script, %o for the original.
using Way = std::pair<const char*, std::function<Character(Source&)>>;

const Way ways[] = {
    {"TW_VertexAnimation %s, skeleton; %s, skin",
     [](Source& s) { return std::make_unique<TW_VertexAnimation>(s.script.getScriptName(), "skeleton", "skin"); }},
    {"TW_VertexAnimation %s, skeleton; %s, skin",
     [](Source& s) { return std::make_unique<TW_VertexAnimation>(&s.script, "skeleton", "skin"); }},
    {"TW_VertexAnimation %s, skeleton; %s, skinFar",
     [](Source& s) { return std::make_unique<TW_VertexAnimation>(&s.script, "skeleton", &s.script, "skinFar"); }},
    {"TW_VertexAnimation %s, skeleton; %s, skin",
     [](Source& s)
     {
         const char* name = s.script.getScriptName();
         return std::make_unique<TW_VertexAnimation>(name, "skeleton", name, "skin");
     }},
    {"TW_VertexAnimation %s, skeleton; %s, skinFar",
     [](Source& s) { return std::make_unique<TW_VertexAnimation>(&s.script, 0, &s.script, 2); }},
    {"%o (clone)", [](Source& s) { return std::make_unique<TW_VertexAnimation>(s.original); }},
    {"%o (clone)", [](Source& s)
     { return std::make_unique<TW_VertexAnimation>(s.original, s.original.getSkin()->getMaterialManager()); }},
    {"TW_VertexAnimation %s, skeleton %s, skin",
     [](Source& s) { return std::make_unique<TW_VertexAnimation>(s.original.getSkeleton(), s.original.getSkin()); }},
    {"TW_VertexAnimation %s, skeleton %s, skinFar",
     [](Source& s) { return std::make_unique<TW_VertexAnimation>(&s.original, &s.script, 2); }},
    {"TW_VertexAnimation %s, skeleton %s, skin (clone)",
     [](Source& s) { return std::make_unique<TW_VertexAnimation>(&s.original, s.original, nullptr); }},
    {"TW_VertexAnimation %s, skeleton %s skin",
     [](Source& s) { return std::make_unique<TW_VertexAnimation>(*s.original.getSkeleton(), &s.script, 1); }},
};

std::string expectedName(const Way& way, const Source& source)
{
    std::string name = way.first;
    for (const auto& [mark, text] : {std::pair<const char*, const char*>("%s", source.script.getScriptName()),
                                     std::pair<const char*, const char*>("%o", source.original.getName().c_str())})
    {
        for (std::size_t at = name.find(mark); at != std::string::npos; at = name.find(mark, at))
        {
            name.replace(at, 2, text);
        }
    }
    return name;
}

/// Where the vertices of a character's first primitive stand.
std::vector<M_Vector3Template<float>> getVertices(TW_VertexAnimation& character)
{
    P_Scene scene;
    character.addTo(&scene);
    scene.executeFrame();
    std::vector<M_Vector3Template<float>> vertices;
    for (unsigned int v = 0; v < 60; ++v)
    {
        vertices.push_back(character.getSkin()->getMesh(0)->getVertexPosition(0, v));
    }
    character.remove();
    return vertices;
}
}  // namespace

TEST(VertexAnimations, EveryWayOfBuildingGivesTheSameCharacter)
{
    Source source;
    source.original.animateObjectFrame(1, 7.0f, nullptr);
    const auto expected = getVertices(source.original);
    for (const Way& way : ways)
    {
        const Character character = way.second(source);
        EXPECT_EQ(std::string(character->getName()), expectedName(way, source));
        ASSERT_TRUE(character->isConstructed());
        EXPECT_EQ(character->getTotalMeshes(), 8u);
        EXPECT_EQ(character->getMesh(3)->getName(), "Bone3");
        EXPECT_FALSE(character->getMesh(3)->isEnabled());
        EXPECT_FALSE(character->getSkeleton()->isEnabled());
        EXPECT_STREQ(character->getObjectType(), "TW_VertexAnimation");
        EXPECT_EQ(source.script.getDepth(), 0u);
        EXPECT_TRUE(character->animateObjectFrame(1, 7.0f, nullptr));
        if (character->getSkinData())
        {
            EXPECT_EQ(getVertices(*character), expected) << way.first;
        }
        else
        {
            const Matrix rest = character->getBoneMatrix(3);
            getVertices(*character);
            EXPECT_EQ(character->getBoneMatrix(3), rest) << "without skin data no bone matrix is updated";
        }
    }
}

TEST(VertexAnimations, EveryWayOfBuildingSurvivesEveryFailingAllocation)
{
    Source source;
    for (const Way& way : ways)
    {
        SCOPED_TRACE(way.first);
        support::expectNothingLeftByFailedAllocations([&] { way.second(source); });
    }
}

TEST(VertexAnimations, SkeletonsAreSharedAndEveryOrderOfDestructionLeavesNothing)
{
    const support::CharacterFiles files;
    S_Script script(files.write().c_str());
    TW_VertexAnimation(&script, 0, &script, 1);  // what the loader keeps for the next file is there from here on
    deleteStaticData();
    const long long live = S_Memory::getLiveCount();
    std::vector<std::size_t> order = {0, 1, 2, 3};
    do
    {
        Character characters[4];
        characters[0] = std::make_unique<TW_VertexAnimation>(&script, 0, &script, 1);
        characters[1] = std::make_unique<TW_VertexAnimation>(characters[0].get(), &script, 2);
        characters[2] = std::make_unique<TW_VertexAnimation>(characters[1].get(), *characters[0], nullptr);
        characters[3] = std::make_unique<TW_VertexAnimation>(*characters[2]);
        EXPECT_EQ(characters[0]->getSkeleton(), characters[2]->getSkeleton());
        EXPECT_NE(characters[0]->getSkeleton(), characters[3]->getSkeleton());
        for (const std::size_t i : order)
        {
            characters[i].reset();
            for (const Character& left : characters)
            {
                if (left)
                {
                    EXPECT_TRUE(left->animateObjectFrame(1, 5.0f, nullptr));
                    getVertices(*left);
                }
            }
        }
    } while (std::next_permutation(order.begin(), order.end()));
    EXPECT_EQ(S_Memory::getLiveCount(), live);
}

TEST(VertexAnimations, ConstructingAgainReplacesWhatWasThere)
{
    Source source;
    TW_VertexAnimation character;
    EXPECT_FALSE(character.isConstructed());
    character = TW_VertexAnimation();
    EXPECT_FALSE(character.isConstructed());
    character = source.original;
    character = *&character;
    character.construct(&character, &source.script, 2);  // a new skin on its own skeleton
    EXPECT_EQ(character.getSkeleton()->getName(), source.original.getSkeleton()->getName() + " (clone)");
    EXPECT_THROW(character.construct(&source.script, 0, &source.script, 7), S_ScriptException);
    EXPECT_FALSE(character.isConstructed());
    EXPECT_EQ(character.getSkeleton(), nullptr);
    EXPECT_EQ(character.getBoneMatrixCount(), 0);
    EXPECT_THAT(support::messageOf([&] { source.original.construct(&character, &source.script, 1); }),
                testing::HasSubstr("skeleton is to be shared has none"));
    EXPECT_FALSE(source.original.isConstructed());
}

TEST(VertexAnimations, WhateverFailsLeavesThemNotConstructed)
{
    Source source;
    TW_VertexAnimation empty;
    using Failure = std::function<void(TW_VertexAnimation&)>;
    const char* const file = source.script.getScriptName();
    const Failure failures[] = {
        [](TW_VertexAnimation& c) { c.construct("missing.txt", "skeleton", "skin"); },
        [&](TW_VertexAnimation& c) { c.construct(file, "skeleton", "missing.txt", "skin"); },
        [&](TW_VertexAnimation& c) { c.construct(file, "skeleton", "nobody"); },
        [&](TW_VertexAnimation& c) { c.construct(&source.script, 7, &source.script, 1); },
        [&](TW_VertexAnimation& c) { c.construct(&empty, &source.script, 1); },
        [&](TW_VertexAnimation& c) { c.construct(&empty, source.original, nullptr); },
        [&](TW_VertexAnimation& c) { c.construct(&source.original, empty, nullptr); },
        [&](TW_VertexAnimation& c) { c.construct(*c.getSkeleton(), &source.script, 7); },
    };
    TW_VertexAnimation character;
    for (const Failure& failure : failures)
    {
        character.construct(source.original);
        EXPECT_THROW(failure(character), S_Exception);
        EXPECT_FALSE(character.isConstructed()) << "failure " << &failure - failures;
        EXPECT_EQ(character.getSkin(), nullptr);
        EXPECT_EQ(character.getBoneMatrixCount(), 0);
        EXPECT_EQ(source.script.getDepth(), 0u);
    }
}

TEST(VertexAnimations, SkinDataAreFoundBesideTheScriptAndNamedWhenTheyAreNowhereOrSomethingElse)
{
    const support::CharacterFiles files;
    (void)files.write();
    const auto write = [&files](const char* data)
    {
        return files.getDirectory().write("relative.txt",
                                          "skeleton { geometry { exportdata skeleton.tw } }\n"
                                          "skin { geometry { exportdata body.tw\nskindata " +
                                              std::string(data) + " } }\n");
    };
    const TW_VertexAnimation character(write("Body.skd").c_str(), "skeleton", "skin");
    EXPECT_EQ(character.getSkinData()->getSkinChunk().objectNames.size(), 1u);
    const std::string script = write("nobody.skd");
    const std::string message =
        support::messageOf([&script] { TW_VertexAnimation(script.c_str(), "skeleton", "skin"); });
    EXPECT_EQ(message.find("File \"nobody.skd\": is neither in the current directory \""), 0u) << message;
    EXPECT_THAT(message, testing::HasSubstr("; line 3 of \"" + script + "\" asks for it (key \"skindata\")"));
    const std::string wrong = write("body.tw");
    EXPECT_THAT(
        support::complaintOf<S_MemoryFileException>([&wrong] { TW_VertexAnimation(wrong, "skeleton", "skin"); }),
        testing::HasSubstr("(it is geometry, which the key \"exportdata\" names)"));
}

TEST(VertexAnimations, TheirOwnPartsCanBeWhatTheyAreBuiltFrom)
{
    Source source;
    source.original.animateObjectFrame(1, 7.0f, nullptr);
    const auto expected = getVertices(source.original);
    const support::NothingLeft check;
    TW_VertexAnimation character(source.original);
    const auto expectAsBefore = [&](const char* what)
    {
        character.animateObjectFrame(1, 7.0f, nullptr);
        EXPECT_EQ(getVertices(character), expected) << what;
    };
    character.construct(*character.getSkeleton(), &source.script, 1);
    expectAsBefore("on its skeleton");
    character.construct(&character, character, nullptr);
    expectAsBefore("of itself twice");
    character.construct(&source.original, character, nullptr);
    EXPECT_EQ(character.getSkeleton(), source.original.getSkeleton());
    expectAsBefore("its skin on another skeleton");
    character.construct(source.original, character.getSkin()->getMaterialManager());
    expectAsBefore("from another with its materials");
    character.construct(&character, character, character.getSkin()->getMaterialManager());
    expectAsBefore("of itself with its materials");
    character.construct(&character, &source.script, 1);
    expectAsBefore("a new skin on itself");
    character.remapMaterials(character.getSkin()->getMaterialManager());
    character.construct(character.getSkeleton(), character.getSkin());
    EXPECT_EQ(character.getTotalMeshes(), 8u);
    EXPECT_EQ(character.getSkinData(), nullptr);
    character.construct(character.getSkin(), character.getSkeleton());
    EXPECT_EQ(character.getTotalMeshes(), 1u);
    character.getSkin()->getMesh(0)->setName("skeleton");
    character.getSkeleton()->getMesh(0)->setName("skinFar");
    character.setName(source.script.getScriptName());
    character.construct(character.getName().c_str(), character.getSkin()->getMesh(0)->getName().c_str(),
                        character.getSkeleton()->getMesh(0)->getName().c_str());
    expectAsBefore("by names of its meshes");
    EXPECT_THROW(character.construct(*character.getSkeleton(), &source.script, 9), S_ScriptException);
    EXPECT_EQ(character.getFirstChild(), nullptr);
}

TEST(VertexAnimations, ASkinFollowsTheBonesThatItWasBuiltWith)
{
    Source source;
    source.original.animateObjectFrame(1, 7.0f, nullptr);
    const auto expected = getVertices(source.original);
    TW_VertexAnimation character(source.original);
    for (int i = 0; i < 20; ++i)
    {
        auto* const mesh = new P_VirtualObject(1);
        character.getSkeleton()->addMesh(mesh);
        mesh->addTo(i % 2 == 0 ? character.getSkeleton() : nullptr);
    }
    character.animateObjectFrame(1, 7.0f, nullptr);
    EXPECT_EQ(getVertices(character), expected);
    EXPECT_EQ(character.getBoneMatrixCount(), 8);
    character.getSkeleton()->destruct();
    EXPECT_EQ(getVertices(character), expected);
}

TEST(VertexAnimations, CopiedSkinsKeepTheBoneCountsThatTheirMeshesRead)
{
    const support::CharacterFiles files;
    auto source = std::make_unique<TW_VertexAnimation>(files.write().c_str(), "skeleton", "skin");
    const TW_VertexAnimation heir(source->getSkeleton(), source->getSkin());
    auto skin = std::make_unique<TW_ObjectAnimation>(*heir.getSkin());
    const TW_ObjectAnimation skinOfSkin(*skin);
    source.reset();
    skin.reset();
    for (const TW_ObjectAnimation* object : {static_cast<const TW_ObjectAnimation*>(heir.getSkin()), &skinOfSkin})
    {
        for (int primitive = 0; primitive < 2; ++primitive)
        {
            const int* const counts = object->getMesh(0)->getPrimitive(primitive)->asSkinMesh()->getBoneCountList();
            ASSERT_NE(counts, nullptr);
            EXPECT_EQ(std::vector<int>(counts, counts + 60),
                      std::vector<int>(files.m_skin.vertexBoneCounts.begin() + 60 * primitive,
                                       files.m_skin.vertexBoneCounts.begin() + 60 * (primitive + 1)));
        }
    }
}

TEST(VertexAnimations, VisibilityTracksOfTheSkinAreLoadedWhenAsked)
{
    support::CharacterFiles files;
    KeyframeAnimationChunk track = files.m_animations[0][0];
    track.header.targetName = "body";
    track.visibilityKeys = {{0, 1.0f}, {10, -1.0f}};
    const std::string blink = files.getDirectory().write("blink.tw", support::toBytes(track));
    files.m_skinBlocks = "animation { index 0 filename \"" + blink + "\" }";
    const std::string file = files.write();
    S_Script script(file.c_str());
    TW_VertexAnimation base(&script, 0, &script, 2);
    const std::function<void(TW_VertexAnimation&, bool)> constructions[] = {
        [&](TW_VertexAnimation& c, bool v) { c.construct(file.c_str(), "skeleton", "skin", v); },
        [&](TW_VertexAnimation& c, bool v) { c.construct(&script, "skeleton", "skin", v); },
        [&](TW_VertexAnimation& c, bool v) { c.construct(&script, "skeleton", &script, "skin", v); },
        [&](TW_VertexAnimation& c, bool v) { c.construct(file.c_str(), "skeleton", file.c_str(), "skin", v); },
        [&](TW_VertexAnimation& c, bool v) { c.construct(&script, 0, &script, 1, v); },
        [&](TW_VertexAnimation& c, bool v) { c.construct(&base, &script, 1, v); },
        [&](TW_VertexAnimation& c, bool v) { c.construct(*base.getSkeleton(), &script, 1, v); },
    };
    for (const auto& construct : constructions)
    {
        SCOPED_TRACE(&construct - constructions);
        TW_VertexAnimation character;
        construct(character, false);
        EXPECT_FALSE(character.updateVisibility(0, 1.0f));
        EXPECT_TRUE(character.getSkin()->getMesh(0)->isEnabled());
        construct(character, true);
        EXPECT_TRUE(character.updateVisibility(0, 1.0f));
        EXPECT_FALSE(character.getSkin()->getMesh(0)->isEnabled());
        EXPECT_TRUE(character.updateVisibilityFrame(0, 0.0f));
        EXPECT_TRUE(character.getSkin()->getMesh(0)->isEnabled());
        EXPECT_FALSE(character.updateVisibility(1, 0.0f));
    }
    EXPECT_FALSE(base.updateVisibilityFrame(0, 10.0f)) << "its skin has no animation";
    const int blocks[] = {1, 2};
    TW_VertexAnimationLODs levels(&script, 0, 2, &script, blocks, true);
    EXPECT_TRUE(levels.updateVisibilityFrame(0, 10.0f));
    EXPECT_FALSE(levels.getLODObject(0)->getSkin()->getMesh(0)->isEnabled());
    EXPECT_FALSE(TW_VertexAnimationLODs(&script, 0, 2, &script, blocks).updateVisibilityFrame(0, 10.0f));
}

TEST(VertexAnimations, AnimationMovesTheSkeletonAndTexturesBelongToTheSkin)
{
    Source source;
    TW_VertexAnimation& character = source.original;
    TW_ObjectAnimation& skeleton = *character.getSkeleton();
    EXPECT_EQ(character.getTotalAnimations(), 2u);
    EXPECT_TRUE(character.isValidAnimation(1));
    EXPECT_FALSE(character.isValidAnimation(2));
    character.setAnimationFPS(1, 20.0f);
    EXPECT_EQ(skeleton.getAnimationFPS(1), 20.0f);
    TW_ObjectAnimationState frozen(character);
    character.animateObjectFrame(1, 11.0f, nullptr);
    const Matrix pose = skeleton.getMesh(2)->getMatrix();
    character.freezeAnimationState(&frozen, nullptr);
    EXPECT_TRUE(character.crossAnimateObjectFrame(0, 1.5f, 0.2f, 1, 4.5f, nullptr));
    EXPECT_NE(skeleton.getMesh(2)->getMatrix(), pose);
    character.restoreAnimationState(&frozen);
    EXPECT_EQ(skeleton.getMesh(2)->getMatrix(), pose);
    // The skin has neither animations nor textures.
    EXPECT_FALSE(character.updateVisibility(0, 0.0f) || character.updateVisibilityFrame(0, 0.0f));
    EXPECT_FALSE(character.isValidTextureAnimationSet("flames") || character.isValidTextureAnimation("flames", 0));
    EXPECT_EQ(character.getTotalTextureAnimationSets(), 0u);
    EXPECT_FALSE(character.animateTexture("flames", 1.0f) || character.animateTextureFrame("flames", 1.0f));
    EXPECT_NO_THROW(character.uploadTextures());
    support::VerboseCapture log;
    character.getSkin()->dump(true);
    const std::string ofSkin = log.take();
    character.getSkeleton()->dump(true);
    const std::string ofSkeleton = log.take();
    character.dump(true);
    EXPECT_EQ(log.getText().find("Skin object:\n" + ofSkin + "Skeleton object:\n" + ofSkeleton), 0u) << log.getText();
}

TEST(VertexAnimations, ManualVolumesOfTheSkinComeBeforeThoseOfTheSkeleton)
{
    using Flag = P_BaseObject::EngineFlag;
    const char* const automatic = "enableBoundingBox 0";
    const std::tuple<const char*, const char*, float> cases[] = {
        {"boundingSphereRadius 3 enableBoundingBox 0", "boundingSphereRadius 2 enableBoundingBox 0", 2},
        {"boundingSphereRadius 3 enableBoundingBox 0", automatic, 3},
        {automatic, automatic, 0},
    };
    TW_VertexAnimation character;  // what it was built from before leaves no volumes
    for (const auto& [skeleton, skin, radius] : cases)
    {
        support::CharacterFiles files;
        files.m_skeletonKeys = skeleton;
        files.m_skinKeys = skin;
        S_Script script(files.write().c_str());
        character.construct(&script, 0, &script, 1);
        EXPECT_EQ(character.hasEngineFlag(Flag::FLAG_BOUNDING_SPHERE), radius > 0);
        EXPECT_FALSE(character.hasEngineFlag(Flag::FLAG_BOUNDING_BOX));
        EXPECT_TRUE(character.hasEngineFlag(Flag::FLAG_FIXED_BOUNDING_VOLUME));
        EXPECT_FALSE(character.hasEngineFlag(Flag::FLAG_AUTOMATIC_BOUNDING_VOLUME));
        EXPECT_TRUE(character.hasEngineFlag(Flag::FLAG_CULL_SUBTREE));
        EXPECT_EQ(character.getBoundingRadius(), radius);
        EXPECT_EQ(character.getStoredBoundingRadius(), radius);
        EXPECT_EQ(TW_VertexAnimation(character).getEngineFlags(), character.getEngineFlags());
    }
    support::CharacterFiles files;
    files.m_skinKeys = "boundingBoxMin (-1,-2,-3) boundingBoxMax (4,5,6) enableBoundingSphere 0";
    S_Script script(files.write().c_str());
    character.construct(&script, 0, &script, 1);
    EXPECT_TRUE(character.hasEngineFlag(Flag::FLAG_BOUNDING_BOX));
    EXPECT_EQ(character.getBoundingBoxMin(), M_Vector3Template<float>(-1, -2, -3));
    EXPECT_EQ(character.getBoundingBoxMax(), M_Vector3Template<float>(4, 5, 6));

    files.m_skinKeys.clear();
    files.write();
    const TW_VertexAnimation fresh(script.getScriptName(), "skeleton", "skin");
    character.construct(script.getScriptName(), "skeleton", "skin");
    EXPECT_EQ(character.getEngineFlags(), fresh.getEngineFlags());
    EXPECT_EQ(character.getBoundingRadius(), TW_VertexAnimation(fresh).getBoundingRadius());
}
