#pragma once

#include <platform/export.h>
#include <platform/runtime/allocator.h>
#include <platform/scene/base_object.h>

/// Shows one of several objects, chosen by the distance of the context's current camera.
///
/// Level i is meant for distances up to its range; ranges rise from level to level. The objects hang below the
/// level-of-detail object and are not owned; one that is destroyed or hung elsewhere leaves its level empty. The scene
/// visits only the level in use.
class TW2_PLATFORM_API P_LODObject : public P_BaseObject
{
public:
    /// `levelCount` empty levels; throws P_SceneException for a negative count.
    explicit P_LODObject(int levelCount);
    ~P_LODObject() override;

    [[nodiscard]] P_Context* getContext() const override;
    [[nodiscard]] ObjectType getType() const override;
    [[nodiscard]] const char* getObjectType() const override;

    /// @name Levels
    /// An index that is not a level throws P_SceneException.
    /// @{

    /// Levels, each with an object or without.
    [[nodiscard]] int getLevelCount() const noexcept { return static_cast<int>(m_vecLevels.size()); }
    /// Enters an object for a level and hangs it below this object; an object that was there is taken out. `range`: the
    /// largest distance at which the level is shown. A null object empties the level and sets its range. An object
    /// stands for one level at a time: its earlier level becomes empty.
    void setLODObject(int level, P_BaseObject* object, float range);
    /// Takes the level's object out; nothing happens when the level is empty. The range stays.
    void removeLODObject(int level);
    /// Null when the level is empty.
    [[nodiscard]] P_BaseObject* getLODObject(int level) const;
    /// 0 until set.
    [[nodiscard]] float getRange(int level) const;
    /// @}

    /// @name Level in use
    /// @{

    /// Chooses the first level that holds an object and whose range is not below the camera's distance from this
    /// object; none when the camera is too far for all. Without a camera the first level that holds an object. The
    /// scene does this every frame.
    void calculateLOD();
    /// The object in use; null before the first `calculateLOD` and when no level is in use.
    [[nodiscard]] P_BaseObject* getUsedLODObject() const noexcept;
    /// The object that `calculateLOD` would put in use now.
    [[nodiscard]] P_BaseObject* getNextLODObject() const noexcept;
    /// The level in use; -1 for none.
    [[nodiscard]] int getUsedLevel() const noexcept { return m_iUsedLevel; }
    /// @}

protected:
    bool executeAlways() override;

private:
    friend class P_BaseObject;
    struct Level
    {
        P_BaseObject* m_pObject = nullptr;
        float m_fRange = 0.0F;
    };
    [[nodiscard]] Level& access(int level);
    [[nodiscard]] const Level& access(int level) const;
    [[nodiscard]] int findLevel() const noexcept;
    void forgetChild(const P_BaseObject* child) noexcept;

    S_Vector<Level> m_vecLevels;
    int m_iUsedLevel = -1;
};
