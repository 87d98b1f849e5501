#pragma once

#include "tests/support/object_files.h"

#include <platform/math/matrix4x3.h>

#include <malloc.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

namespace TW2::bench
{
/// A crowd of animated characters that share their animations: copies of one character, each playing on its own.
class Crowd
{
public:
    static constexpr unsigned int BONES = 64;
    static constexpr unsigned int FRAMES = 60;
    static constexpr int ANIMATIONS = 3;

    /// `mode` is the interpolation mode of the tracks; the cross mode is "normalized".
    explicit Crowd(std::size_t count, int mode = 0)
    {
        support::ObjectFiles files;
        for (unsigned int bone = 0; bone < BONES; ++bone)
        {
            files.addMesh(name(bone), bone == 0 ? "" : name((bone - 1) / 2),
                          M_Matrix4x3Template<float>::translation({0.0F, 0.0F, 0.1F}));
        }
        for (int animation = 0; animation < ANIMATIONS; ++animation)
        {
            std::vector<KeyframeAnimationChunk> tracks;
            for (unsigned int bone = 0; bone < BONES; ++bone)
            {
                tracks.push_back(makeTrack(bone, animation, mode));
            }
            files.addAnimation(animation, tracks);
        }
        m_objects.push_back(files.build("normalized"));
        const std::size_t before = mallinfo2().uordblks;
        while (m_objects.size() < count)
        {
            m_objects.push_back(std::make_unique<TW_ObjectAnimation>(*m_objects.front()));
        }
        m_copiedBytes = mallinfo2().uordblks - before;
    }

    [[nodiscard]] std::size_t getBoneCount() const { return m_objects.size() * BONES; }
    /// Heap of each object but the first, per bone; 0 when there is only one.
    [[nodiscard]] double getBytesPerBone() const
    {
        const std::size_t copiedBones = (m_objects.size() - 1) * BONES;
        return copiedBones ? static_cast<double>(m_copiedBytes) / static_cast<double>(copiedBones) : 0.0;
    }

    [[nodiscard]] const TW_ObjectAnimation& getObject(std::size_t i) const { return *m_objects[i]; }

    /// Calls `action(object, frame)` for every object, a third of a frame further than the last time; the objects are
    /// at different frames.
    template <typename Action>
    void step(Action&& action)
    {
        advance();
        stepShare(0, 1, action);
    }

    /// The two parts of a step: the time goes on; `action` is called for one of `shares` shares of the objects, which
    /// may be done on as many threads.
    /// @{
    void advance() { m_fFrame = m_fFrame > 10000.0F ? 0.0F : m_fFrame + 0.31F; }
    template <typename Action>
    void stepShare(std::size_t share, std::size_t shares, Action&& action) const
    {
        const std::size_t end = (share + 1) * m_objects.size() / shares;
        for (std::size_t i = share * m_objects.size() / shares; i < end; ++i)
        {
            action(*m_objects[i], m_fFrame + 1.7F * static_cast<float>(i));
        }
    }
    /// @}

private:
    static std::string name(unsigned int bone) { return "bone" + std::to_string(bone); }

    // A key every five frames: a swing about an axis of the bone's own, and a little translation.
    static KeyframeAnimationChunk makeTrack(unsigned int bone, int animation, int mode)
    {
        KeyframeAnimationChunk track;
        track.header.targetName = name(bone).c_str();
        track.header.frameRate = 30;
        track.header.looping = true;
        track.totalFrameCount = FRAMES + 1;
        track.interpolationMode = mode;
        for (unsigned int frame = 0; frame <= FRAMES; frame += 5)
        {
            MatrixKey key;
            key.frame = frame;
            const float turn = 6.2831853F * static_cast<float>(frame) / static_cast<float>(FRAMES);
            const float angle =
                0.6F * std::sin(turn + static_cast<float>(bone + 7U * static_cast<unsigned>(animation)));
            const float c = std::cos(angle);
            const float s = std::sin(angle);
            const int u = static_cast<int>(bone % 3);
            const int v = (u + 1) % 3;
            key.matrix.m[u][u] = c;
            key.matrix.m[u][v] = s;
            key.matrix.m[v][u] = -s;
            key.matrix.m[v][v] = c;
            key.matrix.setTranslation({0.01F * s, 0.0F, 0.1F});
            track.keys.push_back(key);
        }
        return track;
    }

    std::vector<std::unique_ptr<TW_ObjectAnimation>> m_objects;
    std::size_t m_copiedBytes = 0;
    float m_fFrame = 0.0F;
};
}  // namespace TW2::bench
