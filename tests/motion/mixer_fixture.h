#pragma once

#include "tests/motion/moving_files.h"
#include "tests/support/expectations.h"

#include <tw2/motion/animation_mixer.h>
#include <tw2/object/object_animation.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace support
{
using namespace TW2;

/// Animations 0 rest, 1 walk (1 s, steps at 0.25 s and 0.75 s), 2 run (0.667 s, the same steps), 3 wave (once, 1 s), 4
/// hold (twice the turns of walk), 5 spin (a quarter turn in 1 s).
struct MixerFixture : testing::Test
{
    MixerFixture()
    {
        m_files.addMotion(0, 11, "name rest", false);
        const std::string travel = m_files.writeAnimation("travel.tw", {makeTravel(31, 1.5f)});
        const std::string fast = m_files.writeAnimation("fast.tw", {makeTravel(21, 3.0f)});
        m_files.addMotion(1, 31, "name walk rootmotion \"" + travel + "\"" + makeSteps(0.25) + makeSteps(0.75));
        m_files.addMotion(2, 21, "name run rootmotion \"" + fast + "\"" + makeSteps(1.0 / 6.0) + makeSteps(0.5));
        m_files.addMotion(3, 31, "name wave event { time 0.9 name waved }", false);
        m_files.addMotion(4, 31, "name hold", true, 80.0f);
        KeyframeAnimationChunk quarter = makeTravel(31, 0.0f);
        quarter.keys.back().matrix = rotation(0, 1, 0, 1.57079633);
        m_files.addMotion(5, 31, "name spin rootmotion \"" + m_files.writeAnimation("spin.tw", {quarter}) + "\"",
                          false);
        m_object = m_files.build("orthonormalized");
        m_object->setName("guard");
    }
    static KeyframeAnimationChunk makeTravel(unsigned int frames, float distance)
    {
        KeyframeAnimationChunk track = makeTrack("travel", 0.0f, frames, 30);
        track.keys.back().matrix = Matrix::translation({0, 0, distance});
        return track;
    }
    static std::string makeSteps(double time) { return " event { time " + std::to_string(time) + " name step }"; }

    /// The pose of an operation on a copy of the object.
    template <typename Animate>
    std::vector<Matrix> poseOf(const Animate& animate)
    {
        TW_ObjectAnimation other(*m_object);
        animate(other);
        return takePose(other);
    }

    MovingFiles m_files;
    std::unique_ptr<TW_ObjectAnimation> m_object;
};
}  // namespace support
