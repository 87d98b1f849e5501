// What playing costs per frame and per copy, through the public interface alone: so the same source is compiled against
// any revision of the library, and ./bench.sh --against runs two of them in turn. Prints a line per row: name, tab,
// value. Arguments: which rows, then a name and a script of a converted character, any number of times.

#include "character.h"

#include <tw2/keyframe/keyframe_animation.h>

#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/scene.h>
#include <platform/scene/transform_block.h>
#include <platform/scene/virtual_object.h>

#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace
{
using TW2::TW_ObjectAnimation;
using TW2::TW_VertexAnimation;
using TW2::bench::Character;
using TW2::bench::Skinned;
using TW2::bench::Style;

double processorSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

/// Nanoseconds of one call of `frame`, the best of many.
double measure(const std::function<void()>& frame)
{
    constexpr double SHORT = 2e-3;
    constexpr int BATCHES = 12;
    int calls = 1;
    for (;; calls *= 2)
    {
        const double begin = processorSeconds();
        for (int i = 0; i < calls; ++i)
        {
            frame();
        }
        if (processorSeconds() - begin > SHORT)
        {
            break;
        }
    }
    double best = std::numeric_limits<double>::max();
    for (int batch = 0; batch < BATCHES; ++batch)
    {
        const double begin = processorSeconds();
        for (int i = 0; i < calls; ++i)
        {
            frame();
        }
        best = std::min(best, (processorSeconds() - begin) / calls);
    }
    return 1e9 * best;
}

/// Rows whose name begins with this are measured; all rows whose name contains it when it is one word.
const char* s_filter = "";

template <typename Value>
void row(const std::string& name, const Value& value)
{
    const std::size_t found = name.find(s_filter);
    if (found == 0 || (found != std::string::npos && !std::strchr(s_filter, ' ')))
    {
        std::printf("%s\t%.3F\n", name.c_str(), value());
        std::fflush(stdout);
    }
}

/// How time goes on from frame to frame.
enum class Course
{
    Forward,
    Backward,
    Jumping
};

/// Times of many characters, each at a place of its own in the animation.
class Clock
{
public:
    explicit Clock(Course course) : m_course(course)
    {
        std::mt19937 random(5);
        for (float& jump : m_jumps)
        {
            jump = static_cast<float>(random() % 3000) / 10.0F;
        }
    }

    void tick()
    {
        m_fFrame += m_course == Course::Backward ? -0.51F : 0.51F;
        m_fFrame = m_fFrame > 300.0F ? m_fFrame - 300.0F : m_fFrame < 0.0F ? m_fFrame + 300.0F : m_fFrame;
        m_uStep += 7;
    }
    [[nodiscard]] float getFrame(std::size_t character) const
    {
        if (m_course == Course::Jumping)
        {
            return m_jumps[(m_uStep + character) % JUMPS];
        }
        const float frame = m_fFrame + 1.7F * static_cast<float>(character % 170);
        return frame > 300.0F ? frame - 300.0F : frame;
    }

private:
    static constexpr std::size_t JUMPS = 1021;

    Course m_course;
    float m_fFrame = 0.0F;
    std::size_t m_uStep = 0;
    float m_jumps[JUMPS];
};

/// Calls `frame(object, frame)` for every object, again and again; nanoseconds per bone.
template <typename Objects, typename Frame>
double perBone(const Objects& objects, std::size_t bones, Course course, const Frame& frame)
{
    Clock clock(course);
    const double time = measure(
        [&]
        {
            clock.tick();
            for (std::size_t i = 0; i < objects.size(); ++i)
            {
                frame(*objects[i], clock.getFrame(i));
            }
        });
    return time / static_cast<double>(objects.size() * bones);
}

/// Whether any row of a group may be measured: those groups are not even built whose prefix cannot be part of the
/// filter.
bool isWanted(const std::string& prefix)
{
    const std::string filter(s_filter);
    const std::size_t compared = std::min(filter.size(), prefix.size());
    return filter.find(' ') == std::string::npos || filter.compare(0, compared, prefix, 0, compared) == 0;
}

void playRows(const Style& style, std::size_t count, unsigned int bones)
{
    const std::string prefix = style.name + " " + std::to_string(count) + "x" + std::to_string(bones) + " ";
    if (!isWanted(prefix))
    {
        return;
    }
    const Character character(style, bones);
    const auto objects = character.makeCrowd(count);
    const auto sample = [](TW_ObjectAnimation& object, float frame) { object.animateObjectFrame(0, frame, nullptr); };
    const auto world = [](TW_ObjectAnimation& object) { object.accessMeshTransforms().updateWorldMatrices(); };
    row(prefix + "sample", [&] { return perBone(objects, bones, Course::Forward, sample); });
    row(prefix + "sample + world",
        [&]
        {
            return perBone(objects, bones, Course::Forward,
                           [&](TW_ObjectAnimation& object, float frame)
                           {
                               sample(object, frame);
                               world(object);
                           });
        });
    row(prefix + "blend two + world",
        [&]
        {
            return perBone(objects, bones, Course::Forward,
                           [&](TW_ObjectAnimation& object, float frame)
                           {
                               object.crossAnimateObjectFrame(0, frame, 0.3F, 1, frame, nullptr);
                               world(object);
                           });
        });
    row(prefix + "jumps", [&] { return perBone(objects, bones, Course::Jumping, sample); });
    row(prefix + "backwards", [&] { return perBone(objects, bones, Course::Backward, sample); });
}

void skinRows(const Style& style, std::size_t count)
{
    const std::string prefix = style.name + " " + std::to_string(count) + "x64 ";
    if (!isWanted(prefix))
    {
        return;
    }
    const Skinned skinned(style);
    const auto crowd = skinned.makeCrowd(count);
    row(prefix + "sample + bone matrices",
        [&]
        {
            return perBone(crowd, Skinned::BONES, Course::Forward,
                           [](Skinned::Character& object, float frame)
                           {
                               object.animateObjectFrame(0, frame, nullptr);
                               object.executeAlways();
                           });
        });
    P_Scene scene;
    for (const auto& character : crowd)
    {
        character->addTo(&scene);
    }
    row(prefix + "scene frame, skinned",
        [&]
        {
            Clock clock(Course::Forward);
            return measure(
                       [&]
                       {
                           clock.tick();
                           for (std::size_t i = 0; i < crowd.size(); ++i)
                           {
                               crowd[i]->animateObjectFrame(0, clock.getFrame(i), nullptr);
                           }
                           scene.executeFrame();
                       }) /
                   static_cast<double>(count * Skinned::BONES);
        });
}

/// Characters of bones that nobody sees, or of meshes of a triangle each.
void sceneRow(const Style& style, std::size_t count, bool bones)
{
    const std::string prefix = style.name + " " + std::to_string(count) + "x64 ";
    if (!isWanted(prefix))
    {
        return;
    }
    const Character character(style, 64);
    const auto objects = character.makeCrowd(count);
    P_Scene scene;
    for (const auto& object : objects)
    {
        for (unsigned int i = 0; bones && i < object->getTotalMeshes(); ++i)
        {
            object->getMesh(i)->enable(false);
        }
        object->addTo(&scene);
    }
    row(prefix + (bones ? "scene frame of bones, world" : "scene frame of meshes, world"),
        [&]
        {
            Clock clock(Course::Forward);
            return measure(
                       [&]
                       {
                           clock.tick();
                           for (std::size_t i = 0; i < objects.size(); ++i)
                           {
                               objects[i]->animateObjectFrame(0, clock.getFrame(i), nullptr);
                           }
                           scene.executeFrame();
                           for (const auto& object : objects)
                           {
                               object->accessMeshTransforms().updateWorldMatrices();
                           }
                       }) /
                   static_cast<double>(count * 64);
        });
}

/// Nanoseconds of a scene's frame before a camera, all characters blending animation `index` with the next one.
template <typename Characters>
double blendInScene(const Characters& crowd, int index)
{
    P_Context context;
    P_Camera camera;
    context.setCurrentCamera(&camera);
    P_Scene scene(&context);
    for (const auto& character : crowd)
    {
        character->addTo(&scene);
    }
    Clock clock(Course::Forward);
    const double time = measure(
        [&]
        {
            clock.tick();
            for (std::size_t i = 0; i < crowd.size(); ++i)
            {
                const float frame = clock.getFrame(i);
                crowd[i]->crossAnimateObjectFrame(index, frame, 0.3F, index + 1, frame, nullptr);
            }
            scene.executeFrame();
        });
    for (const auto& character : crowd)
    {
        character->remove();
    }
    return time;
}

void cameraRows(const Style& style, std::size_t count)
{
    const std::string prefix = style.name + " " + std::to_string(count) + "x64 ";
    if (isWanted(prefix))
    {
        row(prefix + "scene frame, blend, skinned, volumes computed",
            [&]
            {
                const Skinned skinned(style, TW2::bench::Volumes::Computed);
                return blendInScene(skinned.makeCrowd(count), 0) / static_cast<double>(count * Skinned::BONES);
            });
    }
}

/// Characters of a script as `tw2 convert` writes it (block 0 the skeleton, block 1 the skin), in their last two
/// animations.
void convertedRow(const std::string& name, const char* scriptFile)
{
    constexpr std::size_t COUNT = 500;
    row("500 " + name + ", scene frame, blend, ms",
        [scriptFile]
        {
            S_Script script(scriptFile);
            const TW_VertexAnimation first(&script, 0, &script, 1);
            std::vector<std::unique_ptr<TW_VertexAnimation>> crowd(COUNT);
            std::generate(crowd.begin(), crowd.end(), [&] { return std::make_unique<TW_VertexAnimation>(first); });
            return 1e-6 * blendInScene(crowd, first.getMaximumAnimationIndex() - 1);
        });
}

/// How many times as fast two threads play a crowd as one does.
void threadsRow(const Style& style)
{
    row("threads, two beside one",
        [&]
        {
            const Character character(style, 64);
            const auto crowd = character.makeCrowd(1000);
            const auto play = [&](std::size_t first, std::size_t end)
            {
                for (std::size_t round = 0; round < 20; ++round)
                {
                    for (std::size_t i = first; i < end; ++i)
                    {
                        crowd[i]->animateObjectFrame(0, 0.51F * static_cast<float>(round + i % 170), nullptr);
                        crowd[i]->accessMeshTransforms().updateWorldMatrices();
                    }
                }
            };
            const auto shorten = [](double& best, const auto& work)
            {
                const auto begin = std::chrono::steady_clock::now();
                work();
                best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
            };
            const std::size_t half = crowd.size() / 2;
            double one = std::numeric_limits<double>::max();
            double two = std::numeric_limits<double>::max();
            for (int i = 0; i < 20; ++i)  // in turn: others may use the machine as well
            {
                shorten(one, [&] { play(0, crowd.size()); });
                shorten(two,
                        [&]
                        {
                            std::thread other([&] { play(half, crowd.size()); });
                            play(0, half);
                            other.join();
                        });
            }
            return one / two;
        });
}

double heapBytes()
{
    return static_cast<double>(mallinfo2().uordblks);
}

void memoryRows(const Style& style)
{
    constexpr std::size_t COPIES = 100;
    const auto heapPerCopy = [](const auto& source)
    {
        const double before = heapBytes();
        const auto crowd = source.makeCrowd(COPIES);
        return (heapBytes() - before) / (1000.0 * COPIES);
    };
    row(style.name + " heap of a copy, KB", [&] { return heapPerCopy(Character(style, 64)); });
    row(style.name + " heap of a skinned copy, KB", [&] { return heapPerCopy(Skinned(style)); });
    constexpr std::size_t MANY = 10000;
    row(style.name + " 10000 copies, MB",
        [&]
        {
            const Character source(style, 64);
            const double before = heapBytes();
            const auto crowd = source.makeCrowd(MANY);
            return (heapBytes() - before) / 1e6;
        });
    row(style.name + " 10000 copies, s",
        [&]
        {
            const Character source(style, 64);
            const double begin = processorSeconds();
            const auto crowd = source.makeCrowd(MANY);
            return processorSeconds() - begin;
        });
    row(style.name + " clip of 64 x 301 keys, KB",
        [&]
        {
            const Character character(style, 64);
            const auto object = character.makeCrowd(1);
            const std::string clip = character.writeClip(style, 64);
            const double before = heapBytes();
            object.front()->appendSingleAnimation(2, clip.c_str(), false);
            return (heapBytes() - before) / 1000.0;
        });
}
}  // namespace

int main(int argc, char** argv)
{
    s_filter = argc > 1 ? argv[1] : "";
    const Style linear{"linear", "linear", 0};
    const Style rigid{"rigid", "orthonormalized", 2};
    for (const Style& style : {linear, rigid})
    {
        playRows(style, 1000, 64);
        playRows(style, 1, 64);
        playRows(style, 1000, 16);
        skinRows(style, 1000);
        skinRows(style, 1);
        for (const bool bones : {true, false})
        {
            sceneRow(style, 1000, bones);
            sceneRow(style, 1, bones);
        }
        cameraRows(style, 500);
        cameraRows(style, 1);
    }
    threadsRow(rigid);
    for (int i = 2; i + 1 < argc; i += 2)
    {
        convertedRow(argv[i], argv[i + 1]);
    }
    memoryRows(rigid);
    return 0;
}
