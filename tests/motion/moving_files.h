#pragma once

#include "tests/support/double_matrix.h"
#include "tests/support/keyframe_tracks.h"
#include "tests/support/object_files.h"

#include <platform/math/matrix4x3.h>
#include <platform/scene/virtual_object.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace support
{
using Matrix = M_Matrix4x3Template<float>;

/// A chain of bones "bone0", "bone1" and so on, a unit of length each along y, and animations of rigid random motion.
class MovingFiles : public ObjectFiles
{
public:
    explicit MovingFiles(unsigned int bones = 6) : m_uiBones(bones)
    {
        for (unsigned int i = 0; i < bones; ++i)
        {
            addMesh(name(i), i > 0 ? name(i - 1) : "", Matrix::translation({0, i > 0 ? 1.0f : 0.0f, 0}));
        }
    }
    static std::string name(unsigned int bone) { return "bone" + std::to_string(bone); }

    /// Every bone turns about an axis of its own and comes back; the root sways.
    void addMotion(int index, unsigned int frames, const std::string& more = "", bool looping = true,
                   float degrees = 40.0f)
    {
        std::vector<TW2::KeyframeAnimationChunk> tracks;
        for (unsigned int bone = 0; bone < m_uiBones; ++bone)
        {
            TW2::KeyframeAnimationChunk track = makeTrack(name(bone), 0.0f, frames, 30);
            track.header.looping = looping;
            track.interpolationMode = 2;
            track.keys.clear();
            for (unsigned int f = 0; f < frames; f += (frames - 1) / 10)
            {
                const double phase = 6.28318530717958647692 * f / (frames - 1);
                const double angle = static_cast<double>(degrees) * 0.0174532925 *
                                     std::sin(phase + 0.7 * bone + index) * (index == 0 ? 0 : 1);
                Matrix key = rotation(1.0 + index, 0.3 * bone, 1.0, angle);
                key.setTranslation({0, bone > 0 ? 1.0f : 0.1f * static_cast<float>(std::sin(phase)), 0});
                track.keys.push_back({f, key});
            }
            tracks.push_back(track);
        }
        addAnimation(index, tracks, more);
    }

private:
    unsigned int m_uiBones;
};

inline bool isSame(const std::vector<Matrix>& a, const std::vector<Matrix>& b)
{
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(Matrix)) == 0;
}

/// The largest difference of any element.
inline float getDifference(const std::vector<Matrix>& a, const std::vector<Matrix>& b)
{
    float largest = 0.0f;
    for (std::size_t i = 0; i < a.size(); ++i)
    {
        for (int e = 0; e < 12; ++e)
        {
            largest = std::max(largest, std::abs(a[i].data()[e] - b[i].data()[e]));
        }
    }
    return largest;
}
}  // namespace support
