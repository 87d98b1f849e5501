#pragma once

#include <tw2/core/text.h>
#include <tw2/export.h>
#include <tw2/object/forwarding_object.h>

#include <platform/runtime/allocator.h>

class P_LODObject;
class S_Script;

namespace TW2
{
class TW_ObjectAnimation;

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
class TW2_API TW_ObjectAnimationLODs : public TW_ForwardingObject
{
public:
    /// @name Life
    /// Every form builds from scratch: what the object was before is destructed first. A form that throws leaves the
    /// object not constructed. A level count below 1 is a TW_Exception_InvalidScriptParameter that names the script.
    /// @{

    /// Not constructed: no levels.
    TW_ObjectAnimationLODs() { initializeMembers(); }
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
    ~TW_ObjectAnimationLODs() override;

    /// As the constructors of the same arguments, in the place of what the object was before. When it throws, the
    /// object is not constructed.
    void construct(S_Script* script, int levelCount, const int* blockIndices, const float* distances,
                   bool keyframeFlag);
    void construct(S_Script* script, int levelCount, const int* blockIndices, bool keyframeFlag);
    void construct(const TW_ObjectAnimationLODs& other);
    /// Deletes the levels; nothing happens to an object that has none.
    void destruct() noexcept;
    /// False before the first `construct` and after `destruct`.
    [[nodiscard]] bool isConstructed() const noexcept { return m_bConstructed; }
    /// @}

    /// @name Levels
    /// @{

    /// The engine's level-of-detail object, which hangs below this object and chooses the level in use.
    [[nodiscard]] P_LODObject* getEngineLODObject() const noexcept { return m_pEngineLODObject; }
    /// Chooses the level in use for the camera now; the scene does it every frame.
    void calculateLOD();
    /// 0 for an object that is not constructed.
    [[nodiscard]] int getLevelCount() const;
    /// Level 0 to `getLevelCount()` - 1; null when the engine shows something else there.
    [[nodiscard]] TW_ObjectAnimation* getLODObject(int level) const;
    /// The level in use; null when none is.
    [[nodiscard]] TW_ObjectAnimation* getUsedLODObject() const;
    /// @}

    /// @name On every level
    /// A result is true when it is true for any level.
    /// @{

    /// Replaces the materials by those of a file.
    void loadMaterials(const char* fileName);
    /// The same with a string of the host's.
    template <TW_String File>
    void loadMaterials(const File& fileName)
    {
        loadMaterials(fileName.c_str());
    }
    /// Shows and hides the meshes as the visibility tracks say.
    bool updateVisibility(int animation, float time);
    /// The same at a frame.
    bool updateVisibilityFrame(int animation, float frame);
    /// @}

    /// @name Scene object
    /// @{
    [[nodiscard]] ObjectType getType() const override;
    [[nodiscard]] const char* getObjectType() const override;
    /// @}

protected:
    /// Nothing to do each frame; returns true, so that the levels are always visited.
    bool executeAlways() override;

private:
    [[nodiscard]] TW_ObjectAnimation* getPart(Operations operations, unsigned int i) const override;
    void takeApart() noexcept override;
    void initializeMembers() noexcept;
    template <typename Steps>
    void build(const Steps& steps);
    TW_ObjectAnimation& addLevel();
    void enterLevel(int level, float range);

    P_LODObject* m_pEngineLODObject;
    int m_iLevelCount;
    S_Vector<TW_ObjectAnimation*> m_vecLevels;
    bool m_bConstructed;
};
}  // namespace TW2
