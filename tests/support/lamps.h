#pragma once

#include <tw2/light/light_animation_chunks.h>

namespace support
{
/// A lamp of 50 frames at 25 per second, each quantity that its kind has moving between two values of its own.
template <typename Chunk>
Chunk makeLamp(const char* name = "lamp")
{
    const auto keys = [](float first, float last) { return S_Vector<TW2::FloatKey>{{0, first}, {49, last}}; };
    Chunk chunk;
    chunk.header = {name, 25, false};
    chunk.loopToFrame = 7;
    chunk.totalFrameCount = 50;
    chunk.loopInterpolation = true;
    chunk.colorKeys = {{0, {255, 0, 0, 255}}, {49, {0, 98, 49, 255}}};
    chunk.brightnessKeys = keys(0.5f, 0.5f);
    if constexpr (requires { chunk.fallOffKeys; })
    {
        chunk.hotSpotKeys = keys(1, 2);
        chunk.fallOffKeys = keys(10, 59);
    }
    if constexpr (requires { chunk.fallOffAngleKeys; })
    {
        chunk.hotSpotAngleKeys = keys(20, 69);
        chunk.fallOffAngleKeys = keys(30, 79);
    }
    return chunk;
}
}  // namespace support
