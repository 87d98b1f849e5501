#pragma once

#include <cmath>
#include <type_traits>

/// Three components: a point, a direction, a size or a texture coordinate.
///
/// Plain data: trivially copyable, three components without padding, so that arrays of it have the image that files
/// store. A default-constructed vector is zero.
template <typename T>
struct M_Vector3Template
{
    T x = T(0);
    T y = T(0);
    T z = T(0);

    constexpr M_Vector3Template() = default;
    constexpr M_Vector3Template(T xValue, T yValue, T zValue) : x(xValue), y(yValue), z(zValue) {}

    constexpr M_Vector3Template& operator+=(const M_Vector3Template& other)
    {
        x += other.x;
        y += other.y;
        z += other.z;
        return *this;
    }
    constexpr M_Vector3Template& operator-=(const M_Vector3Template& other)
    {
        x -= other.x;
        y -= other.y;
        z -= other.z;
        return *this;
    }
    constexpr M_Vector3Template& operator*=(T factor)
    {
        x *= factor;
        y *= factor;
        z *= factor;
        return *this;
    }

    [[nodiscard]] constexpr T dot(const M_Vector3Template& other) const
    {
        return x * other.x + y * other.y + z * other.z;
    }
    [[nodiscard]] constexpr M_Vector3Template cross(const M_Vector3Template& other) const
    {
        return {y * other.z - z * other.y, z * other.x - x * other.z, x * other.y - y * other.x};
    }
    [[nodiscard]] constexpr T lengthSquared() const { return dot(*this); }
    [[nodiscard]] T length() const { return std::sqrt(lengthSquared()); }

    /// The vector scaled to length 1, or the zero vector when its length is 0.
    [[nodiscard]] M_Vector3Template normalized() const
    {
        const T l = length();
        return l > T(0) ? M_Vector3Template{x / l, y / l, z / l} : M_Vector3Template{};
    }

    friend constexpr M_Vector3Template operator+(M_Vector3Template a, const M_Vector3Template& b) { return a += b; }
    friend constexpr M_Vector3Template operator-(M_Vector3Template a, const M_Vector3Template& b) { return a -= b; }
    friend constexpr M_Vector3Template operator-(const M_Vector3Template& a) { return {-a.x, -a.y, -a.z}; }
    friend constexpr M_Vector3Template operator*(M_Vector3Template a, T factor) { return a *= factor; }
    friend constexpr M_Vector3Template operator*(T factor, M_Vector3Template a) { return a *= factor; }
    friend constexpr bool operator==(const M_Vector3Template&, const M_Vector3Template&) = default;
};

static_assert(std::is_trivially_copyable_v<M_Vector3Template<float>> && sizeof(M_Vector3Template<float>) == 12);
