#include "motion/vectors.h"

#include <tw2/core/exceptions.h>
#include <tw2/motion/foot_planter.h>
#include <tw2/object/object_animation.h>

#include <platform/runtime/str.h>
#include <platform/scene/virtual_object.h>

#include <algorithm>
#include <cmath>

namespace TW2
{
namespace
{
using Vector = M_Vector3Template<double>;

// What stretches over the bones below the first, in the world.
double measure(const TW_VirtualObject& object, const TW_BoneChain& chain)
{
    const TW_ObjectAnimation& played = *object.getPlayedObject(0);
    double length = 0.0;
    for (std::size_t i = 1; i < chain.getBoneCount(); ++i)
    {
        const auto placeOf = [&](std::size_t place)
        { return played.getMesh(chain.getBone(place))->getObjectToWorldMatrix().getTranslation(); };
        length += static_cast<double>((placeOf(i) - placeOf(i - 1)).length());
    }
    return length;
}

bool isGround(const TW_GroundPoint& point)
{
    return point.found && std::isfinite(point.height) &&
           std::isfinite(point.normal.x + point.normal.y + point.normal.z);
}
}  // namespace

TW_FootPlanter::TW_FootPlanter(TW_VirtualObject& object, const char* pelvis, const TW_Leg* legs, std::size_t count)
    : m_pObject(&object), m_pelvis(object, pelvis, pelvis)
{
    m_vecLegs.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
    {
        m_vecLegs.push_back({TW_BoneChain(object, legs[i].thigh, legs[i].foot),
                             static_cast<double>(legs[i].ankleHeight),
                             0.0,
                             {},
                             0.0,
                             0.0,
                             {},
                             0.0F});
        if (m_vecLegs.back().m_chain.getBoneCount() < 3)
        {
            throw TW_Exception_InvalidMotion(
                object.getName().c_str(),
                S_STR("expected a bone between \"%s\" and \"%s\"", legs[i].thigh, legs[i].foot));
        }
    }
}

float TW_FootPlanter::plant(TW_GroundCallback& ground, const TW_FootOptions& options) noexcept
{
    const auto level = static_cast<double>(m_pObject->getObjectToWorldMatrix().getTranslation().y);
    const auto weight = std::min(std::max(0.0, static_cast<double>(options.weight)), 1.0);
    double shift = 0.0;
    bool any = false;
    for (Leg& leg : m_vecLegs)
    {
        leg.m_vFoot = leg.m_chain.getTipPosition();
        leg.m_dLength = measure(*m_pObject, leg.m_chain);
        leg.m_ground = ground(toFloat(leg.m_vFoot));
        if (!isGround(leg.m_ground))
        {
            leg.m_ground = {.found = false};
        }
        const double most = static_cast<double>(options.most) * leg.m_dLength;
        leg.m_dShift = leg.m_ground.found
                           ? std::clamp(static_cast<double>(leg.m_ground.height) - level, -most, most) * weight
                           : 0.0;
        const double up = leg.m_vFoot.y - level - leg.m_dAnkleHeight;
        const double free = static_cast<double>(options.lifted) * leg.m_dLength;
        leg.m_dStanding = free > 0.0 ? std::clamp(1.0 - up / free, 0.0, 1.0) : 1.0;
        shift = any ? std::min(shift, leg.m_dShift) : leg.m_dShift;
        any = true;
    }
    m_pelvis.moveBase({0.0, shift, 0.0});
    for (Leg& leg : m_vecLegs)
    {
        leg.m_fLeft = leg.m_chain.reachTwoBones(
            {.target = toFloat(leg.m_vFoot + Vector{0.0, leg.m_dShift, 0.0}), .keepEndRotation = true});
        const auto& n = leg.m_ground.normal;
        const TW_Rotation slope = TW_Rotation::between(
            {0, 1, 0}, {static_cast<double>(n.x), static_cast<double>(n.y), static_cast<double>(n.z)});
        leg.m_chain.turnTip(slope.limited(static_cast<double>(options.steepest))
                                .scaled(leg.m_ground.found ? weight * leg.m_dStanding : 0.0));
    }
    return static_cast<float>(shift);
}
}  // namespace TW2
