#include "convert/fbx_tangents.h"

#include <algorithm>
#include <cmath>

namespace TW2::convert
{
namespace
{
using Key = FbxCurve::Key;

/// How steep it goes straight from one key to another.
double rise(const Key& from, const Key& to)
{
    return (to.m_dValue - from.m_dValue) / (to.m_dTime - from.m_dTime);
}

/// A bias beyond 500 percent adds to the slope itself.
double addBeyond(double bias, double sign)
{
    constexpr double most = 5.0;
    constexpr double gain = 40.0;
    const double more = std::max(std::abs(bias) / 100.0 - most, 0.0);
    return more * more * gain * sign;
}

/// The automatic slope of a key between two others.
double findAutoSlope(const Key& before, const Key& key, const Key& behind, unsigned int flags, double bias)
{
    const double arriving = rise(before, key);
    const double leaving = rise(key, behind);
    if ((flags & FbxTangents::Level) != 0 && (before.m_dValue == key.m_dValue || key.m_dValue == behind.m_dValue))
    {
        return 0.0;
    }
    double slope = rise(before, behind);
    if ((flags & FbxTangents::TimeIndependent) == 0)
    {
        const double part = (key.m_dTime - before.m_dTime) / (behind.m_dTime - before.m_dTime);
        slope = (slope + arriving * (1.0 - part) + leaving * part) / 2.0;
        constexpr double least = 0.01;
        if (std::abs(bias) > least)
        {
            constexpr double nothing = 1e-5;
            const double way = (bias > 0.0 ? leaving : arriving) - slope;
            const double sign = std::abs(way) > nothing ? way : bias;
            slope += way * std::abs(bias) / 100.0 + addBeyond(bias, std::copysign(1.0, sign));
        }
    }
    if ((flags & FbxTangents::Progressive) != 0)
    {
        // Neither handle reaches beyond the value of the key that it points to.
        const auto bound = [slope](double straight, double part)
        { return part > 0.0 ? std::max(std::copysign(1.0, slope) * straight / part, 0.0) : 0.0; };
        const double most = std::min(bound(arriving, before.m_dArrivingPart), bound(leaving, key.m_dLeavingPart));
        slope = std::clamp(slope, -most, most);
    }
    return slope;
}

/// The automatic slope of the first or the last key.
double findEndSlope(const Key& from, const Key& to, unsigned int flags, double bias)
{
    const bool level =
        (flags & FbxTangents::Progressive) != 0 || ((flags & FbxTangents::Level) != 0 && from.m_dValue == to.m_dValue);
    const double more = (flags & FbxTangents::TimeIndependent) == 0 ? addBeyond(bias, std::copysign(1.0, bias)) : 0.0;
    return level ? 0.0 : rise(from, to) + more;
}

/// Sets the slopes on both sides of a key.
class SlopeSetter
{
public:
    SlopeSetter(std::vector<Key>& keys, std::size_t index) : m_vecKeys(keys), m_uiIndex(index) {}

    void set(double before, double behind)
    {
        if (m_uiIndex > 0)
        {
            m_vecKeys[m_uiIndex - 1].m_dArriving = before;
        }
        m_vecKeys[m_uiIndex].m_dLeaving = behind;
    }

    /// From the keys around it; `biasBefore` of the side before the key.
    void setAutomatic(unsigned int flags, double biasBefore, double bias)
    {
        const bool first = !follows(m_uiIndex);
        const bool last = !follows(m_uiIndex + 1);
        const Key& key = m_vecKeys[m_uiIndex];
        if (first || last)
        {
            const double slope = !last    ? findEndSlope(key, m_vecKeys[m_uiIndex + 1], flags, bias)
                                 : !first ? findEndSlope(m_vecKeys[m_uiIndex - 1], key, flags, -biasBefore)
                                          : 0.0;
            set(slope, slope);
            return;
        }
        const Key& before = m_vecKeys[m_uiIndex - 1];
        const Key& behind = m_vecKeys[m_uiIndex + 1];
        constexpr double same = 1e-4;
        const double other = std::abs(biasBefore + bias) <= same ? bias : -biasBefore;
        set(findAutoSlope(before, key, behind, flags, other), findAutoSlope(before, key, behind, flags, bias));
    }

    /// By tension, continuity and bias (Kochanek and Bartels).
    void setByParameters(double tension, double continuity, double bias)
    {
        const bool first = !follows(m_uiIndex);
        const bool last = !follows(m_uiIndex + 1);
        const double before = first ? 0.0 : rise(m_vecKeys[m_uiIndex - 1], m_vecKeys[m_uiIndex]);
        const double behind = last ? 0.0 : rise(m_vecKeys[m_uiIndex], m_vecKeys[m_uiIndex + 1]);
        const double all = (first || last ? 1.0 : 0.5) * (1.0 - tension);
        set(all * ((1.0 + bias) * (1.0 - continuity) * before + (1.0 - bias) * (1.0 + continuity) * behind),
            all * ((1.0 + bias) * (1.0 + continuity) * before + (1.0 - bias) * (1.0 - continuity) * behind));
    }

private:
    /// Whether there is a key at this index, and one before it that is earlier.
    [[nodiscard]] bool follows(std::size_t index) const
    {
        return index > 0 && index < m_vecKeys.size() && m_vecKeys[index].m_dTime > m_vecKeys[index - 1].m_dTime;
    }

    std::vector<Key>& m_vecKeys;
    std::size_t m_uiIndex;
};
}  // namespace

void setFbxSlopes(std::vector<FbxCurve::Key>& keys, const std::vector<FbxTangents>& tangents)
{
    const auto isByParameters = [](const FbxTangents& one) { return (one.m_uiFlags & FbxTangents::Parameters) != 0; };
    for (std::size_t i = 0; i < keys.size(); ++i)
    {
        if (!isByParameters(tangents[i]))
        {
            keys[i].m_dLeaving = tangents[i].m_numbers[0];
            keys[i].m_dArriving = tangents[i].m_numbers[1];
        }
    }
    for (std::size_t i = 0; i < keys.size(); ++i)
    {
        if (keys[i].m_eKind != FbxCurve::Kind::Cubic)
        {
            continue;
        }
        const auto& [flags, numbers] = tangents[i];
        SlopeSetter slopes(keys, i);
        if (isByParameters(tangents[i]))
        {
            slopes.setByParameters(numbers[0], numbers[1], numbers[2]);
        }
        else if ((flags & FbxTangents::Auto) != 0 && (flags & FbxTangents::User) == 0)
        {
            const bool cubicBefore = i > 0 && keys[i - 1].m_eKind == FbxCurve::Kind::Cubic;
            const double before = cubicBefore && !isByParameters(tangents[i - 1]) ? tangents[i - 1].m_numbers[1] : 0.0;
            slopes.setAutomatic(flags, before, numbers[0]);
        }
    }
}
}  // namespace TW2::convert
