#pragma once

#include <tw2/export.h>
#include <tw2/lod/levels_of_detail.h>

class S_Script;

namespace TW2
{
/// One animated object at several levels of detail: an object animation per level, of which the engine shows the one
/// that fits the camera's distance.
///
///     const int blocks[] = {0, 1, 2};      // blocks of soldier.txt, finest first
///     const float ranges[] = {20, 60, 500};  // shown up to these distances
///     TW_ObjectAnimationLODs soldier(&script, 3, blocks, ranges, false);
///     soldier.addTo(&scene);
///     ... every frame: soldier.animateObject(WALK, time, nullptr); ...
///
/// All levels come from blocks of one script and share its animation indices. Playing, blending, frame rates and
/// textures go to every level, so that the shown one can change at any time. What is asked is asked of the level in use
/// or, while none is in use, of the last one, but for the indices that there are and where they loop to, which are
/// level 0's, as are its manual bounding volumes. States are frozen from and restored to the level in use; nothing
/// happens while none is.
class TW2_API TW_ObjectAnimationLODs : public TW_LevelsOfDetail<TW_ObjectAnimation>
{
public:
    /// @name Life
    /// Every form builds from scratch: what the object was before is destructed first. A form that throws leaves the
    /// object not constructed. A level count below 1 is a TW_Exception_InvalidScriptParameter that names the script.
    /// @{

    /// Not constructed: no levels.
    TW_ObjectAnimationLODs() = default;
    /// Level i from block `blockIndices[i]` (a position at the script's current level), shown up to the distance
    /// `distances[i]`. `keyframeFlag`: the tracks carry visibility.
    TW_ObjectAnimationLODs(S_Script* script, int levelCount, const int* blockIndices, const float* distances,
                           bool keyframeFlag)
        : TW_ObjectAnimationLODs()
    {
        construct(script, levelCount, blockIndices, distances, keyframeFlag);
    }
    /// Distances from the key "distance" of each block's "geometry" block; 0, or none, is the largest float.
    TW_ObjectAnimationLODs(S_Script* script, int levelCount, const int* blockIndices, bool keyframeFlag)
        : TW_ObjectAnimationLODs()
    {
        construct(script, levelCount, blockIndices, keyframeFlag);
    }
    /// Copies of all levels, with the same distances.
    TW_ObjectAnimationLODs(const TW_ObjectAnimationLODs& other) : TW_ObjectAnimationLODs() { construct(other); }
    /// The same; copying an object onto itself does nothing.
    TW_ObjectAnimationLODs& operator=(const TW_ObjectAnimationLODs& other);
    /// Takes the levels out of the tree and deletes them.
    ~TW_ObjectAnimationLODs() override { destruct(); }

    /// As the constructors of the same arguments, in the place of what the object was before. When it throws, the
    /// object is not constructed.
    void construct(S_Script* script, int levelCount, const int* blockIndices, const float* distances,
                   bool keyframeFlag);
    void construct(S_Script* script, int levelCount, const int* blockIndices, bool keyframeFlag);
    void construct(const TW_ObjectAnimationLODs& other);
    /// @}

    /// @name Scene object
    /// @{
    [[nodiscard]] ObjectType getType() const override { return ObjectType::ObjectLevels; }
    [[nodiscard]] const char* getObjectType() const override { return "TW_ObjectAnimationLODs"; }
    /// @}

private:
    [[nodiscard]] TW_ObjectAnimation* getPart(Operations operations, unsigned int i) const override;
};
}  // namespace TW2
