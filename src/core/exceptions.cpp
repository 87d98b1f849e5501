#include <tw2/core/exceptions.h>

namespace TW2
{
TW_Exception::TW_Exception() = default;
TW_Exception::~TW_Exception() = default;

TW_Exception_UnableToUseTextureModulate2XMaterial::~TW_Exception_UnableToUseTextureModulate2XMaterial() = default;

TW_Exception_UnableToUseTextureEnvModulate2XMaterial::~TW_Exception_UnableToUseTextureEnvModulate2XMaterial() = default;

TW_Exception_TextureNotFound::~TW_Exception_TextureNotFound() = default;

TW_Exception_NoAnimation::~TW_Exception_NoAnimation() = default;

TW_Exception_InvalidAnimationChunk::~TW_Exception_InvalidAnimationChunk() = default;

TW_Exception_AnimationTargetNotFound::~TW_Exception_AnimationTargetNotFound() = default;

TW_Exception_InvalidScriptParameter::~TW_Exception_InvalidScriptParameter() = default;

TW_Exception_BoneNotFound::~TW_Exception_BoneNotFound() = default;

TW_Exception_AnimationNotFound::~TW_Exception_AnimationNotFound() = default;

TW_Exception_BoneMaskMismatch::~TW_Exception_BoneMaskMismatch() = default;

TW_Exception_InvalidMotion::~TW_Exception_InvalidMotion() = default;

TW_Exception_MaterialNotFound::~TW_Exception_MaterialNotFound() = default;

TW_Exception_DuplicateAnimationIndicesFound::~TW_Exception_DuplicateAnimationIndicesFound() = default;

TW_Exception_InvalidGeometry::~TW_Exception_InvalidGeometry() = default;
}  // namespace TW2
