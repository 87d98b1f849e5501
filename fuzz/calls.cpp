#include "fuzz/calls_motion.h"
#include "fuzz/calls_pose.h"
#include "fuzz/calls_support.h"

#include <tw2/tw2.h>

#include <platform/runtime/exception.h>
#include <platform/runtime/file.h>
#include <platform/runtime/script.h>
#include <platform/scene/scene.h>
#include <platform/scene/virtual_object.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>

// Bytes as a sequence of calls: a few objects of every kind are constructed from files, from parts, from each other and
// from themselves, copied, changed, played, blended, frozen and destructed, with callbacks that load or throw and with
// allocations that fail. Judges are the sanitizers, the counters (nothing is left at the end), what every object says
// about itself, and the tracks, evaluated one by one and blended in double precision, for the pose that playing gives.

using namespace TW2;
using namespace calls;

namespace
{
class World
{
public:
    World(const Files& files, Choices& choices)
        : m_files(files),
          m_choices(choices),
          m_script(files.m_script.c_str()),
          m_callbacks(files, choices, [this] { callInside(); })
    {
    }

    void step()
    {
        m_callbacks.m_iLoadAt = m_choices.below(8) == 0 ? 1 + m_choices.below(6) : 0;
        m_callbacks.m_iThrowAt = m_choices.below(8) == 0 ? 1 + m_choices.below(6) : 0;
        m_callbacks.m_iCallAt = m_choices.below(4) == 0 ? 1 + m_choices.below(12) : 0;
        m_callbacks.m_iChange = m_choices.below(8);
        TW_ObjectAnimation::setKeyframeAnimationCallback(m_choices.flip() ? &m_callbacks : nullptr);
        if (m_choices.below(8) == 0)
        {
            S_Memory::failAllocation(1 + m_choices.below(256) * (1 + m_choices.below(4)));
        }
        try
        {
            call();
        }
        catch (const S_Exception&)
        {
        }
        catch (const std::runtime_error&)
        {
        }
        S_Memory::failAllocation(0);
        check();
    }

private:
    template <typename T, std::size_t N>
    T& pick(std::array<T, N>& all)
    {
        return all[static_cast<std::size_t>(m_choices.below(static_cast<int>(N)))];
    }
    /// Any object animation, also one that is a part; null at times.
    TW_ObjectAnimation* pickObject()
    {
        switch (m_choices.below(6))
        {
            case 0:
            case 1:
                return &pick(m_objects);
            case 2:
                return pick(m_characters).getSkeleton();
            case 3:
                return pick(m_characters).getSkin();
            case 4:
                return pick(m_levels).getPlayedObject(static_cast<unsigned int>(m_choices.below(2)));
            default:
                return pick(m_skinned).getSkeleton();
        }
    }
    TW_VertexAnimation* pickCharacter()
    {
        TW_VertexAnimationLODs& levels = pick(m_skinned);
        const int level = m_choices.below(4);
        // A level that is being built has no object yet.
        TW_VertexAnimation* const object = level < levels.getLevelCount() ? levels.getLODObject(level) : nullptr;
        return object ? object : &pick(m_characters);
    }
    TW_MaterialManager* pickManager()
    {
        TW_ObjectAnimation* const owner = m_choices.flip() ? pickObject() : nullptr;
        return owner ? owner->getMaterialManager() : nullptr;
    }
    TW_VirtualObject& pickAny()
    {
        switch (m_choices.below(4))
        {
            case 0:
                return pick(m_objects);
            case 1:
                return pick(m_characters);
            case 2:
                return pick(m_levels);
            default:
                return pick(m_skinned);
        }
    }

    void call()
    {
        const auto build = [this](const std::function<void()>& building)
        {
            m_motion.reset();  // a mixer's object keeps its bones
            building();
        };
        m_choices.callOneOf({
            [&] { build([&] { buildObject(pick(m_objects)); }); },
            [&] { build([&] { buildCharacter(pick(m_characters)); }); },
            [&] { build([&] { buildLevels(); }); },
            [&] { build([&] { copy(); }); },
            [&] { change(); },
            [&] { move(); },
            [&] { play(pickAny()); },
            [&] { play(pickAny()); },
        });
    }

    /// What a host's callback does during a load: with what is being loaded, too.
    void callInside()
    {
        m_motion.reset();
        const bool passesOn = m_choices.flip();
        try
        {
            m_choices.callOneOf({
                [&] { destructPart(); },
                [&] { pick(m_objects).destruct(); },
                [&] { pick(m_characters).destruct(); },
                [&] { m_choices.flip() ? pick(m_levels).destruct() : pick(m_skinned).destruct(); },
                [&] { executeFrame(); },
                [&] { call(); },
            });
        }
        catch (const S_Exception&)
        {
            if (passesOn)
            {
                throw;
            }
        }
    }

    void destructPart()
    {
        if (m_choices.flip())
        {
            return pickCharacter()->destruct();
        }
        if (TW_ObjectAnimation* const part = pickObject())
        {
            part->destruct();
        }
    }

    void buildObject(TW_ObjectAnimation& object)
    {
        m_choices.callOneOf({
            [&] { object.construct(&m_script, m_choices.below(4), nullptr, m_choices.flip()); },
            [&] { object.construct(m_files.m_script.c_str(), m_choices.flip() ? "skeleton" : "skin", nullptr, true); },
            [&]
            {
                if (const TW_ObjectAnimation* const source = pickObject())
                {
                    object.construct(*source, m_choices.flip(), pickManager());
                }
            },
            [&] { object.destruct(); },
        });
    }

    void buildCharacter(TW_VertexAnimation& object)
    {
        const bool visibility = m_choices.flip();
        const int skin = 1 + m_choices.below(3);  // block 3 is missing
        m_choices.callOneOf({
            [&] { object.construct(&m_script, "skeleton", "skin", visibility); },
            [&] { object.construct(&m_script, 0, &m_script, skin, visibility); },
            [&] { object.construct(*pickCharacter(), pickManager()); },
            [&] { object.construct(pickObject(), pickObject()); },
            [&] { object.construct(pickCharacter(), &m_script, skin, visibility); },
            [&] { object.construct(pickCharacter(), *pickCharacter(), pickManager()); },
            [&]
            {
                if (const TW_ObjectAnimation* const skeleton = pickObject())
                {
                    object.construct(*skeleton, &m_script, skin, visibility);
                }
            },
            [&] { object.destruct(); },
        });
    }

    void buildLevels()
    {
        static const int s_blocks[] = {1, 2, 0};
        static const float s_ranges[] = {1.0F, 10.0F, 100.0F};
        TW_ObjectAnimationLODs& levels = pick(m_levels);
        TW_VertexAnimationLODs& skinned = pick(m_skinned);
        const int count = m_choices.below(3);
        m_choices.callOneOf({
            [&] { levels.construct(&m_script, count, s_blocks, m_choices.flip() ? s_ranges : nullptr, true); },
            [&] { levels.construct(&m_script, count, s_blocks + m_choices.below(3 - count), false); },
            [&] { levels.construct(pick(m_levels)); },
            [&] { levels.destruct(); },
            [&] { skinned.construct(&m_script, 0, count, &m_script, s_blocks, m_choices.flip() ? s_ranges : nullptr); },
            [&]
            {
                if (const TW_ObjectAnimation* const skeleton = pickObject())
                {
                    skinned.construct(*skeleton, count, &m_script, s_blocks);
                }
            },
            [&] { skinned.construct(pick(m_skinned), pickManager()); },
            [&] { skinned.remapMaterials(pickManager()); },
            [&] { skinned.destruct(); },
        });
    }

    void copy()
    {
        m_choices.callOneOf({
            [&] { pick(m_objects) = pick(m_objects); },
            [&] { pick(m_characters) = pick(m_characters); },
            [&] { pick(m_levels) = pick(m_levels); },
            [&] { pick(m_skinned) = pick(m_skinned); },
            [&] { pick(m_states) = pick(m_states); },
            [&]
            {
                pick(m_states).construct(pick(m_objects));
                pick(m_states).construct(pick(m_characters));
                pick(m_states).construct(pick(m_levels));
                pick(m_states).construct(pick(m_skinned));
            },
        });
    }

    /// Some steps with the mixer of one object, which stays until something is built.
    void move()
    {
        if (!m_motion || m_choices.below(8) == 0)
        {
            m_motion.reset();
            m_motion = std::make_unique<MotionCalls>(pickAny(), m_choices);
        }
        for (int i = m_choices.below(8); i >= 0; --i)
        {
            m_motion->step();
        }
    }

    /// What an object shows beside its pose, and what it is asked.
    void show()
    {
        const int i = m_choices.below(9) - 1;
        const float a = m_choices.number();
        for (TW_ObjectAnimation& object : m_objects)
        {
            object.updateVisibilityFrame(i, a);
        }
        for (TW_VertexAnimation& object : m_characters)
        {
            object.updateVisibility(i, a);
        }
        TW_ObjectAnimationLODs& levels = pick(m_levels);
        levels.updateVisibility(i, a);
        levels.calculateLOD();
        TW_VertexAnimationLODs& skinned = pick(m_skinned);
        skinned.updateVisibilityFrame(i, a);
        skinned.calculateLOD();
        TW_VirtualObject& object = pickAny();
        object.animateTexture("flicker", a);
        object.setTextureAnimationFPS("flicker", i, a);
        object.uploadTextures();
        require(!(object.getBoundingRadius() < 0.0F), "a radius is not negative");
        require(object.isValidAnimation(i) || object.getAnimationEvents(i).empty(), "what is not there has no events");
        if (object.isValidAnimation(i))
        {
            const S_String name = object.getAnimationName(i);
            require(S_CaselessNameEqual()(object.getAnimationName(object.findAnimation(name)), name.c_str()),
                    "an animation is found by its name");
        }
    }

    void change()
    {
        TW_ObjectAnimation& object = pick(m_objects);
        if (!object.isConstructed())
        {
            return executeFrame();
        }
        const int index = m_choices.below(9) - 1;
        m_choices.callOneOf({
            [&] { object.appendAnimations(m_files.m_moves.c_str(), "moves", m_choices.flip()); },
            [&] { object.appendSingleAnimation(index, m_files.file("animation1.tw").c_str(), m_choices.flip()); },
            [&] { object.deleteAnimation(index); },
            [&] { object.deleteAnimation("Bone1", index); },
            [&] { object.shareAnimation(index, pickObject()); },
            [&] { object.remapMaterials(pickManager()); },
            [&] { object.loadMaterials(m_files.file("body.tw").c_str()); },
            [&] { pick(m_characters).remapMaterials(pickManager()); },
            [&] { pick(m_characters).loadMaterials(m_files.file("body.tw").c_str()); },
            [&]
            {
                m_motion.reset();
                addMesh(object);
            },
            [&] { insertAnimation(object, index); },
            [&]
            {
                pick(m_levels).loadMaterials(m_files.file("body.tw").c_str());
                pick(m_skinned).loadMaterials(m_files.file("body.tw").c_str());
            },
            [&] { show(); },
            [&] { executeFrame(); },
        });
    }

    /// A track of one object for another, which keeps it.
    void insertAnimation(TW_ObjectAnimation& object, int index)
    {
        const TW_ObjectAnimation* const source = pickObject();
        const TW_KeyframeAnimation* const track = source ? findTrack(*source, 0, 0) : nullptr;
        if (track && object.getTotalMeshes() > 0)
        {
            auto animation = std::make_unique<TW_KeyframeAnimation>(*track);
            if (object.insertAnimation(object.getMesh(0)->getName().c_str(), index, animation.get()))
            {
                animation.release()->decreaseObjectReferenceCount();
            }
        }
    }

    static void addMesh(TW_ObjectAnimation& object)
    {
        auto mesh = std::make_unique<P_VirtualObject>(1);
        mesh->setName("added");
        object.addMesh(mesh.get());
        mesh.release()->addTo(&object);
    }

    /// A scene around everything, for one frame.
    void executeFrame()
    {
        P_Scene scene;
        for (TW_VertexAnimation& object : m_characters)
        {
            object.addTo(&scene);
        }
        for (TW_VertexAnimationLODs& object : m_skinned)
        {
            object.addTo(&scene);
        }
        for (TW_ObjectAnimationLODs& object : m_levels)
        {
            object.addTo(&scene);
        }
        scene.executeFrame();
    }

    void play(TW_VirtualObject& object)
    {
        const int i = m_choices.below(9) - 1;
        const int j = m_choices.below(4) - 1;
        const float a = m_choices.number();
        const float b = m_choices.number();
        const float w = m_choices.number() / 8.0F;
        TW_ObjectAnimationState* const state = m_choices.below(8) == 0 ? nullptr : &pick(m_states);
        TW_BoneGroupHandle group;
        if (m_choices.flip() && object.getTotalMeshes() > 0)
        {
            const TW_BoneHandle bone(object.getMesh(0)->getName(), 0);
            group.construct(1, &bone);
            group.attach(&object);
        }
        TW_BoneGroupHandle* const g = group.isConstructed() ? &group : nullptr;
        m_choices.callOneOf({
            [&] { object.animateObject(i, a, g); },
            [&]
            {
                if (object.animateObjectFrame(i, a, g) && !g)
                {
                    comparePose(object, {{i, a, 1.0F}});
                }
            },
            [&]
            {
                if (object.crossAnimateObjectFrame(i, a, w, j, b, g) && !g)
                {
                    comparePose(object, {{i, a, w}, {j, b, 1.0F - w}});
                }
            },
            [&]
            {
                if (object.crossAnimateObjectFrame(i, a, w, j, b, 0.5F, i, b, g) && !g)
                {
                    comparePose(object, {{i, a, w}, {j, b, 0.5F}, {i, b, 0.5F - w}});
                }
            },
            [&] { object.crossAnimateObject(state, w, i, a, g); },
            [&] { object.crossAnimateObjectFrame(state, w, i, a, w, j, b, w, g); },
            [&] { object.crossAnimateObject(state, w, &pick(m_states), g); },
            [&] { object.crossAnimateObject(state, w, &pick(m_states), TW_BoneHandle("x", j), g); },
            [&] { object.freezeAnimationState(state, g); },
            [&] { object.restoreAnimationState(state); },
            [&] { pick(m_states).construct(object.getTotalMeshes()); },
            [&]
            {
                object.setAnimationFPS(i, a);
                require(std::isfinite(object.getAnimationLength(j)), "lengths are numbers");
                static_cast<void>(object.getBoneHandle("bone1"));
            },
        });
    }

    void check()
    {
        require(!TW_Loader::isLoading() && !TW_Loader::getMeshCallback() &&
                    !TW_Loader::getKeyframeAnimationCallback() && !TW_Loader::getMaterialListCallback(),
                "the loader is as it was");
        require(m_script.getDepth() == 0, "the script stands at its top level");
        require(File.getCurrentDirectory() == m_directory, "the directory is the one that it was");
        for (const TW_ObjectAnimation& object : m_objects)
        {
            require(object.isConstructed() == (object.getMaterialManager() != nullptr),
                    "a constructed object has materials");
            require(object.isConstructed() || object.getTotalMeshes() == 0, "what is not constructed has no meshes");
        }
        for (const TW_VertexAnimation& object : m_characters)
        {
            require(object.isConstructed() == (object.getSkeleton() != nullptr),
                    "a constructed character has a skeleton");
            require(object.isConstructed() == (object.getSkin() != nullptr), "a constructed character has a skin");
            require(object.getBoneMatrixCount() == static_cast<int>(object.getTotalMeshes()) ||
                        !object.getSkeleton()->isConstructed(),
                    "a matrix per bone");
        }
        for (const TW_ObjectAnimationLODs& object : m_levels)
        {
            require(object.isConstructed() == (object.getLevelCount() > 0), "constructed levels are some");
        }
        for (const TW_VertexAnimationLODs& object : m_skinned)
        {
            // A host may take the first level, which holds the skeleton, apart.
            const TW_VertexAnimation* const first = object.isConstructed() ? object.getLODObject(0) : nullptr;
            require((first && first->isConstructed()) == (object.getSkeleton() != nullptr),
                    "constructed levels have a skeleton");
        }
    }

    const Files& m_files;
    Choices& m_choices;
    S_Script m_script;
    Callbacks m_callbacks;
    S_String m_directory = File.getCurrentDirectory();
    std::array<TW_ObjectAnimation, 3> m_objects;
    std::array<TW_VertexAnimation, 3> m_characters;
    std::array<TW_ObjectAnimationLODs, 2> m_levels;
    std::array<TW_VertexAnimationLODs, 2> m_skinned;
    std::array<TW_ObjectAnimationState, 2> m_states;
    std::unique_ptr<MotionCalls> m_motion;
};

void run(const Files& files, const std::uint8_t* data, std::size_t size)
{
    Choices choices(data, size);
    {
        World world(files, choices);
        while (!choices.isAtEnd())
        {
            world.step();
        }
    }
    TW_Loader::freeCachedFile();
    deleteStaticData();
}
}  // namespace

/// Most of what the sanitizer keeps for a report of its own would be kept in vain.
extern "C" const char* __asan_default_options()
{
    return "malloc_context_size=4:quarantine_size_mb=16";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Files s_files;
    // What the loader keeps for the next file is there from the first objects on.
    static const bool s_bWarm = []
    {
        {
            const TW_VertexAnimation first(s_files.m_script.c_str(), "skeleton", "skin", true);
        }
        run(s_files, nullptr, 0);
        return true;
    }();
    static_cast<void>(s_bWarm);
    const long long live = S_Memory::getLiveCount();
    run(s_files, data, std::min<std::size_t>(size, 2000));
    require(TW_VirtualObject::getLiveCount() == 0, "no animated object is left");
    require(S_Memory::getLiveCount() == live, "no memory is left");
    return 0;
}
