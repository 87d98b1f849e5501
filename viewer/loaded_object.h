#pragma once

#include "viewer/animated_script.h"
#include "viewer/playback.h"

#include <memory>
#include <string>
#include <vector>

namespace TW2::viewer
{
/// An animated object from a script with everything that somebody who looks at it chooses from: the script's objects,
/// clips, bones, levels of detail, animated textures.
class LoadedObject
{
public:
    struct Bone
    {
        std::string m_strName;
        int m_iParent = -1;  ///< a bone before this one; -1: none
    };
    /// An object of the script that can be looked at.
    struct Choice
    {
        std::string m_strName;                 ///< block; of levels of detail the first one's
        std::vector<std::string> m_vecLevels;  ///< blocks of levels of detail, finest first; empty: one block
    };
    struct Material
    {
        std::string m_strName;
        const char* m_szSetUp = "";  ///< how its layers are put together
    };
    struct TextureSet
    {
        std::string m_strName;
        float m_fLength = 0.0F;  ///< seconds
    };

    /// `choice`: what to look at; empty: the first skin, with its levels of detail where the script has several skins
    /// with a distance, else the first block. Throws what AnimatedScript throws.
    explicit LoadedObject(const std::string& scriptFile, const std::string& choice = {});

    [[nodiscard]] const std::string& getScriptFile() const noexcept { return m_strScriptFile; }
    /// The script and every file that it names, as they were found; what has to be watched for changes.
    [[nodiscard]] const std::vector<std::string>& getFiles() const noexcept { return m_vecFiles; }
    [[nodiscard]] const std::vector<Choice>& getChoices() const noexcept { return m_vecChoices; }
    [[nodiscard]] const Choice& getChoice() const noexcept { return m_vecChoices[m_uiChoice]; }

    [[nodiscard]] AnimatedScript& getScript() noexcept { return m_script; }
    [[nodiscard]] TW_VirtualObject& getObject() noexcept { return m_script.getObject(); }
    [[nodiscard]] TW_ObjectAnimation& getSkeleton() noexcept { return m_script.getSkeleton(); }
    /// Of levels of detail what is shown now.
    [[nodiscard]] TW_ObjectAnimation& getDrawn() const noexcept { return m_script.getDrawn(); }
    [[nodiscard]] bool isSkinned() const noexcept { return m_script.isSkinned(); }
    /// Full names of the geometry files: lights and cameras lie in them.
    [[nodiscard]] const std::vector<std::string>& getGeometryFiles() const noexcept { return m_vecGeometryFiles; }

    /// By mesh index.
    [[nodiscard]] const std::vector<Bone>& getBones() const noexcept { return m_vecBones; }
    /// Mesh index of the bone of that name (any letter case, or a number); throws Failure with what is like it.
    [[nodiscard]] int findBone(const std::string& name) const { return m_script.findBone(name); }
    [[nodiscard]] const std::vector<Clip>& getClips() const noexcept { return m_vecClips; }
    /// Animation index for a number, a name or a part of one; throws Failure.
    [[nodiscard]] int findClip(const std::string& name) const { return m_script.findAnimation(name); }
    [[nodiscard]] const std::vector<TextureSet>& getTextureSets() const noexcept { return m_vecTextureSets; }
    /// Those of what is drawn.
    [[nodiscard]] std::vector<Material> getMaterials() const;
    /// 1 without levels of detail.
    [[nodiscard]] int getLevelCount() const;
    /// Shows one level whatever the distance; -1: by distance.
    void setLevel(int level);

    /// A copy that shares geometry and tracks, hanging under nothing.
    [[nodiscard]] std::unique_ptr<TW_VirtualObject> copy() const;

private:
    void collectBones();
    void collectClips();
    void collectTextureSets();
    void collectFiles(const std::vector<ScriptEntry>& entries);

    std::string m_strScriptFile;
    std::vector<Choice> m_vecChoices;
    std::size_t m_uiChoice;
    AnimatedScript m_script;
    std::vector<Bone> m_vecBones;
    std::vector<Clip> m_vecClips;
    std::vector<TextureSet> m_vecTextureSets;
    std::vector<std::string> m_vecFiles;
    std::vector<std::string> m_vecGeometryFiles;
    std::vector<float> m_vecRanges;
};
}  // namespace TW2::viewer
