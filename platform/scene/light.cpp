#include <platform/scene/light.h>

P_Light::P_Light() : P_BaseObject(P_ObjectContainer::Kind::Light) {}
P_Light::~P_Light() = default;

P_Context* P_Light::getContext() const
{
    return getStoredContext();
}

P_BaseObject::ObjectType P_Light::getType() const
{
    return ObjectType::Light;
}
