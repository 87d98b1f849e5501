#include "tests/support/object_files.h"
#include "tests/support/sanitized.h"

#include <tw2/motion/animation_clock.h>

#include <platform/scene/virtual_object.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

using namespace TW2;

namespace
{
/// Everything on a line, in whole 1024ths of a frame, so that nothing is rounded: where loops and events lie when the
/// loops are laid one behind the other.
struct Line
{
    static constexpr long long s_unit = 1024;
    long long end;
    long long loopTo;

    [[nodiscard]] TW_AnimationCourse getCourse() const
    {
        return {static_cast<double>(end) / s_unit, static_cast<double>(loopTo) / s_unit, true};
    }
    [[nodiscard]] long long place(long long loop, long long frame) const
    {
        return frame + loop * (loop < 0 ? end : end - loopTo);
    }
    /// How often the line from a to b passes an event, arriving at b counted and leaving a not.
    [[nodiscard]] long long count(long long a, long long b, long long event) const
    {
        return a < b ? countUpTo(b, event) - countUpTo(a, event) : countUpTo(a - 1, event) - countUpTo(b - 1, event);
    }

private:
    /// How often an event stands at or before x, from a loop on that is earlier than all that are played.
    [[nodiscard]] long long countUpTo(long long x, long long event) const
    {
        constexpr long long earliest = 1000;
        const auto roundsOf = [&](long long round)
        { return (x - event) / round - ((x - event) % round != 0 && x < event ? 1 : 0); };
        const long long later = event >= loopTo ? std::max(0LL, roundsOf(end - loopTo)) : 0;
        const long long earlier = std::clamp(roundsOf(end) + earliest + 1, 0LL, earliest);
        return later + (event <= x ? 1 : 0) + earlier;
    }
};

std::vector<TW_AnimationEvent> makeEvents(const std::vector<double>& frames)
{
    std::vector<TW_AnimationEvent> events;
    for (const double frame : frames)
    {
        events.push_back({S_String(std::to_string(frame)), frame});
    }
    return events;
}

TW_ClockMoment walkTo(const TW_ClockStep& step)
{
    TW_ClockWalk walk(step);
    while (walk.next())
    {
    }
    return walk.getMoment();
}
}  // namespace

TEST(AnimationClock, AMillionRandomStepsDeliverEveryEventOncePerCrossing)
{
    std::mt19937 random(7);
    const int stepsPerCourse = support::isSanitized ? 2000 : 125000;
    for (const Line& line : {Line{30720, 0}, Line{30720, 12288}, Line{1000, 900}, Line{31744, 30720}})
    {
        for (const bool bothWays : {false, true})
        {
            const std::vector<long long> places = {0, line.loopTo, line.end / 3, line.end / 3, line.end - 1, line.end};
            std::vector<double> frames;
            for (const long long place : places)
            {
                frames.push_back(static_cast<double>(place) / Line::s_unit);
            }
            std::sort(frames.begin(), frames.end());
            const std::vector<TW_AnimationEvent> events = makeEvents(frames);
            TW_ClockMoment moment;
            long long position = 0;
            for (int i = 0; i < stepsPerCourse; ++i)
            {
                // Mostly short steps, many that end on an event or a seam, some over several loops.
                long long length = std::uniform_int_distribution<long long>(0, line.end / 8 + 1)(random);
                length = i % 7 == 0 ? line.end - line.loopTo : i % 11 == 0 ? length * 23 : length;
                length = bothWays && random() % 2 != 0 ? -length : length;
                length = position + length < -line.end * 20 || position + length > line.end * 20 ? -length : length;
                if (!bothWays && length < 0)
                {
                    moment = {};
                    position = 0;
                    length = -length;
                }
                const TW_ClockStep step{line.getCourse(), moment, static_cast<double>(length) / Line::s_unit, 0, false};
                std::vector<long long> heard(events.size());
                TW_EventIterator iterator(step, events);
                double before = 0.0;
                while (const TW_AnimationEvent* event = iterator.next())
                {
                    ++heard[static_cast<std::size_t>(event - events.data())];
                    ASSERT_GE(iterator.getTravelled(), before);
                    before = iterator.getTravelled();
                }
                ASSERT_LE(before, std::abs(step.m_dFrames));
                for (std::size_t e = 0; e < events.size(); ++e)
                {
                    const auto place = static_cast<long long>(events[e].m_dFrame * Line::s_unit);
                    ASSERT_EQ(heard[e], line.count(position, position + length, place))
                        << "event " << place << " from " << position << " over " << length;
                }
                moment = walkTo(step);
                position += length;
                ASSERT_EQ(line.place(moment.m_iLoop, static_cast<long long>(moment.m_dFrame * Line::s_unit)), position);
            }
        }
    }
}

TEST(AnimationClock, StepsOfAnyLengthLoseAndDoubleNoEvent)
{
    // Real times round; what must hold is that each event comes once in each loop.
    std::mt19937 random(3);
    const TW_AnimationCourse course{30.0, 0.0, true};
    const std::vector<TW_AnimationEvent> events = makeEvents({0.0, 0.1, 7.3, 12.0, 29.999999, 30.0});
    TW_ClockMoment moment;
    std::vector<std::size_t> heard;
    for (int i = 0; i < (support::isSanitized ? 10000 : 300000); ++i)
    {
        const double seconds = std::uniform_real_distribution<double>(0.0, i % 50 == 0 ? 4.0 : 0.05)(random);
        const TW_ClockStep step{course, moment, seconds * 30.0, 0, i == 0};
        TW_EventIterator iterator(step, events);
        while (const TW_AnimationEvent* event = iterator.next())
        {
            heard.push_back(static_cast<std::size_t>(event - events.data()));
        }
        moment = walkTo(step);
    }
    ASSERT_GT(moment.m_iLoop, 300);
    // 0 1 2 3 4, then over and over the end, which is the next loop's beginning: 5 0 1 2 3 4.
    for (std::size_t i = 0; i < heard.size(); ++i)
    {
        ASSERT_EQ(heard[i], i < 5 ? i : (i - 5 + 5) % 6) << i;
    }
}

TEST(AnimationClock, AClockPlaysItsAnimationWithoutASeam)
{
    support::ObjectFiles files;
    files.addMesh("arm");
    KeyframeAnimationChunk track = support::makeTrack("arm", 0.0f, 31, 30);
    track.header.looping = true;
    track.keys = {{0, M_Matrix4x3Template<float>::translation({0, 0, 0})},
                  {15, M_Matrix4x3Template<float>::translation({15, 0, 0})},
                  {30, M_Matrix4x3Template<float>::translation({0, 0, 0})}};
    files.addAnimation(0, {track}, "event { time 0.5 name top }");
    files.addAnimation(1, {support::makeTrack("arm", 30.0f, 31, 30)},
                       "event { time 1 name end } event { time 0 name go }");
    const auto object = files.build();

    TW_AnimationClock clock(*object, 0);
    for (int i = 1; i <= 1000; ++i)
    {
        clock.advance(0.01);
        ASSERT_TRUE(object->animateObjectFrame(0, clock.getFrame(), nullptr));
        const double phase = i % 100 * 0.3;
        ASSERT_NEAR(static_cast<double>(object->getMesh(0)->getMatrix().m[3][0]), std::min(phase, 30.0 - phase), 1e-4);
    }
    EXPECT_NEAR(static_cast<double>(clock.getMoment().m_iLoop) + clock.getMoment().m_dFrame / 30.0, 10.0, 1e-9);

    const auto names = [](const TW_AnimationClock& from)
    {
        std::string text;
        for (TW_EventIterator i = from.getEvents(); const TW_AnimationEvent* event = i.next();)
        {
            text += (text.empty() ? "" : " ") + std::string(event->m_strName);
        }
        return text;
    };
    TW_AnimationClock once(*object, 1);
    once.advance(0.4);
    EXPECT_EQ(names(once), "go") << "what stands where playing begins";
    once.advance(5.0);
    EXPECT_EQ(names(once), "end");
    EXPECT_TRUE(once.isFinished());
    EXPECT_EQ(once.getFrame(), 30.0f);
    once.advance(1.0);
    EXPECT_EQ(names(once), "") << "it stands";
    once.advance(-2.0);
    EXPECT_EQ(names(once), "go");
    EXPECT_TRUE(once.isFinished());
    once.seek(1.0);
    EXPECT_EQ(names(once), "") << "never by a seek";
    EXPECT_FALSE(once.isFinished());
    once.advance(std::numeric_limits<double>::infinity());
    EXPECT_EQ(once.getFrame(), 30.0f);

    TW_AnimationClock twice(*object, 0, 0.0, 2);
    twice.advance(10.0);
    EXPECT_EQ(names(twice), "top top");
    EXPECT_TRUE(twice.isFinished());
    EXPECT_LT(twice.getFrame(), 30.0f) << "at the end of the last loop, not at the beginning of another";
    EXPECT_NEAR(twice.getFrame(), 30.0f, 1e-4f);

    TW_AnimationClock none(*object, 77);
    none.advance(1.0);
    EXPECT_EQ(none.getFrame(), 0.0f);
    EXPECT_EQ(names(none), "");
}

TEST(AnimationClock, AStepOfAYearEndsAtOnceAndWhereItShould)
{
    for (const double frames : {1e12 + 7.0, -1e12 - 7.0})
    {
        for (const double loopTo : {0.0, 10.0})
        {
            const TW_ClockStep step{{30.0, loopTo, true}, {15.0, frames < 0.0 ? 3 : -3}, frames, 0, false};
            const TW_ClockMoment moment = walkTo(step);
            const double span = frames < 0.0 ? 30.0 : 30.0 - loopTo;
            const double from = frames < 0.0 ? 15.0 + 3 * (30.0 - loopTo) : 15.0 - 3 * 30.0;
            EXPECT_DOUBLE_EQ(moment.m_dFrame + static_cast<double>(moment.m_iLoop) * span, from + frames) << frames;
            EXPECT_GE(moment.m_dFrame, moment.m_iLoop > 0 ? loopTo : 0.0);
            EXPECT_LE(moment.m_dFrame, 30.0);
        }
    }
    for (const double frames : {1e12, 1e30, 1e300})
    {
        for (const double sign : {1.0, -1.0})
        {
            const auto walk = [&](long long from, long long loops) {
                return walkTo({{30.0, 10.0, true}, {15.0, from}, sign * frames, loops, false});
            };
            const TW_ClockMoment moment = walk(sign > 0.0 ? 9'000'000'000'000'000 : -9'000'000'000'000'000, 0);
            EXPECT_NEAR(static_cast<double>(moment.m_iLoop), sign * 9e15, 2e6) << "rounds are counted no further";
            EXPECT_GE(moment.m_dFrame, 0.0);
            EXPECT_LE(moment.m_dFrame, 30.0);
            const long long most = std::numeric_limits<int>::max();
            const TW_ClockMoment last = sign > 0.0 ? TW_ClockMoment{30.0, most - 1} : TW_ClockMoment{0.0, -most};
            EXPECT_EQ(walk(0, most), last) << "so many rounds, and no more, of a step of " << sign * frames;
        }
    }
}
