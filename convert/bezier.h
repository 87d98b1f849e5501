#pragma once

namespace TW2::convert
{
/// A control point of a curve in time and value.
struct BezierPoint
{
    double m_dTime;
    double m_dValue;
};

/// A point `s` of the way along a cubic with four control numbers.
[[nodiscard]] constexpr double bezier(double s, double a, double b, double c, double d)
{
    const double r = 1.0 - s;
    return r * r * r * a + 3.0 * r * r * s * b + 3.0 * r * s * s * c + s * s * s * d;
}

/// How fast it changes there.
[[nodiscard]] constexpr double bezierSlope(double s, double a, double b, double c, double d)
{
    const double r = 1.0 - s;
    return 3.0 * (r * r * (b - a) + 2.0 * r * s * (c - b) + s * s * (d - c));
}

/// The value at a time from `a`'s to `d`'s of a cubic whose control points' times do not fall: first the point of the
/// cubic that lies at this time, by tangents or, where these lead astray, by halving, then its value.
[[nodiscard]] inline double blendBezier(BezierPoint a, BezierPoint b, BezierPoint c, BezierPoint d, double time)
{
    const double span = d.m_dTime - a.m_dTime;
    double low = 0.0;
    double high = 1.0;
    double s = span > 0.0 ? (time - a.m_dTime) / span : 0.0;
    constexpr int mostSteps = 60;
    constexpr double nearEnough = 1e-15;
    for (int i = 0; i < mostSteps; ++i)
    {
        const double off = bezier(s, a.m_dTime, b.m_dTime, c.m_dTime, d.m_dTime) - time;
        if (off == 0.0)
        {
            break;
        }
        (off < 0.0 ? low : high) = s;
        const double slope = bezierSlope(s, a.m_dTime, b.m_dTime, c.m_dTime, d.m_dTime);
        const double next = s - off / slope;
        const double better = slope > 0.0 && next > low && next < high ? next : (low + high) / 2.0;
        const double step = better - s;
        s = better;
        if (step < nearEnough && step > -nearEnough)
        {
            break;
        }
    }
    return bezier(s, a.m_dValue, b.m_dValue, c.m_dValue, d.m_dValue);
}
}  // namespace TW2::convert
