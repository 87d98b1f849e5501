#include "convert/converter.h"

#include "convert/bind_pose.h"
#include "convert/clip_writer.h"
#include "convert/material_builder.h"
#include "convert/output_files.h"
#include "convert/precision.h"
#include "convert/scene_writer.h"
#include "convert/script_writer.h"
#include "convert/unique_names.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace TW2::convert
{
namespace
{
constexpr double toleranceOfSize = 1.0 / 2000.0;
constexpr double defaultDegrees = 0.1;
constexpr const char* skinName = "skin";

std::string makeFileName(const std::string& text)
{
    std::string name;
    for (const char c : text)
    {
        const auto byte = static_cast<unsigned char>(c);
        name += std::isalnum(byte) != 0 || c == '-' ? static_cast<char>(std::tolower(byte)) : '_';
    }
    return name;
}

/// One line of text: line ends in a name would end a comment early.
std::string makeLine(std::string text)
{
    std::ranges::replace_if(
        text, [](unsigned char c) { return c < 0x20; }, ' ');
    return text;
}

class Converter
{
public:
    Converter(Model model, const Options& options) : m_model(std::move(model)), m_options(options)
    {
        m_strBase = makeFileName(options.m_strName.empty() ? m_model.m_strName : options.m_strName);
        m_summary.m_bSkinned = m_model.isSkinned();
    }

    Summary convert(const std::string& modelFile, const std::string& folder)
    {
        m_pose = findBindPose(m_model);
        chooseTolerance();
        const MaterialListChunk materials = buildMaterials(m_model, m_files);
        m_summary.m_uiTextures = m_files.getCount();
        if (m_summary.m_bSkinned)
        {
            addSkinnedObject(materials);
        }
        else
        {
            addRigidObject(materials);
        }
        addScript(modelFile);
        m_summary.m_uiNodes = m_model.m_vecNodes.size();
        m_summary.m_uiMaterials = m_model.m_vecSurfaces.size();
        m_summary.m_uiCameras = m_model.m_vecCameras.size();
        m_summary.m_uiLights = m_model.m_vecLights.size();
        m_summary.m_vecWarnings = m_model.m_vecWarnings;
        m_summary.m_vecFiles = m_files.write(folder);
        m_summary.m_strScript = m_summary.m_vecFiles.back();
        return std::move(m_summary);
    }

private:
    void chooseTolerance()
    {
        if (m_options.m_tolerance)
        {
            m_summary.m_tolerance = *m_options.m_tolerance;
            return;
        }
        Vector3d low;
        Vector3d high;
        bool first = true;
        for (std::size_t i = 0; i < m_model.m_vecMeshes.size(); ++i)
        {
            for (const Vector3& position : m_model.m_vecMeshes[i].m_vecPositions)
            {
                const Vector3d p = m_pose.m_vecMeshToSkin[i].transformPoint(toDouble(position));
                low = first ? p : Vector3d{std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
                high = first ? p : Vector3d{std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
                first = false;
            }
        }
        m_summary.m_tolerance = {std::max((high - low).length() * toleranceOfSize, 1e-9), defaultDegrees};
    }

    void addSkinnedObject(const MaterialListChunk& materials)
    {
        ScriptBlock& skeleton = m_vecBlocks.emplace_back();
        skeleton.m_strName = "skeleton";
        skeleton.m_strComment = "The bones and their animations; never drawn.";
        skeleton.m_strGeometryFile = m_strBase + "_skeleton.tw";
        S_MemoryFileWriter bones;
        writeSkeleton(bones, m_model, m_pose.m_vecLocal);
        writeStage(bones, m_model, m_pose.m_vecLocal, m_pose.m_vecWorld);
        m_files.add(skeleton.m_strGeometryFile, bones);
        addAnimations(skeleton);

        ScriptBlock skin;
        skin.m_strName = skinName;
        skin.m_strComment = "What is drawn: one mesh that hangs on the bones.";
        skin.m_strGeometryFile = m_strBase + "_skin.tw";
        skin.m_strSkinFile = m_strBase + ".skd";
        addSkin(skin, materials);
        m_vecBlocks.push_back(skin);
    }

    void addSkin(const ScriptBlock& block, const MaterialListChunk& materials)
    {
        GeometryBuilder geometry;
        const std::vector<int> holders = findHolders();
        for (std::size_t i = 0; i < m_model.m_vecMeshes.size(); ++i)
        {
            const Mesh& mesh = m_model.m_vecMeshes[i];
            if (holders[i] >= 0 || !mesh.m_vecBones.empty())
            {
                geometry.add(mesh, m_pose.m_vecMeshToSkin[i],
                             chooseInfluences(mesh, std::max(holders[i], 0), m_summary.m_influences));
            }
        }
        MeshChunk record;
        record.name = skinName;
        geometry.fill(record, m_model.m_vecSurfaces);
        S_MemoryFileWriter meshes;
        meshes << materials << record;
        m_files.add(block.m_strGeometryFile, meshes);

        SkinChunk binding;
        binding.objectNames.emplace_back(skinName);
        std::vector<int> boneOfNode;
        for (const Node& node : m_model.m_vecNodes)
        {
            boneOfNode.push_back(static_cast<int>(binding.boneNames.size()));
            binding.boneNames.emplace_back(node.m_strName.c_str());
        }
        geometry.fill(binding, boneOfNode);
        S_MemoryFileWriter skinData;
        skinData << binding;
        m_files.add(block.m_strSkinFile, skinData);
        m_summary.m_uiVertices = geometry.getVertexCount();
        m_summary.m_uiTriangles = geometry.getTriangleCount();
        m_summary.m_uiGroups = geometry.getGroupCount();
    }

    /// The node that each mesh hangs on; -1 for a mesh that none shows.
    [[nodiscard]] std::vector<int> findHolders() const
    {
        std::vector<int> holders(m_model.m_vecMeshes.size(), -1);
        for (std::size_t node = m_model.m_vecNodes.size(); node-- > 0;)
        {
            for (const int mesh : m_model.m_vecNodes[node].m_vecMeshes)
            {
                holders[static_cast<std::size_t>(mesh)] = static_cast<int>(node);
            }
        }
        return holders;
    }

    void addRigidObject(const MaterialListChunk& materials)
    {
        ScriptBlock& object = m_vecBlocks.emplace_back();
        object.m_strName = "object";
        object.m_strGeometryFile = m_strBase + ".tw";
        S_MemoryFileWriter writer;
        writer << materials;
        const GeometrySize size = writeGeometry(writer, m_model, m_pose.m_vecLocal);
        writeStage(writer, m_model, m_pose.m_vecLocal, m_pose.m_vecWorld);
        m_files.add(object.m_strGeometryFile, writer);
        m_summary.m_uiVertices = size.m_uiVertices;
        m_summary.m_uiTriangles = size.m_uiTriangles;
        m_summary.m_uiGroups = size.m_uiGroups;
        addAnimations(object);
    }

    void addAnimations(ScriptBlock& block)
    {
        UniqueNames names("clip");
        bool scaled = false;
        if (m_summary.m_bSkinned || !m_model.m_vecClips.empty())
        {
            addRecords(block, 0, names.make("rest"), makeStillRecords(m_model, m_pose.m_vecLocal),
                       m_summary.m_bSkinned ? "the pose the skin was bound in" : "the model at rest");
        }
        int index = 1;
        for (const Clip& clip : m_model.m_vecClips)
        {
            scaled |= addClip(block, index++, clip, names);
        }
        // Rows of unit length would take a scale away.
        block.m_strCrossMode = scaled ? "linear" : "orthonormalized";
    }

    [[nodiscard]] Seam chooseSeam(const ReducedClip& clip) const
    {
        switch (m_options.m_eLoop)
        {
            case Options::Loop::Always:
                return clip.m_eSeam == Seam::Open ? Seam::SameFrame : clip.m_eSeam;
            case Options::Loop::Never:
                return Seam::Open;
            case Options::Loop::Automatic:
                break;
        }
        return clip.m_eSeam;
    }

    /// Returns whether the clip scales anything.
    bool addClip(ScriptBlock& block, int index, const Clip& clip, UniqueNames& names)
    {
        // The library plays in single precision: what that adds is made up for by a tighter reduction.
        constexpr double tighter = 0.7;
        constexpr int mostTries = 4;
        Tolerance tolerance = m_summary.m_tolerance;
        ReducedClip reduced;
        std::vector<KeyframeAnimationChunk> records;
        ClipSummary summary;
        for (int tries = 0; tries < mostTries; ++tries)
        {
            reduced = reduceClip(m_model, clip, tolerance, m_options.m_iFrameRate);
            records = makeRecords(m_model, reduced, chooseSeam(reduced));
            summary.m_error = measurePlayback(m_model, clip, records, reduced.m_iFrameRate);
            if (summary.m_error.isWithin(m_summary.m_tolerance) || !reduced.m_error.isWithin(tolerance))
            {
                break;
            }
            tolerance = {tolerance.m_dDistance * tighter, tolerance.m_dDegrees * tighter};
        }
        summary.m_iIndex = index;
        summary.m_strName = clip.m_strName;
        summary.m_iFrameRate = reduced.m_iFrameRate;
        summary.m_uiFrames = reduced.m_uiFrames;
        summary.m_bLooping = chooseSeam(reduced) != Seam::Open;
        summary.m_uiSampledKeys = reduced.m_uiSampledKeys;
        bool scaled = false;
        for (const Track& track : reduced.m_vecTracks)
        {
            summary.m_uiKeys += track.m_vecKeys.size();
            scaled |= track.m_eForm != TrackForm::Rigid;
        }
        summary.m_strFile = addRecords(block, index, names.make(makeFileName(clip.m_strName)), records,
                                       makeLine(clip.m_strName) + ": " + std::to_string(reduced.m_uiFrames) +
                                           " frames at " + std::to_string(reduced.m_iFrameRate) + " per second" +
                                           (summary.m_bLooping ? ", looping" : ""));
        summary.m_uiBytes = m_files.getSize(summary.m_strFile);
        m_summary.m_vecClips.push_back(std::move(summary));
        return scaled;
    }

    std::string addRecords(ScriptBlock& block, int index, const std::string& name,
                           const std::vector<KeyframeAnimationChunk>& records, const std::string& comment)
    {
        const std::string file = m_strBase + "_" + name + ".anim.tw";
        S_MemoryFileWriter writer;
        write(writer, records);
        m_files.add(file, writer);
        block.m_vecAnimations.push_back({index, file, comment});
        return file;
    }

    void addScript(const std::string& modelFile)
    {
        const std::string comment = "Made by tw2 convert from " +
                                    makeLine(std::filesystem::path(modelFile).filename().string()) +
                                    ".\nFile names are relative to the current directory of the program that loads it.";
        m_files.add(m_strBase + ".script", makeScript(comment, m_vecBlocks));
    }

    Model m_model;
    const Options& m_options;
    std::string m_strBase;
    BindPose m_pose;
    OutputFiles m_files;
    std::vector<ScriptBlock> m_vecBlocks;
    Summary m_summary;
};
}  // namespace

Summary convertModel(const std::string& modelFile, const std::string& folder, const Options& options)
{
    return Converter(importModel(modelFile, options.m_import), options).convert(modelFile, folder);
}
}  // namespace TW2::convert
