#include <tw2/core/exceptions.h>

namespace TW2
{
TW_Exception::TW_Exception() = default;
TW_Exception::~TW_Exception() = default;

TW_Exception_UnableToUseTextureModulate2XMaterial::TW_Exception_UnableToUseTextureModulate2XMaterial(
    const char* materialName)
{
    setError("TW2: Unable to use texture * gouraud^2 for material '%s'", materialName);
}
TW_Exception_UnableToUseTextureModulate2XMaterial::~TW_Exception_UnableToUseTextureModulate2XMaterial() = default;

TW_Exception_UnableToUseTextureEnvModulate2XMaterial::TW_Exception_UnableToUseTextureEnvModulate2XMaterial(
    const char* materialName)
{
    setError("TW2: Unable to use texture * (gouraud+env)^2 for material '%s'", materialName);
}
TW_Exception_UnableToUseTextureEnvModulate2XMaterial::~TW_Exception_UnableToUseTextureEnvModulate2XMaterial() = default;

TW_Exception_TextureNotFound::TW_Exception_TextureNotFound(const char* name)
{
    setError("TW2: Texture \"%s\" not found", name);
}
TW_Exception_TextureNotFound::~TW_Exception_TextureNotFound() = default;

TW_Exception_NoAnimation::TW_Exception_NoAnimation(const char* fileName)
{
    setError("TW2: File \"%s\" did not have a valid keyframe animation chunk", fileName);
}
TW_Exception_NoAnimation::~TW_Exception_NoAnimation() = default;

TW_Exception_InvalidAnimationChunk::TW_Exception_InvalidAnimationChunk(const char* fileName)
{
    setError("TW2: File \"%s\" had more than one or other than animation chunks", fileName);
}
TW_Exception_InvalidAnimationChunk::~TW_Exception_InvalidAnimationChunk() = default;

TW_Exception_AnimationTargetNotFound::TW_Exception_AnimationTargetNotFound(const char* location, const char* detail)
{
    setError("TW2: Animation target not found and callback not set %s: %s", location, detail);
}
TW_Exception_AnimationTargetNotFound::~TW_Exception_AnimationTargetNotFound() = default;

TW_Exception_InvalidScriptParameter::TW_Exception_InvalidScriptParameter(const char* location, const char* detail)
{
    setError("TW2: Invalid parameter in %s: %s", location, detail);
}
TW_Exception_InvalidScriptParameter::~TW_Exception_InvalidScriptParameter() = default;

TW_Exception_BoneNotFound::TW_Exception_BoneNotFound(const char* boneName, const char* objectName)
{
    setError("TW2: Bone \"%s\" not found from object \"%s\"", boneName, objectName);
}
TW_Exception_BoneNotFound::~TW_Exception_BoneNotFound() = default;

TW_Exception_MaterialNotFound::TW_Exception_MaterialNotFound(const char* fileName)
{
    setError("TW2: File \"%s\" didn't contain any materials", fileName);
}
TW_Exception_MaterialNotFound::~TW_Exception_MaterialNotFound() = default;

TW_Exception_DuplicateAnimationIndicesFound::TW_Exception_DuplicateAnimationIndicesFound(const char* fileName,
                                                                                         int animationIndex)
{
    setError("TW2: File \"%s\" defines animation index %i more than once.", fileName, animationIndex);
}
TW_Exception_DuplicateAnimationIndicesFound::~TW_Exception_DuplicateAnimationIndicesFound() = default;

TW_Exception_InvalidGeometry::TW_Exception_InvalidGeometry(const char* detail)
{
    setError("TW2: Invalid Geometry: %s", detail);
}
TW_Exception_InvalidGeometry::~TW_Exception_InvalidGeometry() = default;
}  // namespace TW2
