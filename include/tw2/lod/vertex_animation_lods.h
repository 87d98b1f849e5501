#pragma once

#include <tw2/export.h>
#include <tw2/object/virtual_object.h>

#include <platform/runtime/allocator.h>

class P_LODObject;
class S_Script;

namespace TW2
{
class TW_MaterialManager;
class TW_ObjectAnimation;
class TW_VertexAnimation;

/// One skinned character at several levels of detail: a vertex animation per level, all on one skeleton, of which the
/// engine shows the one that fits the camera's distance.
///
///     const int skins[] = {1, 2};  // blocks of soldier.txt, finest first; block 0 is the skeleton
///     TW_VertexAnimationLODs soldier(&script, 0, 2, &script, skins);
///     soldier.addTo(&scene);
///     ... every frame: soldier.animateObject(WALK, time, nullptr); ...
///
/// Animating works on level 0, whose skeleton moves the skins of all levels. The skeleton hangs below this object.
class TW2_API TW_VertexAnimationLODs : public TW_VirtualObject
{
public:
    /// @name Life
    /// Every form builds from scratch: what the object was before is destructed first. A form that throws leaves the
    /// object not constructed. A level count below 1 is a TW_Exception_InvalidScriptParameter that names the skin
    /// script. Blocks are positions at their script's current level.
    /// @{

    /// Not constructed. Only `construct` and `isConstructed` may be called then.
    TW_VertexAnimationLODs();
    /// The skeleton from a block; level i is the skin of block `blockIndices[i]`, shown up to the distance
    /// `distances[i]`.
    TW_VertexAnimationLODs(S_Script* skeletonScript, int skeletonBlock, int levelCount, S_Script* skinScript,
                           const int* blockIndices, const float* distances);
    /// Distances from the key "distance" of each skin block's "geometry" block; 0, or none, is the largest float.
    TW_VertexAnimationLODs(S_Script* skeletonScript, int skeletonBlock, int levelCount, S_Script* skinScript,
                           const int* blockIndices);
    /// The same on a copy of an object animation, which may be the skeleton that the object has now.
    TW_VertexAnimationLODs(const TW_ObjectAnimation& skeleton, int levelCount, S_Script* skinScript,
                           const int* blockIndices);
    /// Copies of skeleton and levels, with the same distances.
    TW_VertexAnimationLODs(const TW_VertexAnimationLODs& other);
    /// The same; copying an object onto itself does nothing.
    TW_VertexAnimationLODs& operator=(const TW_VertexAnimationLODs& other);
    ~TW_VertexAnimationLODs() override;

    void construct(S_Script* skeletonScript, int skeletonBlock, int levelCount, S_Script* skinScript,
                   const int* blockIndices, const float* distances);
    void construct(S_Script* skeletonScript, int skeletonBlock, int levelCount, S_Script* skinScript,
                   const int* blockIndices);
    void construct(const TW_ObjectAnimation& skeleton, int levelCount, S_Script* skinScript, const int* blockIndices);
    /// Copies with the materials of a manager; null: with the levels' own.
    void construct(const TW_VertexAnimationLODs& source, TW_MaterialManager* materials);
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
    [[nodiscard]] TW_VertexAnimation* getLODObject(int level) const;
    /// The level in use; null when none is.
    [[nodiscard]] TW_VertexAnimation* getUsedLODObject() const;
    /// The skeleton of all levels.
    [[nodiscard]] TW_ObjectAnimation* getSkeleton() const;
    /// @}

    /// @name On every level
    /// A result is true when it is true for any level.
    /// @{

    /// Replaces the skins' materials by those of a file.
    void loadMaterials(const char* fileName);
    /// Replaces the skins' materials by those of a manager (not taken over).
    void remapMaterials(TW_MaterialManager* manager);
    void uploadTextures() override;
    void setTextureAnimationFPS(const S_String& set, int index, float fps) override;
    bool animateTexture(const S_String& set, float time) override;
    bool animateTextureFrame(const S_String& set, float frame) override;
    /// @}

    /// @name On and of level 0
    /// @{

    /// Shows and hides the skin's meshes as its visibility tracks say.
    bool updateVisibility(int animation, float time);
    bool updateVisibilityFrame(int animation, float frame);
    [[nodiscard]] unsigned int getTotalMeshes() const override;
    [[nodiscard]] P_VirtualObject* getMesh(unsigned int i) const override;
    [[nodiscard]] unsigned int getTotalAnimations() const override;
    [[nodiscard]] int getMaximumAnimationIndex() const override;
    [[nodiscard]] bool isValidAnimation(int index) const override;
    [[nodiscard]] unsigned int getAnimationFrames(int index) const override;
    [[nodiscard]] float getAnimationLength(int index) const override;
    [[nodiscard]] float getAnimationFPS(int index) const override;
    void setAnimationFPS(int index, float fps) override;
    bool animateObject(int index, float time, TW_BoneGroupHandle* group) override;
    bool animateObjectFrame(int index, float frame, TW_BoneGroupHandle* group) override;
    void freezeAnimationState(TW_ObjectAnimationState* state, TW_BoneGroupHandle* group) override;
    void restoreAnimationState(TW_ObjectAnimationState* state) override;
    [[nodiscard]] TW_BoneHandle getBoneHandle(const char* name) override;
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
    [[nodiscard]] unsigned int getAnimationLoopToFrame(int index) const override;
    [[nodiscard]] float getAnimationLoopToTime(int index) const override;
    /// @}

    /// @name Of the level in use, of the last level when none is
    /// @{
    [[nodiscard]] bool isValidTextureAnimationSet(const S_String& set) const override;
    [[nodiscard]] bool isValidTextureAnimation(const S_String& set, int index) const override;
    [[nodiscard]] unsigned int getTotalTextureAnimationSets() const override;
    [[nodiscard]] unsigned int getTotalTextureAnimations(const S_String& set) const override;
    [[nodiscard]] unsigned int getTextureAnimationFrames(const S_String& set, int index) const override;
    [[nodiscard]] float getTextureAnimationLength(const S_String& set, int index) const override;
    [[nodiscard]] float getTextureAnimationFPS(const S_String& set, int index) const override;
    /// @}

    /// @name Scene object
    /// @{
    [[nodiscard]] ObjectType getType() const override;
    /// The skeleton's manual bounding volumes, where it has them, else the engine's for this object.
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
    template <typename ConstructFirst>
    void buildFromScript(int levelCount, S_Script& skinScript, const int* blockIndices, const float* distances,
                         const ConstructFirst& constructFirst);
    TW_VertexAnimation& addLevel();
    void enterLevel(int level, float range);
    [[nodiscard]] TW_VertexAnimation& getUsedOrLast() const;

    bool m_bConstructed;
    P_LODObject* m_pEngineLODObject;
    int m_iLevelCount;
    S_Vector<TW_VertexAnimation*> m_vecLevels;
};
}  // namespace TW2
