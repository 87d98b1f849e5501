#include <platform/scene/scene_exception.h>

P_SceneException::P_SceneException(const char* message)
{
    setError("%s", message);
}
P_SceneException::~P_SceneException() = default;

const CRuntimeClass* P_SceneException::GetRuntimeClass() const
{
    static constexpr CRuntimeClass runtimeClass{"P_SceneException"};
    return &runtimeClass;
}
