#include "convert/collada_curve.h"

#include "convert/bezier.h"
#include "convert/key_search.h"

#include <algorithm>

namespace TW2::convert
{
std::size_t ColladaCurve::findKey(double seconds) const
{
    return std::max<std::size_t>(findKeyBehind(m_vecTimes, seconds), 1) - 1;
}

ColladaCurve::Handle ColladaCurve::getHandle(const std::vector<double>& list, std::size_t key, std::size_t number,
                                             std::size_t from, double usual) const
{
    const std::size_t index = key * m_uiStride + number;
    if (list.size() < 2 * m_vecValues.size())
    {
        return {usual, list[index]};
    }
    const double span = m_vecTimes[from + 1] - m_vecTimes[from];
    return {std::clamp((list[2 * index] - m_vecTimes[from]) / span, 0.0, 1.0), list[2 * index + 1]};
}

double ColladaCurve::at(double seconds, std::size_t number) const
{
    const std::size_t key = findKey(seconds);
    const double from = m_vecValues[key * m_uiStride + number];
    if (seconds <= m_vecTimes.front() || key + 1 >= m_vecTimes.size())
    {
        return from;
    }
    const double to = m_vecValues[(key + 1) * m_uiStride + number];
    const double part = (seconds - m_vecTimes[key]) / (m_vecTimes[key + 1] - m_vecTimes[key]);
    const Kind kind = m_vecKinds[key];
    if (kind == Kind::Step)
    {
        return from;
    }
    constexpr double third = 1.0 / 3.0;
    const bool handles = m_vecLeaving.size() >= m_vecValues.size() && m_vecArriving.size() >= m_vecValues.size();
    if (kind == Kind::Linear || !handles)
    {
        return from + (to - from) * part;
    }
    Handle leaving = getHandle(m_vecLeaving, key, number, key, third);
    Handle arriving = getHandle(m_vecArriving, key + 1, number, key, 1.0 - third);
    if (kind == Kind::Hermite)
    {
        leaving = {third, from + leaving.m_dValue * third};
        arriving = {1.0 - third, to - arriving.m_dValue * third};
    }
    return blendBezier({0.0, from}, {leaving.m_dTime, leaving.m_dValue}, {arriving.m_dTime, arriving.m_dValue},
                       {1.0, to}, part);
}
}  // namespace TW2::convert
