#include "motion/angles.h"
#include "motion/vectors.h"

#include <tw2/motion/rotation.h>

#include <algorithm>
#include <cmath>

namespace TW2
{
namespace
{
using Vector = M_Vector3Template<double>;

// A direction at right angles to `v`: to the coordinate axis that `v` is farthest from.
Vector findPerpendicular(const Vector& v)
{
    const double x = std::abs(v.x);
    const double y = std::abs(v.y);
    const double z = std::abs(v.z);
    const Vector axis = x <= y && x <= z ? Vector{1, 0, 0} : y <= z ? Vector{0, 1, 0} : Vector{0, 0, 1};
    return v.cross(axis).normalized();
}

// Of orthonormal, right-handed rows; the branches keep away from roots of small differences.
TW_Rotation ofRows(const Vector rows[3])
{
    const double m[3][3] = {
        {rows[0].x, rows[0].y, rows[0].z}, {rows[1].x, rows[1].y, rows[1].z}, {rows[2].x, rows[2].y, rows[2].z}};
    const double trace = m[0][0] + m[1][1] + m[2][2];
    double q[4];  // x y z w
    if (trace > 0.0)
    {
        const double s = std::sqrt(trace + 1.0);
        const double r = 0.5 / s;
        q[3] = 0.5 * s;
        q[0] = (m[1][2] - m[2][1]) * r;
        q[1] = (m[2][0] - m[0][2]) * r;
        q[2] = (m[0][1] - m[1][0]) * r;
    }
    else
    {
        int i = m[1][1] > m[0][0] ? 1 : 0;
        i = m[2][2] > m[i][i] ? 2 : i;
        const int j = (i + 1) % 3;
        const int k = (j + 1) % 3;
        const double s = std::sqrt(std::max(0.0, m[i][i] - m[j][j] - m[k][k] + 1.0));
        const double r = s > 0.0 ? 0.5 / s : 0.0;
        q[i] = 0.5 * s;
        q[3] = (m[j][k] - m[k][j]) * r;
        q[j] = (m[i][j] + m[j][i]) * r;
        q[k] = (m[i][k] + m[k][i]) * r;
    }
    return TW_Rotation{q[3], {q[0], q[1], q[2]}}.normalized();
}
}  // namespace

TW_Rotation TW_Rotation::aboutAxis(const Vector& axis, double degrees)
{
    double sine = 0.0;
    double cosine = 1.0;
    getSineAndCosine(degrees * (pi / 360.0), sine, cosine);
    return TW_Rotation{cosine, axis.normalized() * sine};
}

TW_Rotation TW_Rotation::between(const Vector& from, const Vector& to)
{
    const Vector a = from.normalized();
    const Vector b = to.normalized();
    if (a == Vector{} || b == Vector{})
    {
        return {};
    }
    // Half way between the two lies the axis' plane; where they are opposite there is no half way.
    const Vector half = a + b;
    constexpr double opposite = 1e-14;
    if (half.lengthSquared() < opposite * opposite)
    {
        return {0.0, findPerpendicular(a)};
    }
    const Vector h = half.normalized();
    return TW_Rotation{a.dot(h), a.cross(h)}.normalized();
}

TW_Rotation TW_Rotation::ofMatrix(const M_Matrix4x3Template<float>& matrix)
{
    Vector rows[3] = {toDouble(matrix.getRow(0)).normalized(), toDouble(matrix.getRow(1)),
                      toDouble(matrix.getRow(2)).normalized()};
    const Vector third = rows[2];
    rows[1] = (rows[1] - rows[0] * rows[0].dot(rows[1])).normalized();
    rows[2] = rows[0].cross(rows[1]);
    if (rows[0] == Vector{} || rows[1] == Vector{} || third == Vector{})
    {
        return {};
    }
    return ofRows(rows);
}

TW_Rotation::Vector TW_Rotation::turn(const Vector& v) const
{
    const Vector t = m_vAxis.cross(v) * 2.0;
    return v + t * m_dW + m_vAxis.cross(t);
}

TW_Rotation TW_Rotation::scaled(double factor) const
{
    const double sign = m_dW < 0.0 ? -1.0 : 1.0;
    if (factor == 1.0)
    {
        return {sign * m_dW, m_vAxis * sign};
    }
    const double length = m_vAxis.length();
    if (length == 0.0)
    {
        return {};
    }
    double sine = 0.0;
    double cosine = 1.0;
    getSineAndCosine(getAngle(length, sign * m_dW) * factor, sine, cosine);
    return {cosine, m_vAxis * (sign * sine / length)};
}

TW_Rotation TW_Rotation::limited(double degrees) const
{
    const double angle = getDegrees();
    return angle > degrees ? scaled(degrees / angle) : *this;
}

double TW_Rotation::getDegrees() const
{
    return getAngle(m_vAxis.length(), std::abs(m_dW)) * (360.0 / pi);
}

TW_Rotation TW_Rotation::getTwist(const Vector& axis) const
{
    return TW_Rotation{m_dW, axis * axis.dot(m_vAxis)}.normalized();
}

TW_Rotation TW_Rotation::normalized() const
{
    const double length = std::sqrt(m_dW * m_dW + m_vAxis.lengthSquared());
    return length > 0.0 ? TW_Rotation{m_dW / length, m_vAxis * (1.0 / length)} : TW_Rotation{};
}

void TW_Rotation::getRows(Vector rows[3]) const
{
    rows[0] = turn({1, 0, 0});
    rows[1] = turn({0, 1, 0});
    rows[2] = turn({0, 0, 1});
}

TW_Rotation operator*(const TW_Rotation& a, const TW_Rotation& b)
{
    return {b.m_dW * a.m_dW - b.m_vAxis.dot(a.m_vAxis),
            a.m_vAxis * b.m_dW + b.m_vAxis * a.m_dW + b.m_vAxis.cross(a.m_vAxis)};
}

TW_Travel TW_Travel::ofMatrix(const M_Matrix4x3Template<float>& matrix)
{
    return {TW_Rotation::ofMatrix(matrix), toDouble(matrix.getTranslation())};
}

M_Matrix4x3Template<float> TW_Travel::toMatrix() const
{
    M_Matrix4x3Template<float> matrix;
    M_Vector3Template<double> rows[4];
    m_rotation.getRows(rows);
    rows[3] = m_vTranslation;
    for (int r = 0; r < 4; ++r)
    {
        matrix.setRow(r, toFloat(rows[r]));
    }
    return matrix;
}

TW_Travel TW_Travel::turnedTowards(const M_Vector3Template<double>& point, double degrees,
                                   const M_Vector3Template<double>& forward) const
{
    const auto flat = [](const M_Vector3Template<double>& v) { return M_Vector3Template<double>(v.x, 0.0, v.z); };
    const M_Vector3Template<double> from = flat(m_rotation.turn(forward));
    const M_Vector3Template<double> to = flat(point - m_vTranslation);
    // Between opposite directions any axis at right angles would do; it is to be y.
    const TW_Rotation turn = from.dot(to) < 0.0 ? TW_Rotation::between(from, -to) * TW_Rotation{0.0, {0.0, 1.0, 0.0}}
                                                : TW_Rotation::between(from, to);
    return {to == M_Vector3Template<double>() ? m_rotation : m_rotation * turn.limited(degrees), m_vTranslation};
}

TW_Travel TW_Travel::inverse() const
{
    const TW_Rotation back = m_rotation.inverse();
    return {back, -back.turn(m_vTranslation)};
}

TW_Travel TW_Travel::repeated(long long count) const
{
    TW_Travel power = count < 0 ? inverse() : *this;
    TW_Travel result;
    for (unsigned long long left = count < 0 ? 0ULL - static_cast<unsigned long long>(count)
                                             : static_cast<unsigned long long>(count);
         left > 0; left /= 2)
    {
        result = left % 2 != 0 ? result * power : result;
        power = power * power;
    }
    return result;
}

TW_Travel operator*(const TW_Travel& a, const TW_Travel& b)
{
    return {(a.m_rotation * b.m_rotation).normalized(), b.transformPoint(a.m_vTranslation)};
}
}  // namespace TW2
