#include "tests/motion/moving_files.h"

#include <tw2/motion/animation_mixer.h>
#include <tw2/object/object_animation.h>

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

using namespace TW2;
using support::Matrix;

namespace
{
Matrix scaled(const Matrix& m, float x, float y, float z)
{
    Matrix result = m;
    result.setRow(0, m.getRow(0) * x);
    result.setRow(1, m.getRow(1) * y);
    result.setRow(2, m.getRow(2) * z);
    return result;
}

KeyframeAnimationChunk makeHeld(const Matrix& first, const Matrix& held, int mode, bool keepScale)
{
    KeyframeAnimationChunk track = support::makeTrack("bone", 0.0f, 11, 10);
    track.interpolationMode = mode;
    track.keepScale = keepScale;
    track.keys = {{0, first}, {10, held}};
    return track;
}

/// Animation 1 holds `pose`, animation 2 goes from `from` to `to`.
std::unique_ptr<TW_ObjectAnimation> build(const Matrix& pose, const Matrix& from, const Matrix& to, int mode,
                                          bool keepScale)
{
    support::ObjectFiles files;
    files.addMesh("bone");
    files.addAnimation(0, {makeHeld({}, {}, mode, keepScale)}, "name rest");
    files.addAnimation(1, {makeHeld(pose, pose, mode, keepScale)}, "name pose");
    files.addAnimation(2, {makeHeld(from, to, mode, keepScale)}, "name added");
    return files.build("linear");
}
}  // namespace

TEST(AdditiveScale, RowsTakeTheRatioOfTheirLengthsByWeightWhateverTheTrackIs)
{
    const Matrix turn = support::rotation(0, 0, 1, 0.8);
    struct Case
    {
        const char* m_pName;
        Matrix m_from;
        Matrix m_to;
        int m_iMode;
        bool m_bKeepScale;
        float m_fRatio[3];
    };
    for (const Case& c :
         {Case{"general", scaled({}, 2, 1, 1), scaled(turn, 3, 0.5f, 1), 0, false, {1.5f, 0.5f, 1.0f}},
          Case{"keeps its scale", scaled({}, 2, 1, 1), scaled(turn, 3, 0.5f, 1), 2, true, {1.5f, 0.5f, 1.0f}},
          Case{"rigid", {}, turn, 2, false, {1.0f, 1.0f, 1.0f}}})
    {
        Matrix pose = support::rotation(1, 0, 0, 0.4);
        pose = c.m_iMode == 0 || c.m_bKeepScale ? scaled(pose, 1.2f, 1.2f, 1.2f) : pose;
        pose.setTranslation({1, 2, 3});
        const auto object = build(pose, c.m_from, c.m_to, c.m_iMode, c.m_bKeepScale);
        for (const float weight : {0.0f, 0.25f, 1.0f})
        {
            TW_AnimationMixer mixer(*object);
            mixer.play("pose");
            const int layer = mixer.addLayer({.additive = true});
            mixer.play("added", {.layer = layer, .weight = weight});
            mixer.update(1.0);
            const Matrix& played = object->getMesh(0)->getMatrix();
            // The turn comes first, in the bone's own axes, and then the pose.
            const Matrix part = support::rotation(0, 0, 1, 0.8 * static_cast<double>(weight));
            for (int row = 0; row < 3; ++row)
            {
                const float base = pose.getRow(row).length();
                const auto direction = pose.getRow(0) * (part.m[row][0] / pose.getRow(0).length()) +
                                       pose.getRow(1) * (part.m[row][1] / pose.getRow(1).length()) +
                                       pose.getRow(2) * (part.m[row][2] / pose.getRow(2).length());
                const float length = base * (1.0f + (c.m_fRatio[row] - 1.0f) * weight);
                EXPECT_LT((played.getRow(row) - direction * length).length(), 2e-5f)
                    << c.m_pName << " weight " << weight << " row " << row;
            }
            EXPECT_LT((played.getTranslation() - pose.getTranslation()).length(), 1e-6f) << c.m_pName;
        }
    }
}

TEST(AdditiveScale, WhatHasNoLengthAtFirstTakesNone)
{
    const Matrix flat = scaled({}, 0, 1, 1);
    const auto object = build({}, flat, scaled({}, 4, 1, 1), 0, false);
    TW_AnimationMixer mixer(*object);
    mixer.play("pose");
    mixer.play("added", {.layer = mixer.addLayer({.additive = true})});
    mixer.update(1.0);
    EXPECT_TRUE(support::isFinite(object->getMesh(0)->getMatrix()));
    EXPECT_NEAR(object->getMesh(0)->getMatrix().getRow(0).length(), 1.0f, 1e-5f);
}
