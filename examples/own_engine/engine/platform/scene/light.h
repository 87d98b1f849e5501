#pragma once

#include <platform/image/fcolor.h>
#include <platform/scene/base_object.h>

class P_Light : public P_BaseObject
{
public:
    void setColor(const G_FColor& color) noexcept;
};
