#pragma once

#include <tw2/export.h>

#include <platform/runtime/exception.h>

namespace TW2
{
/// Base of every failure that the library itself detects. Thrown by value; catch by reference, as this class or as
/// S_Exception. Every message begins with "TW2: ".
class TW2_API TW_Exception : public S_Exception
{
protected:
    TW_Exception() = default;
};

/// The scene engine refuses the texture-times-vertex-colour-times-two set-up.
class TW2_API TW_Exception_UnableToUseTextureModulate2XMaterial : public TW_Exception
{
public:
    /// `materialName`: the material that the engine refused.
    explicit TW_Exception_UnableToUseTextureModulate2XMaterial(const char* materialName)
    {
        setError("TW2: Unable to use texture * gouraud^2 for material '%s'", materialName);
    }
};

/// The scene engine refuses the texture-times-(vertex colour plus environment)-times-two set-up.
class TW2_API TW_Exception_UnableToUseTextureEnvModulate2XMaterial : public TW_Exception
{
public:
    /// `materialName`: the material that the engine refused.
    explicit TW_Exception_UnableToUseTextureEnvModulate2XMaterial(const char* materialName)
    {
        setError("TW2: Unable to use texture * (gouraud+env)^2 for material '%s'", materialName);
    }
};

/// A texture file is not on the texture search path, or a texture animation name is unknown.
class TW2_API TW_Exception_TextureNotFound : public TW_Exception
{
public:
    /// `name`: the file, or the texture slot or set, that was not found.
    explicit TW_Exception_TextureNotFound(const char* name) { setError("TW2: Texture \"%s\" not found", name); }
};

/// A keyframe animation file holds no chunk at all.
class TW2_API TW_Exception_NoAnimation : public TW_Exception
{
public:
    /// `fileName`: the file that was read.
    explicit TW_Exception_NoAnimation(const char* fileName)
    {
        setError("TW2: File \"%s\" did not have a valid keyframe animation chunk", fileName);
    }
};

/// A keyframe animation file holds another chunk than a keyframe animation, or more than one.
class TW2_API TW_Exception_InvalidAnimationChunk : public TW_Exception
{
public:
    /// `fileName`: the file that was read.
    explicit TW_Exception_InvalidAnimationChunk(const char* fileName)
    {
        setError("TW2: File \"%s\" had more than one or other than animation chunks", fileName);
    }
};

/// A keyframe animation names an object that the object animation lacks, and no callback takes it.
class TW2_API TW_Exception_AnimationTargetNotFound : public TW_Exception
{
public:
    /// `location` is the script's nesting text or "<script not available>".
    TW_Exception_AnimationTargetNotFound(const char* location, const char* detail)
    {
        setError("TW2: Animation target not found and callback not set %s: %s", location, detail);
    }
};

/// A script key has a value outside its set.
class TW2_API TW_Exception_InvalidScriptParameter : public TW_Exception
{
public:
    /// `location` is the script's nesting text.
    TW_Exception_InvalidScriptParameter(const char* location, const char* detail)
    {
        setError("TW2: Invalid parameter in %s: %s", location, detail);
    }
};

/// A bone handle was asked for a name that the object animation does not hold.
class TW2_API TW_Exception_BoneNotFound : public TW_Exception
{
public:
    /// `boneName`: the name that was asked for; `objectName`: of the object that has no such bone.
    TW_Exception_BoneNotFound(const char* boneName, const char* objectName)
    {
        setError("TW2: Bone \"%s\" not found from object \"%s\"", boneName, objectName);
    }
};

/// An animated object was asked for an animation by a name that none of its animations has.
class TW2_API TW_Exception_AnimationNotFound : public TW_Exception
{
public:
    /// `names` lists what there is.
    TW_Exception_AnimationNotFound(const char* animationName, const char* objectName, const char* names)
    {
        setError("TW2: Animation \"%s\" not found from object \"%s\"; its animations are: %s", animationName,
                 objectName, names);
    }
};

/// A mask of bones was given to an object, or to a mask, of another skeleton.
class TW2_API TW_Exception_BoneMaskMismatch : public TW_Exception
{
public:
    /// Names and bone counts of the object that the mask was made for and of the one that it was used on.
    TW_Exception_BoneMaskMismatch(const char* maskObjectName, unsigned int maskBones, const char* objectName,
                                  unsigned int objectBones)
    {
        setError(
            "TW2: A bone mask of \"%s\" (%u bones) does not fit \"%s\" (%u bones); expected the same bone names in the "
            "same order",
            maskObjectName, maskBones, objectName, objectBones);
    }
};

/// Something that a motion of an object was asked to do does not fit the object; the message says what was expected.
class TW2_API TW_Exception_InvalidMotion : public TW_Exception
{
public:
    /// `objectName`: of the object that was to move; `detail`: what is wrong, for the message.
    TW_Exception_InvalidMotion(const char* objectName, const char* detail)
    {
        setError("TW2: Motion of \"%s\": %s", objectName, detail);
    }
};

/// A file that materials were to be loaded from has none.
class TW2_API TW_Exception_MaterialNotFound : public TW_Exception
{
public:
    /// `fileName`: the file that was read.
    explicit TW_Exception_MaterialNotFound(const char* fileName)
    {
        setError("TW2: File \"%s\" didn't contain any materials", fileName);
    }
};

/// A script gives the same animation index twice.
class TW2_API TW_Exception_DuplicateAnimationIndicesFound : public TW_Exception
{
public:
    /// `fileName`: the script; `animationIndex`: the index that it gives twice.
    TW_Exception_DuplicateAnimationIndicesFound(const char* fileName, int animationIndex)
    {
        setError("TW2: File \"%s\" defines animation index %i more than once.", fileName, animationIndex);
    }
};

/// Skin data do not fit the skin meshes or the skeleton.
class TW2_API TW_Exception_InvalidGeometry : public TW_Exception
{
public:
    /// `detail`: what is wrong, for the message.
    explicit TW_Exception_InvalidGeometry(const char* detail) { setError("TW2: Invalid Geometry: %s", detail); }
};
}  // namespace TW2
