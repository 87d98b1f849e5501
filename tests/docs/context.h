#pragma once

/// What the pieces of code on the pages refer to without saying what it is: a game of a few lines. The pieces are
/// compiled and not run; whole programs are compiled as they stand, and run.

#include <tw2/tw2.h>

#include <platform/runtime/exception.h>
#include <platform/runtime/script.h>
#include <platform/scene/camera.h>
#include <platform/scene/scene.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

// Pieces are never called, so nobody asks where these are.
extern TW2::TW_AnimationMixer mixer;
extern TW2::TW_Travel place;

namespace
{
constexpr int WALK = 1;
const int run = 3;
constexpr int RUN = 2;
constexpr int LIMP = 3;
constexpr int WAVE = 4;
constexpr int OPEN = 1;
const int idle = 1;
const int walk = 2;
float seconds = 0.0F;
float t = 0.0F;
float s = 0.5F;
float weight = 0.5F;
bool running = false;
int width = 640;
int height = 480;

P_Scene scene;
P_Context context;
P_Camera camera;
P_VirtualObject weapon;
TW2::TW_ObjectAnimation soldier;
TW2::TW_VertexAnimation character;
TW2::TW_VertexAnimation walker;
std::vector<std::unique_ptr<TW2::TW_ObjectAnimation>> crowd;
TW2::TW_ObjectAnimationState pose;
TW2::TW_ObjectAnimationState poseA;
TW2::TW_ObjectAnimationState poseB;
TW2::TW_BoneGroupHandle wholeBody;
M_Vector3Template<float> enemy;
M_Vector3Template<float> lever;

struct Level : TW2::TW_GroundCallback
{
    TW2::TW_GroundPoint operator()(const M_Vector3Template<float>& foot) override
    {
        return {foot.y, {0.0F, 1.0F, 0.0F}, true};
    }
} ground;

struct Jobs
{
    void parallelFor(std::size_t count, const std::function<void(std::size_t)>& body)
    {
        for (std::size_t i = 0; i < count; ++i)
        {
            body(i);
        }
    }
} jobs;

void glViewport(int, int, int, int) {}
void swapBuffers() {}
void draw(P_Scene&) {}
}  // namespace
