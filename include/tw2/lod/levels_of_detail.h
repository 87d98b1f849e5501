#pragma once

#include <tw2/core/text.h>
#include <tw2/export.h>
#include <tw2/object/forwarding_object.h>

#include <platform/runtime/allocator.h>

class P_LODObject;

namespace TW2
{
class TW_ObjectAnimation;
class TW_VertexAnimation;

/// What animated objects at several levels of detail have in common: a `Level` per level of detail, and the engine's
/// object that shows the one that fits the camera's distance. Hosts use the class of a kind.
template <typename Level>
class TW_LevelsOfDetail : public TW_ForwardingObject
{
public:
    /// @name Levels
    /// @{

    /// The engine's level-of-detail object, which hangs below this object and chooses the level in use.
    [[nodiscard]] P_LODObject* getEngineLODObject() const noexcept { return m_pEngineLODObject; }
    /// Chooses the level in use for the camera now; the scene does it every frame.
    void calculateLOD();
    /// 0 for an object that is not constructed.
    [[nodiscard]] int getLevelCount() const;
    /// Level 0 to `getLevelCount()` - 1; null when the engine shows something else there.
    [[nodiscard]] Level* getLODObject(int level) const;
    /// The level in use; null when none is.
    [[nodiscard]] Level* getUsedLODObject() const;
    /// Replaces the materials of every level by those of a file.
    void loadMaterials(const char* fileName);
    /// The same with a string of the host's.
    template <TW_String File>
    void loadMaterials(const File& fileName)
    {
        loadMaterials(fileName.c_str());
    }
    /// @}

protected:
    /// Not constructed: no levels. A class of its own destructs the object before it goes.
    TW_LevelsOfDetail() = default;
    ~TW_LevelsOfDetail() override = default;

    /// Nothing to do each frame; returns true, so that the levels are always visited.
    bool executeAlways() override { return true; }

    /// @name Building
    /// @{

    /// Makes the engine's object, still without levels: the first step.
    void createLevels(int levelCount);
    /// The next level, which `construct` constructs, shown up to the distance `range`.
    template <typename Construct>
    Level& addLevel(float range, const Construct& construct);
    /// A copy of `source`, whose levels `copyLevel(copy, level)` copies; its name is that of the source and " (clone)".
    template <typename CopyLevel>
    void buildCopy(const TW_LevelsOfDetail& source, const CopyLevel& copyLevel);
    /// Shows the levels.
    void complete() override;
    /// @}

    /// All levels, level 0 first.
    [[nodiscard]] const S_Vector<Level*>& getLevels() const noexcept { return m_vecLevels; }
    /// The level in use; the last one when none is. There must be one.
    [[nodiscard]] Level* getUsedOrLast() const;

private:
    void takeApart() noexcept override;
    [[nodiscard]] Level* findLevel(P_BaseObject* shown) const;

    P_LODObject* m_pEngineLODObject = nullptr;
    int m_iLevelCount = 0;
    S_Vector<Level*> m_vecLevels;
};

extern template class TW2_EXTERN_TEMPLATE_API TW_LevelsOfDetail<TW_ObjectAnimation>;
extern template class TW2_EXTERN_TEMPLATE_API TW_LevelsOfDetail<TW_VertexAnimation>;
}  // namespace TW2
