// Names and files as a host has them: literals, C strings, its own strings.

#include "tests/support/character_files.h"
#include "tests/support/material_records.h"
#include "tests/support/object_files.h"

#include <tw2/tw2.h>

#include <platform/scene/material.h>

#include <gtest/gtest.h>

#include <memory_resource>
#include <string>
#include <type_traits>

using namespace TW2;

namespace
{
/// A host's string with an allocator of its own.
using HostString = std::pmr::string;

/// Whether `Call` can be made, without ambiguity, with a name of each of these types.
template <typename Call, typename... Names>
constexpr bool takesAllOf = (std::is_invocable_v<Call, Names> && ...);
template <typename Call>
constexpr bool takesEveryName = takesAllOf<Call, const char (&)[4], const char*, char*, char (&)[4], std::string&,
                                           const std::string&, std::string, const S_String&, S_String, HostString>;

// Each is a call as a host writes it, with the name left open.
#define TAKES_EVERY_NAME(...) \
    static_assert(takesEveryName<decltype([](auto&& name) -> decltype(__VA_ARGS__) { return __VA_ARGS__; })>)

template <typename T>
T& some();
using Object = TW_ObjectAnimation;
using Character = TW_VertexAnimation;

TAKES_EVERY_NAME(some<TW_VirtualObject>().getBoneHandle(name));
TAKES_EVERY_NAME(some<TW_VirtualObject>().findAnimation(name));
TAKES_EVERY_NAME(some<TW_VirtualObject>().hasAnimation(name));
TAKES_EVERY_NAME(some<TW_VirtualObject>().isValidTextureAnimationSet(name));
TAKES_EVERY_NAME(some<TW_VirtualObject>().isValidTextureAnimation(name, 0));
TAKES_EVERY_NAME(some<TW_VirtualObject>().getTotalTextureAnimations(name));
TAKES_EVERY_NAME(some<TW_VirtualObject>().getTextureAnimationFrames(name, 0));
TAKES_EVERY_NAME(some<TW_VirtualObject>().getTextureAnimationLength(name, 0));
TAKES_EVERY_NAME(some<TW_VirtualObject>().getTextureAnimationFPS(name, 0));
TAKES_EVERY_NAME(some<TW_VirtualObject>().setTextureAnimationFPS(name, 0, 1.0F));
TAKES_EVERY_NAME(some<TW_VirtualObject>().animateTexture(name, 1.0F));
TAKES_EVERY_NAME(some<TW_VirtualObject>().animateTextureFrame(name, 1.0F));
TAKES_EVERY_NAME(some<Character>().getBoneHandle(name));
TAKES_EVERY_NAME(some<Character>().animateTexture(name, 1.0F));
TAKES_EVERY_NAME(some<TW_VertexAnimationLODs>().getBoneHandle(name));
TAKES_EVERY_NAME(some<TW_VertexAnimationLODs>().loadMaterials(name));
TAKES_EVERY_NAME(some<TW_ObjectAnimationLODs>().animateTextureFrame(name, 1.0F));
TAKES_EVERY_NAME(some<TW_ObjectAnimationLODs>().loadMaterials(name));

TAKES_EVERY_NAME(Object(name, "block", nullptr, false));
TAKES_EVERY_NAME(Object("file", name, nullptr, false));
TAKES_EVERY_NAME(Object(name, name, 0, false));
TAKES_EVERY_NAME(Object(&some<S_Script>(), name, nullptr, false));
TAKES_EVERY_NAME(some<Object>().construct(name, name, nullptr, false));
TAKES_EVERY_NAME(some<Object>().construct(&some<S_Script>(), name, nullptr, false));
TAKES_EVERY_NAME(some<Object>().getBoneHandle(name));
TAKES_EVERY_NAME(some<Object>().animateTexture(name, 1.0F));
TAKES_EVERY_NAME(some<Object>().getMeshByName(name));
TAKES_EVERY_NAME(some<Object>().getMeshByNameCaseSensitive(name));
TAKES_EVERY_NAME(some<Object>().appendAnimations(name, name, false));
TAKES_EVERY_NAME(some<Object>().appendAnimations(&some<S_Script>(), name, false));
TAKES_EVERY_NAME(some<Object>().appendSingleAnimation(1, name, false));
TAKES_EVERY_NAME(some<Object>().insertAnimation(name, 1, nullptr));
TAKES_EVERY_NAME(some<Object>().deleteAnimation(name, 1));
TAKES_EVERY_NAME(some<Object>().loadMaterials(name));
TAKES_EVERY_NAME(Object::loadMaterials(nullptr, name));

TAKES_EVERY_NAME(Character(name, "skeleton", "skin"));
TAKES_EVERY_NAME(Character("file", "skeleton", name, true));
TAKES_EVERY_NAME(Character(&some<S_Script>(), name, "skin"));
TAKES_EVERY_NAME(Character(&some<S_Script>(), name, &some<S_Script>(), name));
TAKES_EVERY_NAME(Character(name, "skeleton", "file", name, true));
TAKES_EVERY_NAME(some<Character>().construct(name, "skeleton", name));
TAKES_EVERY_NAME(some<Character>().construct(&some<S_Script>(), "skeleton", name, true));
TAKES_EVERY_NAME(some<Character>().construct(&some<S_Script>(), name, &some<S_Script>(), "skin"));
TAKES_EVERY_NAME(some<Character>().construct("file", name, "file", name));
TAKES_EVERY_NAME(some<Character>().loadMaterials(name));
TAKES_EVERY_NAME(Character::Skin(name));
TAKES_EVERY_NAME(some<Character::Skin>().construct(name));
TAKES_EVERY_NAME(some<Character::Skin>().boneHasVerticesWeighted(name));

TAKES_EVERY_NAME(TW_BoneHandle(name, 1));
TAKES_EVERY_NAME(some<TW_BoneHandle>().construct(name, 1));
TAKES_EVERY_NAME(TW_BoneGroupHandle::below(some<TW_VirtualObject>(), name));
TAKES_EVERY_NAME(TW_BoneMask::below(some<TW_VirtualObject>(), name));
TAKES_EVERY_NAME(TW_BoneMask::matching(some<TW_VirtualObject>(), name));
TAKES_EVERY_NAME(TW_BoneChain(some<TW_VirtualObject>(), name, "tip"));
TAKES_EVERY_NAME(TW_BoneChain(some<TW_VirtualObject>(), name, name));
TAKES_EVERY_NAME(TW_FootPlanter(some<TW_VirtualObject>(), name, nullptr, 0));
TAKES_EVERY_NAME(some<TW_AnimationMixer>().play(name));
TAKES_EVERY_NAME(some<TW_AnimationMixer>().crossFade(name, {}));
TAKES_EVERY_NAME(some<TW_AnimationMixer>().findPlay(name));

TAKES_EVERY_NAME(TW_KeyframeAnimation(name));
TAKES_EVERY_NAME(some<TW_KeyframeAnimation>().construct(name));
TAKES_EVERY_NAME(some<TW_KeyframeAnimation>().setAnimationTargetName(name));
TAKES_EVERY_NAME(some<TW_PointLightAnimation>().setAnimationTargetName(name));
TAKES_EVERY_NAME(TW_Texture::addTexturePath(name));
TAKES_EVERY_NAME(some<TW_MaterialManager>().findMaterial(name));
TAKES_EVERY_NAME(some<TW_MaterialManager>().getTextureAnimationIndex(name));
TAKES_EVERY_NAME(some<TW_MaterialManager>().isValidAnimationSet(name));
TAKES_EVERY_NAME(some<TW_MaterialManager>().isValidAnimation(name, 0));
TAKES_EVERY_NAME(some<TW_MaterialManager>().getTotalTextureAnimations(name));
TAKES_EVERY_NAME(some<TW_MaterialManager>().animateTexture(name, 1.0F));
TAKES_EVERY_NAME(TW_Loader::load(name, true));
TAKES_EVERY_NAME(TW_Loader::analyze(name));
TAKES_EVERY_NAME(S_Script(asCString(name)));

// What null and 0 meant before there were forms for strings, they mean still.
using Nothing = decltype(nullptr);
static_assert(std::is_same_v<decltype(some<TW_VirtualObject>().getBoneHandle(nullptr)), TW_BoneHandle>);
static_assert(std::is_same_v<decltype(some<TW_VirtualObject>().hasAnimation(0)), bool>);
static_assert(std::is_same_v<decltype(some<Object>().deleteAnimation(0)), void>);
static_assert(std::is_same_v<decltype(some<Object>().deleteAnimation(nullptr, 0)), void>);
static_assert(std::is_same_v<decltype(some<TW_AnimationMixer>().play(0)), TW_AnimationMixer::PlayId>);
static_assert(std::is_constructible_v<Object, S_Script*, int, Nothing, bool>);
static_assert(std::is_constructible_v<Object, const char*, Nothing, Nothing, bool>);
static_assert(std::is_constructible_v<Object, S_Script*, Nothing, Nothing, bool>);
static_assert(std::is_constructible_v<Character, const char*, Nothing, Nothing>);
static_assert(std::is_constructible_v<Character, S_Script*, int, S_Script*, int>);
static_assert(std::is_constructible_v<Character, Nothing, const Character&, Nothing>);
static_assert(!std::is_constructible_v<Object, int, std::string, Nothing, bool>, "a number is no file");
static_assert(!std::is_convertible_v<std::string, TW_KeyframeAnimation>, "a file is opened when it is asked for only");
}  // namespace

TEST(Names, AHostsStringsFindWhatLiteralsFind)
{
    const support::CharacterFiles files;
    const std::string file = files.write();
    const std::string skeleton = "skeleton";
    const HostString skin("skin");
    S_Script script(file);
    for (const Character& character :
         {Character(file, skeleton, skin), Character(&script, skeleton, "skin"),
          Character(&script, "skeleton", &script, skin), Character(file, "skeleton", file.c_str(), skin)})
    {
        EXPECT_EQ(character.getTotalMeshes(), 8u);
        EXPECT_NE(character.getSkinData(), nullptr);
    }
    Character character;
    character.construct(file.c_str(), skeleton, "skin");
    EXPECT_EQ(character.getBoneHandle(std::string("BONE5")).getBoneIndex(), 5u);
    EXPECT_EQ(TW_BoneGroupHandle::below(character, std::string("Bone3")).getTotalHandles(), 2);
    EXPECT_EQ(character.findAnimation(std::string("animation1")), 1);
    EXPECT_FALSE(character.hasAnimation(std::string("animation")));
    EXPECT_TRUE(character.getSkinData()->boneHasVerticesWeighted(std::string("bone1")));
    EXPECT_TRUE(Character::Skin(files.getDirectory().file("body.skd")).isConstructed());

    Object object(file, skeleton, nullptr, false);
    EXPECT_EQ(object.getMeshByName(std::string("bone4")), object.getMesh(4));
    EXPECT_EQ(object.getMeshByNameCaseSensitive(std::string("bone4")), nullptr);
    EXPECT_EQ(object.getMeshByNameCaseSensitive(HostString("Bone4")), object.getMesh(4));
    object.appendSingleAnimation(7, files.getDirectory().file("animation1.tw"), false);
    EXPECT_EQ(object.getAnimationFrames(7), 20u);
    object.deleteAnimation(std::string("Bone4"), 7);
    EXPECT_EQ(object.getAnimation(7)->m_iKeyframeAnimationCount, 7);
    EXPECT_THROW(object.appendAnimations(file, std::string("nothing"), false), S_Exception);
    EXPECT_FALSE(object.hasAnimation(nullptr));
    EXPECT_EQ(object.getMeshByName(static_cast<const char*>(nullptr)), nullptr);
}

TEST(Names, SetsOfAnimatedTexturesAreKnownByNumberAndByAnyName)
{
    support::TextureFolder folder;
    folder.add({"0.png", "1.png"});
    constexpr const char* longName = "a name that is too long for a string to hold in itself";
    support::ObjectFiles files;
    MaterialListChunk materials{folder.getDirectory().getPath().generic_string().c_str(), {}};
    for (const char* name : {"sea", longName})
    {
        TWMaterialChunk& material = materials.materials.emplace_back();
        material.name = name;
        support::fillTexture(material.accessDiffuseTexture(), name, {"0.png", "1.png"}).framesPerSecond = 2;
    }
    files.addMaterials(materials);
    files.addMesh("water");
    const auto object = files.build();
    TW_VirtualObject& water = *object;
    ASSERT_EQ(water.getTotalTextureAnimationSets(), 2u);
    EXPECT_STREQ(water.getTextureAnimationSetName(0), "sea");
    EXPECT_STREQ(water.getTextureAnimationSetName(1), longName);
    EXPECT_STREQ(water.getTextureAnimationSetName(2), "");
    EXPECT_STREQ(water.getTextureAnimationSetName(-1), "");
    EXPECT_STREQ(Object().getTextureAnimationSetName(0), "");
    EXPECT_STREQ(Character().getTextureAnimationSetName(0), "");

    TW_MaterialManager& manager = *object->getMaterialManager();
    const P_Material& shown = *manager.getMaterial(1)->getMaterial();
    const P_Map* const first = shown.getTexture(0);
    const std::string name = longName;
    EXPECT_TRUE(water.animateTexture(name, 0.5F));
    EXPECT_NE(shown.getTexture(0), first);
    EXPECT_TRUE(water.animateTextureFrame(longName, 0.0F));
    EXPECT_EQ(shown.getTexture(0), first);
    EXPECT_FALSE(water.animateTexture(name + "!", 0.5F));
    EXPECT_FALSE(water.animateTexture(static_cast<const char*>(nullptr), 0.5F));
    EXPECT_TRUE(water.isValidTextureAnimation(name, 0));
    EXPECT_EQ(water.getTotalTextureAnimations("sea"), 1u);
    EXPECT_EQ(water.getTextureAnimationFrames(name, 0), 2u);
    water.setTextureAnimationFPS(name, 0, 4.0F);
    EXPECT_EQ(water.getTextureAnimationFPS(longName, 0), 4.0F);
    EXPECT_EQ(water.getTextureAnimationLength(name, 0), 0.5F);

    const long long allocations = S_Memory::sm_iNewCount;
    EXPECT_TRUE(water.animateTextureSet(longName, 0.25F));
    EXPECT_NE(shown.getTexture(0), first);
    EXPECT_TRUE(water.animateTextureSetFrame(name, 0.0F));
    EXPECT_EQ(shown.getTexture(0), first);
    EXPECT_TRUE(manager.animateTexture(name, 0.25F));
    EXPECT_NE(shown.getTexture(0), first);
    EXPECT_EQ(manager.findMaterial(name), manager.getMaterial(1));
    EXPECT_EQ(manager.getTextureAnimationIndex(longName), 1);
    EXPECT_EQ(S_Memory::sm_iNewCount, allocations);

    // Who overrides what takes an S_String is asked for every kind of name.
    class Counted : public TW_ObjectAnimation
    {
    public:
        using TW_ObjectAnimation::animateTexture;
        bool animateTexture(const S_String& set, float) override { return set == "sea"; }
    } counted;
    TW_VirtualObject& asked = counted;
    EXPECT_TRUE(asked.animateTexture("sea", 0.0F));
    EXPECT_TRUE(asked.animateTexture(std::string("sea"), 0.0F));
}
