#pragma once

#include "tests/support/object_files.h"

#include <tw2/object/object_animation.h>

#include <gtest/gtest.h>

namespace support
{
/// Hip and leg, with the animations 3 and -2.
struct SoldierFiles : ObjectFiles
{
    SoldierFiles()
    {
        addMesh("Hip");
        addMesh("Leg", "Hip", M_Matrix4x3Template<float>::translation({0, 0, -1}));
        addAnimation(3, {makeTrack("Hip", 10.0f), makeTrack("Leg", 5.0f, 21)});
        addAnimation(-2, {makeTrack("Leg", 2.0f)});
    }
};

inline void expectSoldier(TW2::TW_ObjectAnimation& object)
{
    ASSERT_TRUE(object.isConstructed());
    ASSERT_EQ(object.getTotalMeshes(), 2u);
    EXPECT_EQ(object.getMesh(0)->getName(), "Hip");
    EXPECT_EQ(object.getMesh(1)->getParent(), object.getMesh(0));
    EXPECT_EQ(object.getMesh(2), nullptr);
    EXPECT_EQ(object.getTotalAnimations(), 2u);
    EXPECT_EQ(object.getMaximumAnimationIndex(), 3);
    EXPECT_TRUE(object.isValidAnimation(-2));
    EXPECT_FALSE(object.isValidAnimation(0));
    EXPECT_EQ(object.getAnimationFrames(3), 21u);
    ASSERT_TRUE(object.animateObject(3, 0.5f, nullptr));
    EXPECT_FLOAT_EQ(object.getMesh(0)->getMatrix().m[3][0], 5.0f);
    EXPECT_FLOAT_EQ(object.getMesh(1)->getObjectToWorldMatrix().m[3][0], 5.0f + 1.25f);
}
}  // namespace support
