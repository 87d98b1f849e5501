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
    T x = T(0);  ///< in the unit that the vector is used for, as all three
    T y = T(0);  ///< up, where a direction is meant
    T z = T(0);  ///< ahead: coordinates are left-handed

    constexpr M_Vector3Template() = default;
    /// From its three components.
    constexpr M_Vector3Template(T xValue, T yValue, T zValue) : x(xValue), y(yValue), z(zValue) {}

    /// Component by component.
    constexpr M_Vector3Template& operator+=(const M_Vector3Template& other)
    {
        x += other.x;
        y += other.y;
        z += other.z;
        return *this;
    }
    /// Component by component.
    constexpr M_Vector3Template& operator-=(const M_Vector3Template& other)
    {
        x -= other.x;
        y -= other.y;
        z -= other.z;
        return *this;
    }
    /// Every component.
    constexpr M_Vector3Template& operator*=(T factor)
    {
        x *= factor;
        y *= factor;
        z *= factor;
        return *this;
    }

    /// Sum of the products of the components.
    [[nodiscard]] constexpr T dot(const M_Vector3Template& other) const
    {
        return x * other.x + y * other.y + z * other.z;
    }
    /// At right angles to both; as long as the area that they span.
    [[nodiscard]] constexpr M_Vector3Template cross(const M_Vector3Template& other) const
    {
        return {y * other.z - z * other.y, z * other.x - x * other.z, x * other.y - y * other.x};
    }
    /// The square of the length.
    [[nodiscard]] constexpr T lengthSquared() const { return dot(*this); }
    /// The length; overflows where its square does.
    [[nodiscard]] T length() const { return std::sqrt(lengthSquared()); }

    /// The vector scaled to length 1, or the zero vector when its length is 0.
    [[nodiscard]] M_Vector3Template normalized() const
    {
        const T l = length();
        return l > T(0) ? M_Vector3Template{x / l, y / l, z / l} : M_Vector3Template{};
    }

    /// Component by component.
    friend constexpr M_Vector3Template operator+(M_Vector3Template a, const M_Vector3Template& b) { return a += b; }
    /// Component by component.
    friend constexpr M_Vector3Template operator-(M_Vector3Template a, const M_Vector3Template& b) { return a -= b; }
    /// The opposite direction.
    friend constexpr M_Vector3Template operator-(const M_Vector3Template& a) { return {-a.x, -a.y, -a.z}; }
    /// Every component.
    friend constexpr M_Vector3Template operator*(M_Vector3Template a, T factor) { return a *= factor; }
    /// Every component.
    friend constexpr M_Vector3Template operator*(T factor, M_Vector3Template a) { return a *= factor; }
    friend constexpr bool operator==(const M_Vector3Template&, const M_Vector3Template&) = default;
};

static_assert(std::is_trivially_copyable_v<M_Vector3Template<float>> && sizeof(M_Vector3Template<float>) == 12);
