#include "fuzz/seeds/seeds.h"
#include "tests/support/keyframe_tracks.h"

#include <random>

namespace
{
const fuzz::SeedSource s_keyframeAnimation(
    "keyframe_animation",
    [](fuzz::SeedFolder& seeds)
    {
        std::mt19937 random(1);
        const auto add = [&seeds](const char* name, const TW2::KeyframeAnimationChunk& chunk, unsigned int version)
        {
            S_MemoryFileWriter writer;
            support::writeTrack(writer, chunk, version);
            seeds.add(name, writer.getBytes());
        };
        add("oldest", support::makeTrack(random, {.frames = 10, .keys = 3}), 0);
        add("compact", support::makeTrack(random, {.frames = 10, .keys = 3, .looping = true, .visibilityKeys = 2}), 5);
        add("loop_frame",
            support::makeTrack(random, {.frames = 10,
                                        .keys = 3,
                                        .looping = true,
                                        .loopInterpolation = true,
                                        .loopToFrame = 3,
                                        .interpolationMode = 1}),
            5);
        add("scaled", support::makeTrack(random, {.frames = 10, .keys = 3, .interpolationMode = 2, .scaled = true}), 4);
        add("keep_scale", support::makeTrack(random, {.frames = 10, .keys = 3, .scaled = true, .keepScale = true}), 5);
        add("no_keys", support::makeTrack(random, {.frames = 2, .keys = 0}), 3);
    });
}  // namespace
