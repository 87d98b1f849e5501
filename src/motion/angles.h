#pragma once

#include <cmath>

// Angle functions of + - * / and square roots alone. Those of the standard library differ from one to the next in their
// last bits; what a game records on one machine must play the same on another.

namespace TW2
{
constexpr double pi = 3.14159265358979323846;

/// Sine and cosine of `radians`; within 1e-15 up to some thousand turns.
inline void getSineAndCosine(double radians, double& sine, double& cosine) noexcept
{
    const double quarters = std::nearbyint(radians * (2.0 / pi));
    // Half pi in two parts: the product with the first is exact.
    const double r = (radians - quarters * 1.57079632673412561417) - quarters * 6.07710050650619224932e-11;
    const double r2 = r * r;
    double s = 0.0;
    double c = 0.0;
    for (int n = 18; n > 0; n -= 2)  // the series, innermost term first
    {
        c = (1.0 + c) * (-r2 / (n * (n - 1)));
        s = (1.0 + s) * (-r2 / (n * (n + 1)));
    }
    c += 1.0;
    s = (1.0 + s) * r;
    const double turns = quarters - 4.0 * std::floor(quarters / 4.0);
    sine = turns == 0.0 ? s : turns == 1.0 ? c : turns == 2.0 ? -s : -c;
    cosine = turns == 0.0 ? c : turns == 1.0 ? -s : turns == 2.0 ? -c : s;
}

/// The angle of the point (x, y) in radians, from -pi to pi; 0 for the origin.
inline double getAngle(double y, double x) noexcept
{
    const double ax = std::abs(x);
    const double ay = std::abs(y);
    if (ax == 0.0 && ay == 0.0)
    {
        return 0.0;
    }
    double t = ay < ax ? ay / ax : ax / ay;
    for (int halving = 0; halving < 2; ++halving)
    {
        t = t / (1.0 + std::sqrt(1.0 + t * t));
    }
    const double t2 = t * t;
    double sum = 0.0;
    for (int n = 25; n > 1; n -= 2)
    {
        sum = (1.0 / n - sum) * t2;
    }
    double angle = 4.0 * t * (1.0 - sum);
    angle = ay < ax ? angle : pi / 2.0 - angle;
    angle = x < 0.0 ? pi - angle : angle;
    return y < 0.0 ? -angle : angle;
}

/// The angle from 0 to pi whose cosine is `cosine`, which is taken as from -1 to 1.
inline double getArcCosine(double cosine) noexcept
{
    const double c = std::fmin(1.0, std::fmax(-1.0, cosine));
    return getAngle(std::sqrt((1.0 - c) * (1.0 + c)), c);
}
}  // namespace TW2
