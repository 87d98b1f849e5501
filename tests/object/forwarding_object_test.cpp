#include "tests/support/character_files.h"
#include "tests/support/expectations.h"
#include "tests/support/load_callbacks.h"
#include "tests/support/records.h"

#include <tw2/core/exceptions.h>
#include <tw2/lod/object_animation_lods.h>
#include <tw2/lod/vertex_animation_lods.h>
#include <tw2/material/material.h>
#include <tw2/material/material_callback.h>
#include <tw2/object/bone_handle.h>
#include <tw2/object/forwarding_object.h>
#include <tw2/object/object_animation.h>
#include <tw2/object/object_animation_callbacks.h>
#include <tw2/skin/vertex_animation.h>

#include <platform/runtime/script.h>
#include <platform/scene/scene.h>
#include <platform/scene/virtual_object.h>

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <type_traits>

using namespace TW2;

namespace
{
using State = TW_ObjectAnimationState*;
using Group = TW_BoneGroupHandle*;

std::string toText(const TW_BoneHandle& handle)
{
    return handle.getBoneName().c_str();
}

template <typename T>
std::string toText(const T& value)
{
    std::ostringstream text;
    text << value;
    return text.str();
}

template <typename... Arguments>
std::string describe(const char* operation, const Arguments&... arguments)
{
    return (std::string(operation) + ... + (" " + toText(arguments)));
}

/// A part that notes what it is asked to do, and answers as it was told.
class Part : public TW_ObjectAnimation
{
public:
    Part(std::string name, std::vector<std::string>& log) : m_name(std::move(name)), m_log(log) {}

    int m_iAnswer = 0;

    // clang-format off
    unsigned int getTotalMeshes() const override { return note<unsigned int>("getTotalMeshes"); }
    P_VirtualObject* getMesh(unsigned int i) const override { note<int>("getMesh", i); return m_iAnswer ? m_pMesh.get() : nullptr; }
    unsigned int getTotalAnimations() const override { return note<unsigned int>("getTotalAnimations"); }
    int getMaximumAnimationIndex() const override { return note<int>("getMaximumAnimationIndex"); }
    bool isValidAnimation(int i) const override { return note<bool>("isValidAnimation", i); }
    unsigned int getAnimationFrames(int i) const override { return note<unsigned int>("getAnimationFrames", i); }
    float getAnimationLength(int i) const override { return note<float>("getAnimationLength", i); }
    float getAnimationFPS(int i) const override { return note<float>("getAnimationFPS", i); }
    void setAnimationFPS(int i, float f) override { note<void>("setAnimationFPS", i, f); }
    unsigned int getAnimationLoopToFrame(int i) const override { return note<unsigned int>("getAnimationLoopToFrame", i); }
    float getAnimationLoopToTime(int i) const override { return note<float>("getAnimationLoopToTime", i); }
    bool animateObject(int i, float t, Group g) override { return note<bool>("animateObject", i, t, g); }
    bool animateObjectFrame(int i, float f, Group g) override { return note<bool>("animateObjectFrame", i, f, g); }
    void freezeAnimationState(State s, Group g) override { note<void>("freezeAnimationState", s, g); }
    void restoreAnimationState(State s) override { note<void>("restoreAnimationState", s); }
    TW_BoneHandle getBoneHandle(const char* n) override { return {"of a part", note<int>("getBoneHandle", n)}; }
    bool crossAnimateObject(State s, float w, int i, float t, float v, int j, float u, float x, Group g) override { return note<bool>("crossAnimateObject", s, w, i, t, v, j, u, x, g); }
    bool crossAnimateObject(State s, float w, State t, const TW_BoneHandle& h, Group g) override { return note<bool>("crossAnimateObject", s, w, t, h, g); }
    bool crossAnimateObject(State s, float w, State t, Group g) override { return note<bool>("crossAnimateObject", s, w, t, g); }
    bool crossAnimateObject(State s, float w, int i, float t, Group g) override { return note<bool>("crossAnimateObject", s, w, i, t, g); }
    bool crossAnimateObject(int i, float t, float v, int j, float u, float x, int k, float y, Group g) override { return note<bool>("crossAnimateObject", i, t, v, j, u, x, k, y, g); }
    bool crossAnimateObject(int i, float t, float v, int j, float u, Group g) override { return note<bool>("crossAnimateObject", i, t, v, j, u, g); }
    bool crossAnimateObjectFrame(State s, float w, int i, float t, float v, int j, float u, float x, Group g) override { return note<bool>("crossAnimateObjectFrame", s, w, i, t, v, j, u, x, g); }
    bool crossAnimateObjectFrame(State s, float w, int i, float t, Group g) override { return note<bool>("crossAnimateObjectFrame", s, w, i, t, g); }
    bool crossAnimateObjectFrame(int i, float t, float v, int j, float u, float x, int k, float y, Group g) override { return note<bool>("crossAnimateObjectFrame", i, t, v, j, u, x, k, y, g); }
    bool crossAnimateObjectFrame(int i, float t, float v, int j, float u, Group g) override { return note<bool>("crossAnimateObjectFrame", i, t, v, j, u, g); }
    void uploadTextures() override { note<void>("uploadTextures"); }
    bool isValidTextureAnimationSet(const S_String& s) const override { return note<bool>("isValidTextureAnimationSet", s); }
    bool isValidTextureAnimation(const S_String& s, int i) const override { return note<bool>("isValidTextureAnimation", s, i); }
    unsigned int getTotalTextureAnimationSets() const override { return note<unsigned int>("getTotalTextureAnimationSets"); }
    unsigned int getTotalTextureAnimations(const S_String& s) const override { return note<unsigned int>("getTotalTextureAnimations", s); }
    unsigned int getTextureAnimationFrames(const S_String& s, int i) const override { return note<unsigned int>("getTextureAnimationFrames", s, i); }
    float getTextureAnimationLength(const S_String& s, int i) const override { return note<float>("getTextureAnimationLength", s, i); }
    float getTextureAnimationFPS(const S_String& s, int i) const override { return note<float>("getTextureAnimationFPS", s, i); }
    void setTextureAnimationFPS(const S_String& s, int i, float f) override { note<void>("setTextureAnimationFPS", s, i, f); }
    bool animateTexture(const S_String& s, float t) override { return note<bool>("animateTexture", s, t); }
    bool animateTextureFrame(const S_String& s, float f) override { return note<bool>("animateTextureFrame", s, f); }
    // clang-format on

private:
    template <typename Result, typename... Arguments>
    Result note(const char* operation, const Arguments&... arguments) const
    {
        m_log.push_back(m_name + describe(operation, arguments...));
        return static_cast<Result>(m_iAnswer);
    }

    std::string m_name;
    std::vector<std::string>& m_log;
    std::unique_ptr<P_VirtualObject> m_pMesh = std::make_unique<P_VirtualObject>(1);
};

/// Two parts for each kind of operation.
class Whole : public TW_ForwardingObject
{
public:
    using TW_ForwardingObject::Operations;

    const char* getObjectType() const override { return "Whole"; }
    bool executeAlways() override { return false; }
    void takeApart() noexcept override {}
    TW_ObjectAnimation* getPart(Operations operations, unsigned int i) const override
    {
        const auto found = m_parts.find(operations);
        return found != m_parts.end() && i < found->second.size() ? &found->second[i] : nullptr;
    }
    void addParts(Operations operations, const char* name)
    {
        m_parts[operations].emplace_back(name + std::string(" 0: "), m_log);
        m_parts[operations].emplace_back(name + std::string(" 1: "), m_log);
    }

    mutable std::map<Operations, std::deque<Part>> m_parts;
    std::vector<std::string> m_log;
};

class Forwarding : public testing::Test
{
protected:
    using Operations = Whole::Operations;
    static constexpr const char* s_names[] = {"move", "show", "freeze", "ask", "index", "texture", "ask texture"};

    Forwarding()
    {
        for (int i = 0; i < 7; ++i)
        {
            m_whole.addParts(static_cast<Operations>(i), s_names[i]);
        }
    }

    /// Calls an operation under each pair of answers of the parts, and checks who heard of it, and the result.
    template <typename Call>
    void check(Operations operations, const std::string& call, const Call& operation)
    {
        const bool everyPart = operations == Operations::Move || operations == Operations::Texture;
        const std::string name = s_names[static_cast<int>(operations)];
        std::vector<std::string> expected = {name + " 0: " + call};
        if (everyPart)
        {
            expected.push_back(name + " 1: " + call);
        }
        std::deque<Part>& parts = m_whole.m_parts[operations];
        for (const auto& [first, second] : {std::pair(0, 0), std::pair(1, 0), std::pair(0, 1), std::pair(1, 1)})
        {
            parts[0].m_iAnswer = first;
            parts[1].m_iAnswer = second;
            using Result = decltype(operation(m_whole));
            if constexpr (std::is_void_v<Result>)
            {
                operation(m_whole);
            }
            else
            {
                EXPECT_EQ(operation(m_whole) != Result(), first == 1 || (everyPart && second == 1)) << call;
                EXPECT_EQ(operation(m_empty), Result()) << call << " without parts";
                m_whole.m_log.resize(expected.size());
            }
            EXPECT_EQ(m_whole.m_log, expected);
            m_whole.m_log.clear();
        }
        if constexpr (std::is_void_v<decltype(operation(m_whole))>)
        {
            EXPECT_NO_THROW(operation(m_empty)) << call << " without parts";
        }
    }
    template <typename Result, typename... Arguments>
    void check(Operations operations, const char* name, Result (TW_VirtualObject::*operation)(Arguments...) const,
               std::type_identity_t<Arguments>... arguments)
    {
        check(operations, describe(name, arguments...),
              [&](const TW_VirtualObject& object) { return (object.*operation)(arguments...); });
    }
    template <typename Result, typename... Arguments>
    void check(Operations operations, const char* name, Result (TW_VirtualObject::*operation)(Arguments...),
               Arguments... arguments)
    {
        check(operations, describe(name, arguments...),
              [&](TW_VirtualObject& object) { return (object.*operation)(arguments...); });
    }

    /// Of several operations of one name the one that takes these arguments.
    template <typename... Arguments>
    void checkMove(const char* name, bool (TW_VirtualObject::*operation)(Arguments...), Arguments... arguments)
    {
        check(Operations::Move, name, operation, arguments...);
    }

    Whole m_whole;
    Whole m_empty;
};
}  // namespace

TEST_F(Forwarding, EveryOperationReachesItsPartsWithItsArguments)
{
    using Object = TW_VirtualObject;
    const State state1 = reinterpret_cast<State>(0x10);  // never looked into
    const State state2 = reinterpret_cast<State>(0x20);
    const Group group = reinterpret_cast<Group>(0x30);
    const S_String set = "flames";
    const char* const bone = "hand";

    check(Operations::Ask, "getTotalMeshes", &Object::getTotalMeshes);
    check(Operations::Ask, "getMesh", &Object::getMesh, 7u);
    check(Operations::Ask, "getTotalAnimations", &Object::getTotalAnimations);
    check(Operations::Ask, "getAnimationFrames", &Object::getAnimationFrames, 3);
    check(Operations::Ask, "getAnimationLength", &Object::getAnimationLength, 3);
    check(Operations::Ask, "getAnimationFPS", &Object::getAnimationFPS, 3);
    check(Operations::AskForIndex, "isValidAnimation", &Object::isValidAnimation, 3);
    check(Operations::AskForIndex, "getAnimationLoopToFrame", &Object::getAnimationLoopToFrame, 3);
    check(Operations::AskForIndex, "getAnimationLoopToTime", &Object::getAnimationLoopToTime, 3);
    check(Operations::Move, "setAnimationFPS", &Object::setAnimationFPS, 3, 1.5F);

    check(Operations::Move, "animateObject", &Object::animateObject, 3, 1.5F, group);
    check(Operations::Move, "animateObjectFrame", &Object::animateObjectFrame, 3, 1.5F, group);
    check(Operations::Freeze, "freezeAnimationState", &Object::freezeAnimationState, state1, group);
    check(Operations::Freeze, "restoreAnimationState", &Object::restoreAnimationState, state1);
    const char* const cross = "crossAnimateObject";
    checkMove(cross, &Object::crossAnimateObject, state1, 0.1F, 2, 0.3F, 0.4F, 5, 0.6F, 0.7F, group);
    checkMove(cross, &Object::crossAnimateObject, state1, 0.1F, state2, group);
    checkMove(cross, &Object::crossAnimateObject, state1, 0.1F, 2, 0.3F, group);
    checkMove(cross, &Object::crossAnimateObject, 1, 0.2F, 0.3F, 4, 0.5F, 0.6F, 7, 0.8F, group);
    checkMove(cross, &Object::crossAnimateObject, 1, 0.2F, 0.3F, 4, 0.5F, group);
    const TW_BoneHandle reference("hip", 4);
    check(Operations::Move, describe(cross, state1, 0.1F, state2, reference, group),
          [&](TW_VirtualObject& object) { return object.crossAnimateObject(state1, 0.1F, state2, reference, group); });
    const char* const frame = "crossAnimateObjectFrame";
    checkMove(frame, &Object::crossAnimateObjectFrame, state1, 0.1F, 2, 0.3F, 0.4F, 5, 0.6F, 0.7F, group);
    checkMove(frame, &Object::crossAnimateObjectFrame, state1, 0.1F, 2, 0.3F, group);
    checkMove(frame, &Object::crossAnimateObjectFrame, 1, 0.2F, 0.3F, 4, 0.5F, 0.6F, 7, 0.8F, group);
    checkMove(frame, &Object::crossAnimateObjectFrame, 1, 0.2F, 0.3F, 4, 0.5F, group);

    check(Operations::Texture, "uploadTextures", &Object::uploadTextures);
    check<bool, const S_String&>(Operations::AskTexture, "isValidTextureAnimationSet",
                                 &Object::isValidTextureAnimationSet, set);
    check<bool, const S_String&, int>(Operations::AskTexture, "isValidTextureAnimation",
                                      &Object::isValidTextureAnimation, set, 3);
    check(Operations::AskTexture, "getTotalTextureAnimationSets", &Object::getTotalTextureAnimationSets);
    check<unsigned int, const S_String&>(Operations::AskTexture, "getTotalTextureAnimations",
                                         &Object::getTotalTextureAnimations, set);
    check<unsigned int, const S_String&, int>(Operations::AskTexture, "getTextureAnimationFrames",
                                              &Object::getTextureAnimationFrames, set, 3);
    check<float, const S_String&, int>(Operations::AskTexture, "getTextureAnimationLength",
                                       &Object::getTextureAnimationLength, set, 3);
    check<float, const S_String&, int>(Operations::AskTexture, "getTextureAnimationFPS",
                                       &Object::getTextureAnimationFPS, set, 3);
    check(Operations::Texture, "setTextureAnimationFPS flames 3 1.5",
          [&](TW_VirtualObject& object) { object.setTextureAnimationFPS(set, 3, 1.5F); });
    check(Operations::Texture, "animateTexture flames 1.5",
          [&](TW_VirtualObject& object) { return object.animateTexture(set, 1.5F); });
    check(Operations::Texture, "animateTextureFrame flames 1.5",
          [&](TW_VirtualObject& object) { return object.animateTextureFrame(set, 1.5F); });

    check(Operations::Ask, "getMaximumAnimationIndex",
          [](TW_VirtualObject& object)
          { return object.getMaximumAnimationIndex() + (object.getPlayedObject(0) ? 0 : 1); });
    m_whole.m_parts[Operations::Ask][0].m_iAnswer = 5;
    EXPECT_EQ(m_whole.getBoneHandle(bone).getBoneIndex(), 5u);
    EXPECT_EQ(m_whole.m_log.back(), "ask 0: getBoneHandle hand");
    EXPECT_EQ(m_whole.getPlayedObject(1), &m_whole.m_parts[Operations::Move][1]);
    EXPECT_EQ(m_whole.getPlayedObject(2), nullptr);
}

TEST_F(Forwarding, ManualVolumesAreThoseOfTheFirstPartThatUsesOne)
{
    using Vector = M_Vector3Template<float>;
    Whole whole;
    whole.addParts(Operations::Bounds, "bounds");
    whole.setBoundingRadius(1.0F);
    whole.setBoundingBox({-1, -1, -1}, {1, 1, 1});
    whole.setEngineFlag(P_BaseObject::FLAG_FIXED_BOUNDING_VOLUME, true);
    std::deque<Part>& parts = whole.m_parts[Operations::Bounds];
    const auto expect = [&](float radius, float corner)
    {
        EXPECT_EQ(whole.getBoundingRadius(), radius);
        EXPECT_EQ(whole.getBoundingBoxMin(), Vector(-corner, -corner, -corner));
        EXPECT_EQ(whole.getBoundingBoxMax(), Vector(corner, corner, corner));
    };
    for (const float size : {2.0F, 3.0F})
    {
        TW_ObjectAnimation& part = parts[size == 2.0F ? 0 : 1];
        part.setManualBoundingSphereRadius(size);
        part.setManualBoundingBoxMin({-size, -size, -size});
        part.setManualBoundingBoxMax({size, size, size});
    }
    expect(1, 1);
    parts[1].setUseManualBoundingSphere(true);
    expect(3, 1);
    parts[0].setUseManualBoundingBox(true);
    expect(3, 2);
    parts[0].setUseManualBoundingSphere(true);
    parts[1].setUseManualBoundingBox(true);
    expect(2, 2);
}

using Taker = support::ActingOnce;

/// `build` makes the object of `meshes` meshes, some of which have the materials of `file`.
template <typename Object>
void expectItsLoadEnds(Object& object, const std::function<void()>& build, int meshes, const std::string& file)
{
    const std::function<void()> takings[] = {[&] { object.destruct(); }, build};
    for (const std::function<void()>& take : takings)
    {
        for (const int mesh : {1, meshes, 0})
        {
            const Taker taker(mesh > 0 ? Taker::MESH_LOADED : Taker::MATERIAL, take, std::max(mesh, 1));
            EXPECT_THROW(build(), TW_Exception_InvalidGeometry) << object.getObjectType() << ", mesh " << mesh;
            EXPECT_FALSE(object.isConstructed());
            EXPECT_EQ(object.getTotalMeshes(), 0U);
            EXPECT_EQ(object.getFirstChild(), nullptr);
            EXPECT_NO_THROW(build());  // it has taken it once
            EXPECT_TRUE(object.isConstructed());
        }
        {
            const Taker taker(Taker::MATERIAL, take);
            EXPECT_THROW(object.loadMaterials(file.c_str()), TW_Exception_InvalidGeometry);
            EXPECT_FALSE(object.isConstructed());
        }
        build();
    }
    const auto watch = [&]
    {
        EXPECT_FALSE(Object(object).isConstructed());  // nothing is, before it is built
        P_Scene scene;
        object.addTo(&scene);
        scene.executeFrame();
        object.remove();
    };
    const Taker watcher(Taker::MESH_LOADED, watch, meshes);
    EXPECT_NO_THROW(build());
    EXPECT_TRUE(object.isConstructed());
}

TEST(ForwardingObjects, ASkeletonIsSharedAndASkinCopiedOnceItIsBuilt)
{
    const support::CharacterFiles files;
    S_Script script(files.write().c_str());
    TW_VertexAnimation source(&script, "skeleton", "skin");
    TW_VertexAnimation character;
    TW_VertexAnimation sharer(source);
    const auto share = [&] { sharer.construct(&character, source, nullptr); };
    const auto copySkin = [&] { sharer.construct(&source, character, nullptr); };
    for (const int mesh : {1, 9})
    {
        const auto complain = [&]
        {
            EXPECT_NE(support::messageOf(share).find("is still being built"), std::string::npos);
            EXPECT_FALSE(sharer.isConstructed());
            EXPECT_NE(support::messageOf(copySkin), "");
            EXPECT_FALSE(sharer.isConstructed());
        };
        const Taker taker(Taker::MESH_LOADED, complain, mesh);
        character.construct(&script, "skeleton", "skin");
    }
    share();
    EXPECT_EQ(sharer.getBoneMatrixCount(), character.getBoneMatrixCount());
}

TEST(ForwardingObjects, ACallbackThatTakesOneAwayEndsItsLoad)
{
    static const int blocks[] = {1, 2};
    support::CharacterFiles files;
    files.m_materials.materials = {support::makeSolidMaterial("material0"), support::makeSolidMaterial("material1")};
    S_Script script(files.write().c_str());
    const std::string file = (files.getDirectory().getPath() / "body.tw").string();
    TW_VertexAnimation(&script, "skeleton", "skin").destruct();  // what the loader keeps is there from now on
    const support::NothingLeft check;
    TW_VertexAnimation character;
    expectItsLoadEnds(
        character, [&] { character.construct(&script, "skeleton", "skin"); }, 9, file);
    TW_ObjectAnimationLODs levels;
    expectItsLoadEnds(
        levels, [&] { levels.construct(&script, 2, blocks, false); }, 2, file);
    TW_VertexAnimationLODs skinned;
    expectItsLoadEnds(
        skinned, [&] { skinned.construct(&script, 0, 2, &script, blocks); }, 10, file);
    const Taker taker(
        Taker::MESH_LOADED, [&] { skinned.getLODObject(0)->destruct(); }, 10);
    EXPECT_THROW(skinned.construct(&script, 0, 2, &script, blocks), TW_Exception_InvalidGeometry);
}
