#pragma once

#include <platform/export.h>
#include <platform/image/fcolor.h>
#include <platform/scene/base_object.h>

/// What all lights have: a colour. Disabled lights do not shine.
class TW2_PLATFORM_API P_Light : public P_BaseObject
{
public:
    /// Kinds of light.
    enum class Kind : int
    {
        Point,
        Directional,
        Spot
    };

    ~P_Light() override;

    /// Which of the derived classes it is.
    [[nodiscard]] virtual Kind getLightKind() const = 0;
    [[nodiscard]] P_Context* getContext() const override;
    [[nodiscard]] ObjectType getType() const override;

    /// Components 0 to 255; larger ones shine brighter. White until set.
    void setColor(const G_FColor& color) noexcept { m_color = color; }
    [[nodiscard]] const G_FColor& getColor() const noexcept { return m_color; }

protected:
    P_Light();

private:
    G_FColor m_color{255.0F, 255.0F, 255.0F, 255.0F};
};
