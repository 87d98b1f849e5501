#pragma once

#include <tw2/export.h>
#include <tw2/object/virtual_object.h>

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
/// All levels come from blocks of one script and share its animation indices. Animating works on every level, so that
/// the shown one can change at any time; asking works on the level in use or, while none is in use, on the last one.
class TW2_API TW_ObjectAnimationLODs : public TW_VirtualObject
{
public:
    /// @name Life
    /// Every form builds from scratch: what the object was before is destructed first. A form that throws leaves the
    /// object not constructed. A level count below 1 is a TW_Exception_InvalidScriptParameter that names the script.
    /// @{

    /// Not constructed. Only `construct` and `isConstructed` may be called then.
    TW_ObjectAnimationLODs();
    /// Level i from block `blockIndices[i]` (a position at the script's current level), shown up to the distance
    /// `distances[i]`. `keyframeFlag`: the tracks carry visibility.
    TW_ObjectAnimationLODs(S_Script* script, int levelCount, const int* blockIndices, const float* distances,
                           bool keyframeFlag);
    /// Distances from the key "distance" of each block's "geometry" block; 0, or none, is the largest float.
    TW_ObjectAnimationLODs(S_Script* script, int levelCount, const int* blockIndices, bool keyframeFlag);
    /// Copies of all levels, with the same distances.
    TW_ObjectAnimationLODs(const TW_ObjectAnimationLODs& other);
    /// The same; copying an object onto itself does nothing.
    TW_ObjectAnimationLODs& operator=(const TW_ObjectAnimationLODs& other);
    ~TW_ObjectAnimationLODs() override;

    void construct(S_Script* script, int levelCount, const int* blockIndices, const float* distances,
                   bool keyframeFlag);
    void construct(S_Script* script, int levelCount, const int* blockIndices, bool keyframeFlag);
    void construct(const TW_ObjectAnimationLODs& other);
    void destruct() noexcept;
    [[nodiscard]] bool isConstructed() const noexcept { return m_bConstructed; }
    /// @}

    /// @name Levels
    /// @{

    /// The engine's level-of-detail object, which hangs below this object and chooses the level in use.
    [[nodiscard]] P_LODObject* getEngineLODObject() const noexcept { return m_pEngineLODObject; }
    /// Chooses the level in use for the camera now; the scene does it every frame.
    void calculateLOD();
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
    /// Shows and hides the meshes as the visibility tracks say.
    bool updateVisibility(int animation, float time);
    bool updateVisibilityFrame(int animation, float frame);
    void setAnimationFPS(int index, float fps) override;
    bool animateObject(int index, float time, TW_BoneGroupHandle* group) override;
    bool animateObjectFrame(int index, float frame, TW_BoneGroupHandle* group) override;
    bool crossAnimateObject(TW_ObjectAnimationState* state, float stateWeight, int index1, float time1, float weight1,
                            int index2, float time2, float weight2, TW_BoneGroupHandle* group) override;
    bool crossAnimateObject(TW_ObjectAnimationState* state1, float weight, TW_ObjectAnimationState* state2,
                            const TW_BoneHandle& reference, TW_BoneGroupHandle* group) override;
    bool crossAnimateObject(TW_ObjectAnimationState* state1, float weight, TW_ObjectAnimationState* state2,
                            TW_BoneGroupHandle* group) override;
    bool crossAnimateObject(TW_ObjectAnimationState* state, float weight, int index, float time,
                            TW_BoneGroupHandle* group) override;
    bool crossAnimateObject(int index1, float time1, float weight1, int index2, float time2, float weight2, int index3,
                            float time3, TW_BoneGroupHandle* group) override;
    bool crossAnimateObject(int index1, float time1, float weight, int index2, float time2,
                            TW_BoneGroupHandle* group) override;
    bool crossAnimateObjectFrame(TW_ObjectAnimationState* state, float stateWeight, int index1, float frame1,
                                 float weight1, int index2, float frame2, float weight2,
                                 TW_BoneGroupHandle* group) override;
    bool crossAnimateObjectFrame(TW_ObjectAnimationState* state, float weight, int index, float frame,
                                 TW_BoneGroupHandle* group) override;
    bool crossAnimateObjectFrame(int index1, float frame1, float weight1, int index2, float frame2, float weight2,
                                 int index3, float frame3, TW_BoneGroupHandle* group) override;
    bool crossAnimateObjectFrame(int index1, float frame1, float weight, int index2, float frame2,
                                 TW_BoneGroupHandle* group) override;
    void uploadTextures() override;
    void setTextureAnimationFPS(const S_String& set, int index, float fps) override;
    bool animateTexture(const S_String& set, float time) override;
    bool animateTextureFrame(const S_String& set, float frame) override;
    /// @}

    /// @name On the level in use; nothing happens when none is
    /// @{
    void freezeAnimationState(TW_ObjectAnimationState* state, TW_BoneGroupHandle* group) override;
    void restoreAnimationState(TW_ObjectAnimationState* state) override;
    /// @}

    /// @name Of the level in use, of the last level when none is
    /// @{
    [[nodiscard]] unsigned int getTotalMeshes() const override;
    [[nodiscard]] P_VirtualObject* getMesh(unsigned int i) const override;
    [[nodiscard]] unsigned int getTotalAnimations() const override;
    [[nodiscard]] int getMaximumAnimationIndex() const override;
    [[nodiscard]] unsigned int getAnimationFrames(int index) const override;
    [[nodiscard]] float getAnimationLength(int index) const override;
    [[nodiscard]] float getAnimationFPS(int index) const override;
    [[nodiscard]] TW_BoneHandle getBoneHandle(const char* name) override;
    [[nodiscard]] bool isValidTextureAnimationSet(const S_String& set) const override;
    [[nodiscard]] bool isValidTextureAnimation(const S_String& set, int index) const override;
    [[nodiscard]] unsigned int getTotalTextureAnimationSets() const override;
    [[nodiscard]] unsigned int getTotalTextureAnimations(const S_String& set) const override;
    [[nodiscard]] unsigned int getTextureAnimationFrames(const S_String& set, int index) const override;
    [[nodiscard]] float getTextureAnimationLength(const S_String& set, int index) const override;
    [[nodiscard]] float getTextureAnimationFPS(const S_String& set, int index) const override;
    /// @}

    /// @name Of level 0
    /// @{
    [[nodiscard]] bool isValidAnimation(int index) const override;
    [[nodiscard]] unsigned int getAnimationLoopToFrame(int index) const override;
    [[nodiscard]] float getAnimationLoopToTime(int index) const override;
    /// @}

    /// @name Scene object
    /// @{
    [[nodiscard]] ObjectType getType() const override;
    /// Level 0's manual bounding volumes, where it has them, else the engine's for this object.
    [[nodiscard]] float getBoundingRadius() override;
    [[nodiscard]] M_Vector3Template<float> getBoundingBoxMin() override;
    [[nodiscard]] M_Vector3Template<float> getBoundingBoxMax() override;
    [[nodiscard]] const char* getObjectType() const override;
    /// @}

protected:
    /// Nothing to do each frame; returns true, so that the levels are always visited.
    bool executeAlways() override;

private:
    void initializeMembers() noexcept;
    template <typename Steps>
    void build(const Steps& steps);
    TW_ObjectAnimation& addLevel();
    void enterLevel(int level, float range);
    [[nodiscard]] TW_ObjectAnimation& getUsedOrLast() const;

    P_LODObject* m_pEngineLODObject;
    int m_iLevelCount;
    S_Vector<TW_ObjectAnimation*> m_vecLevels;
    bool m_bConstructed;
};
}  // namespace TW2
