#include <platform/image/image_exception.h>

G_ImageException::G_ImageException(const char* imageName, const char* reason)
{
    setError("Image \"%s\": %s", imageName, reason);
}
G_ImageException::~G_ImageException() = default;

const CRuntimeClass* G_ImageException::GetRuntimeClass() const
{
    static constexpr CRuntimeClass runtimeClass{"G_ImageException"};
    return &runtimeClass;
}
