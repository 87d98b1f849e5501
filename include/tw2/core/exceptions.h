#pragma once

#include <tw2/export.h>

#include <platform/runtime/exception.h>

namespace TW2
{
/// Base of every failure that the library itself detects. Thrown by value; catch by reference, as this class or as
/// S_Exception. Every message begins with "TW2: ".
class TW2_API TW_Exception : public S_Exception
{
public:
    ~TW_Exception() override;

protected:
    TW_Exception();
};

/// The scene engine refuses the texture-times-vertex-colour-times-two set-up.
class TW2_API TW_Exception_UnableToUseTextureModulate2XMaterial : public TW_Exception
{
public:
    explicit TW_Exception_UnableToUseTextureModulate2XMaterial(const char* materialName);
    ~TW_Exception_UnableToUseTextureModulate2XMaterial() override;
};

/// The scene engine refuses the texture-times-(vertex colour plus environment)-times-two set-up.
class TW2_API TW_Exception_UnableToUseTextureEnvModulate2XMaterial : public TW_Exception
{
public:
    explicit TW_Exception_UnableToUseTextureEnvModulate2XMaterial(const char* materialName);
    ~TW_Exception_UnableToUseTextureEnvModulate2XMaterial() override;
};

/// A texture file is not on the texture search path, or a texture animation name is unknown.
class TW2_API TW_Exception_TextureNotFound : public TW_Exception
{
public:
    explicit TW_Exception_TextureNotFound(const char* name);
    ~TW_Exception_TextureNotFound() override;
};

/// A keyframe animation file holds no chunk at all.
class TW2_API TW_Exception_NoAnimation : public TW_Exception
{
public:
    explicit TW_Exception_NoAnimation(const char* fileName);
    ~TW_Exception_NoAnimation() override;
};

/// A keyframe animation file holds another chunk than a keyframe animation, or more than one.
class TW2_API TW_Exception_InvalidAnimationChunk : public TW_Exception
{
public:
    explicit TW_Exception_InvalidAnimationChunk(const char* fileName);
    ~TW_Exception_InvalidAnimationChunk() override;
};

/// A keyframe animation names an object that the object animation lacks, and no callback takes it.
class TW2_API TW_Exception_AnimationTargetNotFound : public TW_Exception
{
public:
    /// `location` is the script's nesting text or "<script not available>".
    TW_Exception_AnimationTargetNotFound(const char* location, const char* detail);
    ~TW_Exception_AnimationTargetNotFound() override;
};

/// A script key has a value outside its set.
class TW2_API TW_Exception_InvalidScriptParameter : public TW_Exception
{
public:
    /// `location` is the script's nesting text.
    TW_Exception_InvalidScriptParameter(const char* location, const char* detail);
    ~TW_Exception_InvalidScriptParameter() override;
};

/// A bone handle was asked for a name that the object animation does not hold.
class TW2_API TW_Exception_BoneNotFound : public TW_Exception
{
public:
    TW_Exception_BoneNotFound(const char* boneName, const char* objectName);
    ~TW_Exception_BoneNotFound() override;
};

/// A file that materials were to be loaded from has none.
class TW2_API TW_Exception_MaterialNotFound : public TW_Exception
{
public:
    explicit TW_Exception_MaterialNotFound(const char* fileName);
    ~TW_Exception_MaterialNotFound() override;
};

/// A script gives the same animation index twice.
class TW2_API TW_Exception_DuplicateAnimationIndicesFound : public TW_Exception
{
public:
    TW_Exception_DuplicateAnimationIndicesFound(const char* fileName, int animationIndex);
    ~TW_Exception_DuplicateAnimationIndicesFound() override;
};

/// Skin data do not fit the skin meshes or the skeleton.
class TW2_API TW_Exception_InvalidGeometry : public TW_Exception
{
public:
    explicit TW_Exception_InvalidGeometry(const char* detail);
    ~TW_Exception_InvalidGeometry() override;
};
}  // namespace TW2
