#include "motion/mixer_parts.h"

#include <tw2/core/exceptions.h>
#include <tw2/motion/animation_mixer.h>

#include <platform/bit_cast.h>
#include <platform/runtime/hash_map.h>
#include <platform/runtime/str.h>

#include <cmath>
#include <cstdint>

// The state of a mixer as bytes: whole numbers and doubles of eight bytes each, the lowest first.

namespace TW2
{
namespace
{
constexpr std::uint64_t stateMark = 0x3265746174537754;  // "TwState2"
constexpr std::size_t headerNumbers = 5;
constexpr std::size_t playNumbers = 15;
constexpr long long mostLoops = 10'000'000'000'000'000;  // a clock counts fewer

class Writer
{
public:
    explicit Writer(S_Bytes& bytes) : m_bytes(bytes) { m_bytes.clear(); }
    void put(std::uint64_t value)
    {
        for (int shift = 0; shift < 64; shift += 8)
        {
            m_bytes.push_back(static_cast<unsigned char>(value >> shift));
        }
    }
    void put(double value) { put(S_bitCast<std::uint64_t>(value)); }
    void put(long long value) { put(static_cast<std::uint64_t>(value)); }
    void put(int value) { put(static_cast<long long>(value)); }

private:
    S_Bytes& m_bytes;
};

class Reader
{
public:
    explicit Reader(const S_Bytes& bytes) noexcept : m_bytes(bytes) {}
    std::uint64_t getUnsigned() noexcept
    {
        std::uint64_t value = 0;
        for (int shift = 0; shift < 64; shift += 8)
        {
            value |= std::uint64_t{m_bytes[m_uiNext++]} << shift;
        }
        return value;
    }
    long long getWhole() noexcept { return static_cast<long long>(getUnsigned()); }
    double getDouble() noexcept { return S_bitCast<double>(getUnsigned()); }

private:
    const S_Bytes& m_bytes;
    std::size_t m_uiNext = 0;
};

// What an animation is known by on another machine: its name, whatever the case, and the frame that it ends at.
std::uint64_t identify(const TW_VirtualObject& object, int animation)
{
    const auto name = static_cast<std::uint32_t>(S_CaselessNameHash()(object.getAnimationName(animation)));
    const auto end = static_cast<std::uint32_t>(object.getAnimationCourse(animation).m_dEndFrame);
    return std::uint64_t{name} << 32 | end;
}

enum PlayFlag : int
{
    FLAG_LEAVING = 1,
    FLAG_FRESH = 2,
    FLAG_FINISHED = 4
};
}  // namespace

void TW_AnimationMixer::saveState(S_Bytes& state) const
{
    Writer out(state);
    out.put(stateMark);
    out.put(static_cast<std::uint64_t>(m_vecLayers.size()));
    out.put(static_cast<std::uint64_t>(m_vecMasks.size()));
    out.put(static_cast<std::uint64_t>(m_vecPlays.size()));
    out.put(std::uint64_t{m_uiNextId});
    for (const Layer& layer : m_vecLayers)
    {
        out.put(layer.m_dWeight);
    }
    for (const Play& play : m_vecPlays)
    {
        out.put(std::uint64_t{play.m_uiId});
        out.put(play.m_iAnimation);
        out.put(identify(*m_pObject, play.m_iAnimation));
        out.put(play.m_iLayer);
        out.put(play.m_iMask);
        out.put(play.m_iSync);
        out.put(play.m_iLoops);
        out.put(play.m_moment.m_dFrame);
        out.put(play.m_moment.m_iLoop);
        out.put(play.m_dSpeed);
        out.put(play.m_dWeight);
        out.put(play.m_dTarget);
        out.put(play.m_dFadeLeft);
        out.put(play.m_dFadeOut);
        out.put((play.m_bLeaving ? FLAG_LEAVING : 0) | (play.m_bFresh ? FLAG_FRESH : 0) |
                (play.m_bFinished ? FLAG_FINISHED : 0));
    }
}

void TW_AnimationMixer::restoreState(const S_Bytes& state)
{
    const auto fail = [this](const char* expected)
    { throw TW_Exception_InvalidMotion(m_pObject->getName().c_str(), S_STR("mixer state: expected %s", expected)); };
    constexpr std::size_t number = sizeof(std::uint64_t);
    Reader in(state);
    if (state.size() < headerNumbers * number || in.getUnsigned() != stateMark)
    {
        fail("bytes that saveState wrote");
    }
    const std::uint64_t layers = in.getUnsigned();
    const std::uint64_t masks = in.getUnsigned();
    const std::uint64_t plays = in.getUnsigned();
    const auto nextId = static_cast<PlayId>(in.getUnsigned());
    if (layers != m_vecLayers.size() || masks != m_vecMasks.size())
    {
        fail(S_STR("%zu layers and %zu masks, found %llu and %llu", m_vecLayers.size(), m_vecMasks.size(),
                   static_cast<unsigned long long>(layers), static_cast<unsigned long long>(masks)));
    }
    if (plays > m_vecPlays.capacity())
    {
        fail(S_STR("at most %zu animations that play, found %llu", m_vecPlays.capacity(),
                   static_cast<unsigned long long>(plays)));
    }
    if (state.size() != (headerNumbers + layers + plays * playNumbers) * number)
    {
        fail(S_STR("%zu bytes, found %zu", (headerNumbers + layers + plays * playNumbers) * number, state.size()));
    }
    const auto readWeight = [&fail](Reader& from)
    {
        const double weight = from.getDouble();
        if (!(weight >= 0.0 && weight <= 1.0))
        {
            fail(S_STR("weights of layers from 0 to 1, found %g", weight));
        }
        return weight;
    };
    const auto readPlay = [&](Reader& from, std::uint64_t i)
    {
        Play play;
        play.m_uiId = static_cast<PlayId>(from.getUnsigned());
        play.m_iAnimation = static_cast<int>(from.getWhole());
        const std::uint64_t identity = from.getUnsigned();
        const long long layer = from.getWhole();
        const long long mask = from.getWhole();
        play.m_iSync = static_cast<int>(from.getWhole());
        play.m_iLoops = static_cast<int>(from.getWhole());
        play.m_moment.m_dFrame = from.getDouble();
        play.m_moment.m_iLoop = from.getWhole();
        play.m_dSpeed = from.getDouble();
        play.m_dWeight = from.getDouble();
        play.m_dTarget = from.getDouble();
        play.m_dFadeLeft = from.getDouble();
        play.m_dFadeOut = from.getDouble();
        const auto flags = static_cast<int>(from.getUnsigned());
        play.m_bLeaving = (flags & FLAG_LEAVING) != 0;
        play.m_bFresh = (flags & FLAG_FRESH) != 0;
        play.m_bFinished = (flags & FLAG_FINISHED) != 0;
        look(play);
        const TW_ObjectAnimation* const first = m_pObject->getPlayedObject(0);
        const bool known =
            first && first->getAnimation(play.m_iAnimation) && identity == identify(*m_pObject, play.m_iAnimation);
        const bool inside = play.m_moment.m_dFrame >= 0.0 && play.m_moment.m_dFrame <= play.m_course.m_dEndFrame;
        const bool counted = play.m_moment.m_iLoop >= -mostLoops && play.m_moment.m_iLoop <= mostLoops;
        const auto isWeight = [](double weight) { return weight >= 0.0 && weight <= heaviestWeight; };
        const bool weighted = isWeight(play.m_dWeight) && isWeight(play.m_dTarget) && play.m_dFadeLeft >= 0.0 &&
                              std::isfinite(play.m_dSpeed);
        if (!known || !inside || !counted || !weighted || layer < 0 || layer >= static_cast<long long>(layers) ||
            mask < -1 || mask >= static_cast<long long>(masks))
        {
            fail(
                S_STR("animations, layers, masks and frames that the object has; "
                      "entry %llu is animation %d at frame %g",
                      static_cast<unsigned long long>(i), play.m_iAnimation, play.m_moment.m_dFrame));
        }
        play.m_iLayer = static_cast<int>(layer);
        play.m_iMask = static_cast<int>(mask);
        return play;
    };
    // Once to see that all can be taken, then to take it: so nothing has to be kept aside.
    Reader again = in;
    for (std::uint64_t i = 0; i < layers; ++i)
    {
        (void)readWeight(in);
    }
    for (std::uint64_t i = 0; i < plays; ++i)
    {
        (void)readPlay(in, i);
    }
    for (Layer& layer : m_vecLayers)
    {
        layer.m_dWeight = readWeight(again);
    }
    m_vecPlays.clear();
    for (std::uint64_t i = 0; i < plays; ++i)
    {
        m_vecPlays.push_back(readPlay(again, i));
    }
    m_uiNextId = nextId;
    m_travel = {};
}
}  // namespace TW2
