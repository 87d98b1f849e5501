#pragma once

#include <tw2/object/virtual_object.h>

#include <memory>
#include <string>
#include <vector>

class P_LODObject;

namespace TW2
{
class TW_ObjectAnimation;
}

namespace TW2::viewer
{
/// What a block of a script describes.
struct ScriptEntry
{
    struct Animation
    {
        int index = 0;
        std::string file;
        std::string name;  ///< known once the object is built
    };
    std::string name;
    std::string geometryFile;
    std::string skinFile;  ///< empty: not a skin
    std::string crossMode;
    float distance = 0.0F;  ///< level-of-detail range; 0: none given
    std::vector<Animation> animations;
};

/// Whether a file is a modelling tool's, by its name's ending.
[[nodiscard]] bool isModelFile(const std::string& file);

/// The blocks of a script file, as they stand in it. A modelling tool's file throws Failure that says what to do.
[[nodiscard]] std::vector<ScriptEntry> readScript(const std::string& scriptFile);

/// Which of a script's blocks are to be built.
struct Selection
{
    std::string block;                ///< empty: the first skin, else the first block
    std::string skeleton;             ///< of a skin; empty: the block "skeleton", else the first one that is not a skin
    std::vector<std::string> levels;  ///< several: levels of detail, instead of `block`
};

/// An animated object built from a script file, ready to be played.
///
/// File names in the script count from the script's own folder. Everything that fails throws: exceptions of the
/// libraries, or Failure for a selection that the script does not have.
class AnimatedScript
{
public:
    AnimatedScript(const std::string& scriptFile, const Selection& selection);
    ~AnimatedScript();
    AnimatedScript(const AnimatedScript&) = delete;
    AnimatedScript& operator=(const AnimatedScript&) = delete;

    [[nodiscard]] TW2::TW_VirtualObject& getObject() noexcept { return *m_object; }
    /// The object animation whose meshes are the bones: the object itself, or its skeleton.
    [[nodiscard]] TW2::TW_ObjectAnimation& getSkeleton() noexcept { return *m_skeleton; }
    /// The object animation that is drawn: the object itself, or its skin; of levels of detail the shown one's, or the
    /// first one's while none is.
    [[nodiscard]] TW2::TW_ObjectAnimation& getDrawn() const noexcept;
    /// What chooses the level of detail; null without any.
    [[nodiscard]] P_LODObject* getLevels() const noexcept;
    /// The block that gives the animations.
    [[nodiscard]] const ScriptEntry& getAnimatedEntry() const noexcept { return m_animated; }
    [[nodiscard]] bool isSkinned() const noexcept { return m_skeleton != m_drawn; }
    /// A copy of the object, of the same kind, that shares geometry and tracks and hangs under nothing.
    [[nodiscard]] std::unique_ptr<TW2::TW_VirtualObject> copyObject() const;
    /// Animation index for a number, for a name, or for a part of a name or of a file's name (any letter case). Throws
    /// Failure, with what there is, when none or several fit.
    [[nodiscard]] int findAnimation(const std::string& text) const;
    /// Mesh index of the bone of that name (any letter case, or a number); throws Failure with what is like it.
    [[nodiscard]] int findBone(const std::string& name) const;
    /// The first animation that lasts longer than one frame; else the first one; -1 when there is none.
    [[nodiscard]] int chooseAnimation() const;

private:
    void build(const std::string& scriptFile, const std::vector<ScriptEntry>& entries, const Selection& selection);

    std::unique_ptr<TW2::TW_VirtualObject> m_object;
    TW2::TW_ObjectAnimation* m_skeleton = nullptr;
    TW2::TW_ObjectAnimation* m_drawn = nullptr;
    ScriptEntry m_animated;
};
}  // namespace TW2::viewer
