#include "tests/object/soldier_files.h"
#include "tests/support/expectations.h"
#include "tests/support/load_callbacks.h"

#include <tw2/core/exceptions.h>
#include <tw2/io/helper_chunk.h>
#include <tw2/io/loader.h>
#include <tw2/keyframe/keyframe_animation.h>
#include <tw2/lod/object_animation_lods.h>
#include <tw2/material/material_callback.h>
#include <tw2/material/material_manager.h>
#include <tw2/object/object_animation.h>
#include <tw2/object/object_animation_callbacks.h>
#include <tw2/object/object_animation_mesh_callback.h>

#include <platform/math/inverse_sqrt.h>
#include <platform/runtime/file.h>
#include <platform/runtime/script.h>
#include <platform/scene/virtual_object.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

using namespace TW2;
using support::expectSoldier;
using support::makeTrack;
using support::ObjectFiles;
using support::SoldierFiles;
using testing::HasSubstr;

namespace
{
/// A host's own callback, which constructions must leave in place.
class SomeKeyframeCallback : public TW_KeyframeAnimationCallback
{
public:
    void operator()(KeyframeAnimationChunk&) override {}
};

/// Checks, at its end, that directory, loader and script stand where they stood at its begin.
class SurroundingsCheck
{
public:
    SurroundingsCheck() : m_directory(File.getCurrentDirectory())
    {
        TW_Loader::setKeyframeAnimationCallback(&m_callback);
    }
    ~SurroundingsCheck()
    {
        EXPECT_EQ(File.getCurrentDirectory(), m_directory);
        EXPECT_EQ(TW_Loader::getKeyframeAnimationCallback(), &m_callback);
        EXPECT_EQ(TW_Loader::getMaterialListCallback(), nullptr);
        EXPECT_EQ(TW_Loader::getMeshCallback(), nullptr);
        TW_Loader::clearAll();
    }
    SurroundingsCheck(const SurroundingsCheck&) = delete;
    SurroundingsCheck& operator=(const SurroundingsCheck&) = delete;

private:
    SomeKeyframeCallback m_callback;
    S_String m_directory;
};

}  // namespace

TEST(ObjectAnimationConstruction, EveryFormBuildsTheSameObject)
{
    const SoldierFiles files;
    const std::string scriptName = files.writeScript();
    const SurroundingsCheck surroundings;

    TW_ObjectAnimation byFile(scriptName.c_str(), "object", nullptr, false);
    expectSoldier(byFile);
    EXPECT_EQ(byFile.getName(), (scriptName + ", object").c_str());
    EXPECT_STREQ(byFile.getObjectType(), "TW_ObjectAnimation");

    S_Script script(scriptName.c_str());
    TW_ObjectAnimation byName(&script, "object", nullptr, false);
    expectSoldier(byName);
    TW_ObjectAnimation byIndex(&script, 0, nullptr, false);
    expectSoldier(byIndex);
    EXPECT_EQ(byIndex.getName(), byName.getName());
    EXPECT_EQ(script.getDepth(), 0u);

    TW_ObjectAnimation later;
    EXPECT_FALSE(later.isConstructed());
    EXPECT_EQ(later.getMaterialManager(), nullptr);
    EXPECT_EQ(later.getManualBoundingSphereRadius(), std::numeric_limits<float>::max());
    later.construct(&script, "object", nullptr, false);
    later.construct(&script, "object", nullptr, false);
    expectSoldier(later);
    later.getMesh(0)->setName("object");  // the names that it is built by may be its own
    later.construct(&script, later.getMesh(0)->getName().c_str(), nullptr, false);
    expectSoldier(later);
    later.setName(scriptName.c_str());
    later.getMesh(1)->setName("object");
    later.construct(later.getName().c_str(), later.getMesh(1)->getName().c_str(), nullptr, false);
    expectSoldier(later);
    later.destruct();
    EXPECT_FALSE(later.isConstructed());
    EXPECT_EQ(later.getTotalMeshes(), 0u);
    EXPECT_EQ(later.getMaximumAnimationIndex(), -1);
}

TEST(ObjectAnimationConstruction, CrossModeIsOneOfThreeWordsAndNormalizedWhenLeftOut)
{
    const SoldierFiles files;
    EXPECT_EQ(files.build("linear")->getCrossMode(), InterpolationMode::Linear);
    EXPECT_EQ(files.build("normalized")->getCrossMode(), InterpolationMode::Normalized);
    EXPECT_EQ(files.build("orthonormalized")->getCrossMode(), InterpolationMode::Orthonormalized);

    const std::string geometry = files.getDirectory().file("geometry.tw");
    S_Script script = S_Script::fromText("memory", ("a { geometry { exportdata \"" + geometry + "\" } }").c_str());
    TW_ObjectAnimation object(&script, "a", nullptr, false);
    EXPECT_EQ(object.getCrossMode(), InterpolationMode::Normalized);
    EXPECT_EQ(object.getTotalAnimations(), 0u);
    EXPECT_EQ(object.getName(), "memory, a");
}

TEST(ObjectAnimationConstruction, BoundingVolumesFollowTheMeshesOrWhatTheScriptGives)
{
    using Vector = M_Vector3Template<float>;
    constexpr unsigned int box = P_BaseObject::FLAG_BOUNDING_BOX;
    constexpr unsigned int sphere = P_BaseObject::FLAG_BOUNDING_SPHERE;
    constexpr unsigned int automatic = P_BaseObject::FLAG_AUTOMATIC_BOUNDING_VOLUME;
    constexpr unsigned int fixed = P_BaseObject::FLAG_FIXED_BOUNDING_VOLUME;
    const float side = 3.0f / std::sqrt(3.0f);
    const float meshRadius = std::sqrt(24.0f);  // of the vertex (2, 4, -2)
    const struct
    {
        const char* keys;
        unsigned int flags;
        bool manualBox;
        bool manualSphere;
        float radius;  // as reported
        Vector minimum;
        Vector maximum;
    } cases[] = {
        {"", box | sphere | automatic, false, false, meshRadius, {0, 0, -2}, {2, 4, 0}},
        {"enableBoundingBox 0 boundingSphereRadius 3",
         sphere | fixed,
         false,
         true,
         3.0f,
         {-side, -side, -side},
         {side, side, side}},
        {"enableBoundingSphere 0 boundingBoxMin (-3,0,0) boundingBoxMax (1,2,2)",
         box | fixed,
         true,
         false,
         M_fastLength({-3, 0, 0}),
         {-3, 0, 0},
         {1, 2, 2}},
        {"boundingBoxMin (-3,0,0) boundingBoxMax (1,2,2) boundingSphereRadius 7",
         box | sphere | fixed,
         true,
         true,
         7.0f,
         {-3, 0, 0},
         {1, 2, 2}},
        {"boundingSphereRadius 7", box | sphere | automatic, false, true, 7.0f, {0, 0, -2}, {2, 4, 0}},
        {"enableBoundingBox 0 enableBoundingSphere 0", fixed, false, false, -1.0f, {-1, -1, -1}, {-1, -1, -1}},
    };
    ObjectFiles files;
    files.addMesh("triangle");
    TW_ObjectAnimation object;
    for (const auto& expected : cases)
    {
        SCOPED_TRACE(expected.keys);
        object.construct(files.writeScript("linear", expected.keys).c_str(), "object", nullptr, false);
        EXPECT_EQ(object.getEngineFlags() & (box | sphere | automatic | fixed), expected.flags);
        EXPECT_EQ(object.getUseManualBoundingBox(), expected.manualBox);
        EXPECT_EQ(object.getUseManualBoundingSphere(), expected.manualSphere);
        EXPECT_EQ(object.getBoundingRadius(), expected.radius);
        for (const auto& [found, wanted] : {std::pair(object.getBoundingBoxMin(), expected.minimum),
                                            std::pair(object.getBoundingBoxMax(), expected.maximum)})
        {
            EXPECT_FLOAT_EQ(found.x, wanted.x);
            EXPECT_FLOAT_EQ(found.y, wanted.y);
            EXPECT_FLOAT_EQ(found.z, wanted.z);
        }
    }
}

TEST(ObjectAnimationConstruction, CallbacksMayBuildOtherObjectsMeanwhile)
{
    /// At every call: another object, and an animation for one that there is.
    class Builder : public support::LoadCallbacks
    {
    public:
        explicit Builder(const ObjectFiles& files)
            : m_script(files.writeScript("orthonormalized")),
              m_animation(files.writeAnimation("wave.tw", {makeTrack("arm", 4.0f)}).c_str())
        {
            m_bBuilding = true;
            m_other.construct(m_script.c_str(), "object", nullptr, false);
            m_bBuilding = false;
        }
        int m_iBuilt = 0;

    private:
        void act(Place) override
        {
            if (m_bBuilding)
            {
                return;
            }
            m_bBuilding = true;
            TW_ObjectAnimation object(m_script.c_str(), "object", nullptr, false);
            EXPECT_EQ(object.getTotalMeshes(), 2u);
            EXPECT_EQ(object.getMaterialManager()->getMaterialCount(), 1u);
            object.construct(m_script.c_str(), "object", nullptr, false);
            EXPECT_EQ(object.getTotalAnimations(), 1u);
            m_other.appendSingleAnimation(9, m_animation, false);
            EXPECT_TRUE(m_other.animateObjectFrame(9, 1.0f, nullptr));
            EXPECT_THROW(object.construct("missing.txt", "object", nullptr, false), S_FileException);
            ++m_iBuilt;
            m_bBuilding = false;
        }

        std::string m_script;
        S_String m_animation;
        TW_ObjectAnimation m_other;
        bool m_bBuilding = false;
    };
    MaterialListChunk list;
    list.materials = {support::makeSolidMaterial("skin"), support::makeSolidMaterial("cloth")};
    ObjectFiles innerFiles;
    innerFiles.addMaterials(MaterialListChunk{"", {support::makeSolidMaterial("paint")}});
    innerFiles.addMesh("arm");
    innerFiles.addMesh("hand", "arm");
    innerFiles.addAnimation(0, {makeTrack("arm", 1.0f)});
    ObjectFiles files;
    files.addMaterials(list);
    files.addMesh("hip");
    files.addMesh("leg", "hip");
    files.addMesh("foot", "leg");
    files.addAnimation(3, {makeTrack("hip", 1.0f), makeTrack("nobody", 1.0f), makeTrack("foot", 1.0f)});
    files.addAnimation(4, {makeTrack("leg", 1.0f)});

    const SurroundingsCheck surroundings;
    Builder builder(innerFiles);
    const auto object = files.build();
    EXPECT_EQ(builder.m_iBuilt, 2 * 2 + 2 * 3 + 1)
        << "materials and meshes before and after, one target without a mesh";
    EXPECT_EQ(object->getTotalMeshes(), 3u);
    EXPECT_EQ(object->getMaterialManager()->getMaterialCount(), 2u);
    EXPECT_EQ(object->getAnimation(3)->m_iKeyframeAnimationCount, 2);
    EXPECT_EQ(object->getAnimation(4)->m_iKeyframeAnimationCount, 1);
}

TEST(ObjectAnimationConstruction, ACallbackThatTakesTheObjectAwayEndsItsLoad)
{
    using Taker = support::ActingOnce;
    ObjectFiles files;
    files.addMaterials(
        MaterialListChunk{"", {support::makeSolidMaterial("skin"), support::makeSolidMaterial("cloth")}});
    files.addMesh("hip");
    files.addMesh("lost", "nobody");
    files.addMesh("leg", "hip");
    files.addAnimation(0, {makeTrack("hip", 1.0f), makeTrack("nobody", 2.0f), makeTrack("leg", 3.0f)});
    files.addAnimation(1, {makeTrack("leg", 4.0f)});
    const std::string script = files.writeScript();
    const std::string more = files.writeAnimation("more.tw", {makeTrack("nobody", 2.0f), makeTrack("leg", 3.0f)});
    TW_ObjectAnimation object;
    TW_ObjectAnimation other;
    const std::function<void()> takings[] = {[&] { object.destruct(); },
                                             [&] { object.construct(script.c_str(), "object", nullptr, false); },
                                             [&] { object = other; }};
    const auto build = [&] { object.construct(script.c_str(), "object", nullptr, false); };
    const auto expectTaken = [&](const std::function<void()>& load)
    {
        EXPECT_THROW(load(), TW_Exception_InvalidGeometry);
        EXPECT_FALSE(object.isConstructed());
        EXPECT_EQ(object.getTotalMeshes(), 0u);
        EXPECT_EQ(object.getTotalAnimations(), 0u);
    };

    const SurroundingsCheck surroundings;
    for (const std::function<void()>& take : takings)
    {
        for (int place = 0; place < Taker::PLACES; ++place)
        {
            SCOPED_TRACE(place);
            const Taker taker(static_cast<Taker::Place>(place), take);
            expectTaken(build);
            EXPECT_NO_THROW(build());  // it has taken it once
            EXPECT_EQ(object.getTotalMeshes(), 3u);
            EXPECT_EQ(object.getTotalAnimations(), 2u);
        }
    }
    const Taker taker(Taker::TRACK, takings[0]);
    expectTaken([&] { object.appendSingleAnimation(7, more.c_str(), false); });
}

TEST(ObjectAnimationConstruction, WhatIsWrongIsNamedAndNothingIsLeftBehind)
{
    const SoldierFiles files;
    (void)files.writeScript();
    const std::string geometry = "\"" + files.getDirectory().file("geometry.tw") + "\"";
    const std::string walk = "\"" + files.writeAnimation("walk.tw", {makeTrack("Hip", 1.0f)}) + "\"";
    const std::string tail = "\"" + files.writeAnimation("tail.tw", {makeTrack("Tail", 1.0f)}) + "\"";
    const std::string lines = "geometry { exportdata " + geometry + " }\n";
    const std::tuple<const char*, std::string, std::vector<std::string>> failures[] = {
        {"no geometry", "animation { index 0 filename " + walk + " }", {"broken.txt", "geometry"}},
        {"two geometries", lines + lines, {"broken.txt", "geometry"}},
        {"unknown block", lines + "sound { }", {"broken.txt", "sound"}},
        {"key of no block", "crossmode linear\n" + lines, {"broken.txt", "crossmode", "only blocks are: \"geometry\""}},
        {"block in geometry",
         "geometry { exportdata " + geometry + "\n animation { index 0 filename " + walk + " } }",
         {"broken.txt", "block \"animation\" is not known here; known are: none"}},
        {"block in animation",
         lines + "animation { index 0 filename " + walk + "\n sound { } }",
         {"broken.txt", "block \"sound\" is not known here; known are: \"event\""}},
        {"unknown key", "geometry { exportdata " + geometry + "\n colour red }", {"broken.txt", "colour"}},
        {"no file name", "geometry { crossmode linear }", {"broken.txt", "exportdata"}},
        {"no index", lines + "animation { filename " + walk + " }", {"broken.txt", "index"}},
        {"missing file", "geometry { exportdata missing.tw }", {"missing.tw"}},
        {"missing animation", lines + "animation { index 0 filename gone.tw }", {"gone.tw"}},
        {"crossmode",
         "geometry { exportdata " + geometry + " crossmode Linear }",
         {"TW2: Invalid parameter in ", "broken.txt", "soldier",
          ": \"CrossMode\" can only take values \"linear\", \"normalized\" and \"orthonormalized\"!"}},
        {"duplicate index",
         lines + "animation { index 3 filename " + walk + " } animation { index 3 filename " + walk + " }",
         {"TW2: File \"", "broken.txt\" defines animation index 3 more than once."}},
        {"missing target",
         lines + "animation { index 0 filename " + tail + " }",
         {"TW2: Animation target not found and callback not set ", "broken.txt", "soldier", ": Target name \"Tail\""}},
    };
    TW_ObjectAnimation object;
    for (const auto& [failure, broken, fragments] : failures)
    {
        SCOPED_TRACE(failure);
        const std::string name = files.getDirectory().write("broken.txt", "soldier\n{\n" + broken + "\n}\nother { }\n");
        const SurroundingsCheck surroundings;
        S_Script script(name.c_str());
        const std::string byName = support::messageOf([&] { object.construct(&script, "soldier", nullptr, false); });
        for (const std::string& fragment : fragments)
        {
            EXPECT_THAT(byName, HasSubstr(fragment));
        }
        EXPECT_EQ(support::messageOf([&] { object.construct(&script, 0, nullptr, false); }), byName);
        EXPECT_EQ(script.getDepth(), 0u);
        EXPECT_FALSE(object.isConstructed());
        EXPECT_EQ(object.getTotalMeshes(), 0u);
        EXPECT_EQ(object.getMaterialManager(), nullptr);
    }
    // The host's mesh callback comes back when a mesh cannot be built, and is taken when all can.
    class Refuser : public TW_LoadMeshCallback
    {
    public:
        bool operator()(MeshChunk&) override { throw std::runtime_error("no mesh"); }
    } refuser;
    const std::string good = files.writeScript();
    TW_ObjectAnimation other(good.c_str(), "object", nullptr, false);
    TW_ObjectAnimationMeshCallback hostCallback(&other);
    TW_Loader::setMeshCallback(&hostCallback);
    TW_ObjectAnimation::setLoadMeshCallback(&refuser);
    EXPECT_THROW(object.construct(good.c_str(), "object", nullptr, false), std::runtime_error);
    TW_ObjectAnimation::setLoadMeshCallback(nullptr);
    EXPECT_EQ(TW_Loader::getMeshCallback(), &hostCallback);
    object.construct(good.c_str(), "object", nullptr, false);
    EXPECT_EQ(TW_Loader::getMeshCallback(), nullptr);
    EXPECT_EQ(other.getTotalMeshes(), 2u);
    EXPECT_THAT(support::messageOf([&] { object.construct(good.c_str(), "soldat", nullptr, false); }),
                HasSubstr("soldat"));
    object.construct(good.c_str(), "object", nullptr, false);
    expectSoldier(object);
}

TEST(ObjectAnimationConstruction, TracksOfUnknownTargetsGoToTheHostWhoMayKeepThem)
{
    class Keeper : public TW_ObjectKeyframeAnimationCallback
    {
    public:
        ~Keeper() override
        {
            TW_ObjectAnimation::setKeyframeAnimationCallback(nullptr);
            delete m_pAnimation;
        }
        void operator()(int index, TW_KeyframeAnimation* animation) override
        {
            m_iIndex = index;
            animation->increaseObjectReferenceCount();
            m_pAnimation = animation;
        }
        int m_iIndex = -1;
        TW_KeyframeAnimation* m_pAnimation = nullptr;
    };
    Keeper keeper;
    TW_ObjectAnimation::setKeyframeAnimationCallback(&keeper);
    ObjectFiles files;
    files.addMesh("Hip");
    files.addAnimation(4, {makeTrack("hip", 8.0f), makeTrack("Hip", 1.0f)});
    files.build();
    EXPECT_EQ(keeper.m_iIndex, 4);
    ASSERT_NE(keeper.m_pAnimation, nullptr);
    EXPECT_EQ(keeper.m_pAnimation->getObjectReferenceCount(), 1);
    EXPECT_EQ(keeper.m_pAnimation->getAnimationTargetName(), "hip");
}

TEST(ObjectAnimationConstruction, HelpersOfTheGeometryFileReachTheHostOnceWhileItsMeshesAreBuilt)
{
    struct Counter : TW_HelperCallback
    {
        void operator()(const HelperChunk& helper) override { m_names += helper.name; }
        S_String m_names;
    };
    ObjectFiles files;
    files.addMesh("Hip");
    HelperChunk helper;
    helper.name = "grip";
    files.addHelper(helper);
    files.addMesh("Leg", "Hip");
    TW_ObjectAnimation object;
    Counter counter;
    TW_ObjectAnimationMeshCallback hostMeshes(&object);
    TW_Loader::setHelperCallback(&counter);
    TW_Loader::setMeshCallback(&hostMeshes);
    EXPECT_THROW(object.construct(files.writeScript("?").c_str(), "object", nullptr, false), S_Exception);
    counter.m_names.clear();
    object.construct(files.writeScript().c_str(), "object", nullptr, false);
    EXPECT_EQ(counter.m_names, "grip");
    EXPECT_EQ(object.getTotalMeshes(), 2u);
    EXPECT_EQ(TW_Loader::getHelperCallback(), &counter);
    EXPECT_EQ(TW_Loader::getMeshCallback(), nullptr);
    TW_Loader::clearAll();
}

TEST(ObjectAnimationConstruction, VisibilityTracksAreThereOnlyWhenAskedFor)
{
    ObjectFiles files;
    files.addMesh("lamp");
    KeyframeAnimationChunk track = makeTrack("lamp", 1.0f);
    track.visibilityKeys = {{0, 1.0f}, {10, -1.0f}};
    files.addAnimation(0, {track});
    const auto with = files.build("linear", true);
    const auto without = files.build("linear", false);
    ASSERT_NE(with->getAnimation(0)->m_vecKeyframeAnimations[0]->getVisibilityContainer(), nullptr);
    EXPECT_EQ(without->getAnimation(0)->m_vecKeyframeAnimations[0]->getVisibilityContainer(), nullptr);
    for (const float frame : {10.0f, 0.0f, 5.0f, 4.99f})
    {
        EXPECT_TRUE(with->updateVisibilityFrame(0, frame));
        EXPECT_EQ(with->getMesh(0)->isEnabled(), frame < 5.0f) << "exactly zero hides";
    }
    S_Script script(files.writeScript().c_str());
    const int blocks[] = {0};
    EXPECT_TRUE(TW2::TW_ObjectAnimationLODs(&script, 1, blocks, true).updateVisibilityFrame(0, 10.0f));
}

TEST(ObjectAnimationConstruction, NothingIsLeftWhateverAllocationFails)
{
    SoldierFiles files;
    MaterialListChunk materials;
    materials.materials = {support::makeSolidMaterial("red", {255, 0, 0}), support::makeSolidMaterial("blue")};
    files.addMaterials(materials);
    MeshChunk cloth = support::makeMesh("cloth", "Hip", {{4, 2}, {3, 1}});
    support::setMaterials(cloth, {"red", "blue"});
    files.addMesh(cloth);
    const std::string script = files.writeScript();
    const std::string more = files.writeAnimation("more.tw", {makeTrack("Hip", 1.0f), makeTrack("Leg", 1.0f)});

    // What stays for the whole process is there before blocks are counted.
    {
        TW_ObjectAnimation warmUp(script.c_str(), "object", nullptr, true);
    }
    support::expectNothingLeftByFailedAllocations(
        [&] { TW_ObjectAnimation object(script.c_str(), "object", nullptr, true); });
    const TW_ObjectAnimation original(script.c_str(), "object", nullptr, true);
    support::expectNothingLeftByFailedAllocations([&] { TW_ObjectAnimation copy(original); });
    support::expectNothingLeftByFailedAllocations(
        [&]
        {
            TW_ObjectAnimation copy;
            copy.construct(original, true, nullptr);
            copy.appendSingleAnimation(3, more.c_str(), false);
            copy.shareAnimation(-2, const_cast<TW_ObjectAnimation*>(&original));
            copy.loadMaterials(files.getDirectory().file("geometry.tw").c_str());
        });
}
