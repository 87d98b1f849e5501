#pragma once

#include <platform/math/vector3.h>

#include <type_traits>

/// Colour of four floats on the scale 0 to 255; values outside it are kept as they are.
///
/// Plain data without padding, in the order in which files store it.
struct G_FColor
{
    float red = 0.0F;      ///< 0 to 255, larger for light
    float green = 0.0F;    ///< the same
    float blue = 0.0F;     ///< the same
    float alpha = 255.0F;  ///< 0 (not there) to 255

    constexpr G_FColor() = default;
    /// From components on the scale 0 to 255; opaque unless said otherwise.
    constexpr G_FColor(float redValue, float greenValue, float blueValue, float alphaValue = 255.0F)
        : red(redValue), green(greenValue), blue(blueValue), alpha(alphaValue)
    {
    }
    /// From red, green and blue as x, y and z.
    constexpr G_FColor(const M_Vector3Template<float>& rgb, float alphaValue)
        : red(rgb.x), green(rgb.y), blue(rgb.z), alpha(alphaValue)
    {
    }

    /// Red, green and blue as one vector, for interpolation.
    [[nodiscard]] constexpr M_Vector3Template<float> getRGB() const { return {red, green, blue}; }

    /// @name Arithmetic on all four components
    /// @{

    /// Component by component, alpha included; nothing is cut off at 0 or 255.
    constexpr G_FColor& operator+=(const G_FColor& other)
    {
        red += other.red;
        green += other.green;
        blue += other.blue;
        alpha += other.alpha;
        return *this;
    }
    /// Component by component, alpha included.
    constexpr G_FColor& operator-=(const G_FColor& other)
    {
        red -= other.red;
        green -= other.green;
        blue -= other.blue;
        alpha -= other.alpha;
        return *this;
    }
    /// Every component, alpha included.
    constexpr G_FColor& operator*=(float factor)
    {
        red *= factor;
        green *= factor;
        blue *= factor;
        alpha *= factor;
        return *this;
    }
    /// Component by component, alpha included.
    friend constexpr G_FColor operator+(G_FColor a, const G_FColor& b) { return a += b; }
    /// Component by component, alpha included.
    friend constexpr G_FColor operator-(G_FColor a, const G_FColor& b) { return a -= b; }
    /// Every component, alpha included.
    friend constexpr G_FColor operator*(G_FColor a, float factor) { return a *= factor; }
    friend constexpr G_FColor operator*(float factor, G_FColor a) { return a *= factor; }
    friend constexpr bool operator==(const G_FColor&, const G_FColor&) = default;
    /// @}
};

static_assert(std::is_trivially_copyable_v<G_FColor> && sizeof(G_FColor) == 16);
