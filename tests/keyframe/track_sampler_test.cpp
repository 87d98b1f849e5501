#include "src/keyframe/track_sampler.h"

#include "tests/support/keyframe_tracks.h"

#include <tw2/keyframe/keyframe_animation.h>

#include <platform/runtime/allocator.h>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>
#include <vector>

using TW2::TrackWrite;
using TW2::TW_KeyframeAnimation;
using Matrix = M_Matrix4x3Template<float>;

namespace
{
// Animations of all kinds, with gaps and repetitions.
struct Crowd
{
    std::vector<std::unique_ptr<TW_KeyframeAnimation>> owned;
    std::vector<const TW_KeyframeAnimation*> tracks;

    Crowd(std::mt19937& random, std::size_t count)
    {
        for (std::size_t i = 0; i < count; ++i)
        {
            const auto pick = [&random](unsigned int n) { return static_cast<unsigned int>(random() % n); };
            support::TrackShape shape;
            shape.frames = i % 3 == 0 ? 20 + pick(30) : 40;
            shape.keys = 1 + pick(20);
            shape.looping = pick(4) != 0;
            shape.loopInterpolation = pick(4) == 0;
            shape.loopToFrame = pick(15);
            shape.interpolationMode = static_cast<int>(pick(3));
            shape.scaled = pick(8) == 0;
            shape.keepScale = pick(8) == 0;
            owned.push_back(std::make_unique<TW_KeyframeAnimation>());
            if (pick(16) != 0)
            {
                owned.back()->construct(support::makeTrack(random, shape), false);
            }
            tracks.push_back(pick(8) == 0 ? nullptr : owned[pick(static_cast<unsigned int>(owned.size()))].get());
        }
    }
};

// What the sampler does, in the plainest way.
void sampleOneByOne(const TW2::TrackBatch& batch, float frame, TrackWrite write, float weight)
{
    for (std::size_t i = 0; i < batch.m_uiCount; ++i)
    {
        const std::size_t place = batch.m_puiPlaces ? batch.m_puiPlaces[i] : i;
        if (!batch.m_ppTracks[place])
        {
            continue;
        }
        Matrix sampled;
        batch.m_piHints[place] =
            batch.m_ppTracks[place]->animateFrameWithLastFrame(sampled, frame, batch.m_piHints[place]);
        for (std::size_t e = 0; e < 12; ++e)
        {
            const float value = sampled.data()[e];
            float& current = batch.m_pMatrices[place].data()[e];
            switch (write)
            {
                case TrackWrite::Replace:
                    current = value;
                    break;
                case TrackWrite::Scale:
                    current = value * weight;
                    break;
                case TrackWrite::Add:
                    current = value * weight + current;
                    break;
                case TrackWrite::Blend:
                    current = current + (value - current) * weight;
                    break;
            }
        }
    }
}
}  // namespace

TEST(TrackSampler, ManyTracksAtOnceGiveTheBitsOfOneByOne)
{
    std::mt19937 random(21);
    for (int round = 0; round < 300; ++round)
    {
        const std::size_t count = random() % 40;
        const Crowd crowd(random, count);
        std::vector<Matrix> matrices(count, support::rotation(1, 2, 3, 1.0));
        std::vector<int> hints(count);
        for (int& hint : hints)
        {
            hint = random() % 4 == 0 ? static_cast<int>(random()) : static_cast<int>(random() % 10);
        }
        std::vector<Matrix> expected = matrices;
        std::vector<int> expectedHints = hints;
        std::vector<unsigned int> places;
        for (unsigned int place = 0; place < count; ++place)
        {
            if (random() % 3 != 0)
            {
                places.push_back(place);
            }
        }
        for (int step = 0; step < 20; ++step)
        {
            const bool some = step % 2 == 1;
            const auto write = static_cast<TrackWrite>(random() % 4);
            const float frame =
                step < 10 ? 0.5F * static_cast<float>(step) : static_cast<float>(random() % 1000) / 8.0F - 40.0F;
            const float weight = random() % 4 == 0 ? 1.0F : static_cast<float>(random() % 100) / 100.0F;
            const TW2::TrackBatch batch{crowd.tracks.data(), hints.data(), matrices.data(),
                                        some ? places.size() : count, some ? places.data() : nullptr};
            TW2::TrackBatch plain = batch;
            plain.m_piHints = expectedHints.data();
            plain.m_pMatrices = expected.data();
            const long long allocations = S_Memory::sm_iNewCount;
            TW2::sampleTracks(batch, frame, write, weight);
            ASSERT_EQ(S_Memory::sm_iNewCount, allocations);
            sampleOneByOne(plain, frame, write, weight);
            ASSERT_EQ(hints, expectedHints);
            ASSERT_TRUE(count == 0 || std::memcmp(matrices.data(), expected.data(), count * sizeof(Matrix)) == 0)
                << "round " << round << ", step " << step;
        }
    }
}
