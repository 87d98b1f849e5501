#include "convert/converter.h"

#include "convert/animation_writer.h"
#include "convert/box.h"
#include "convert/clip_gathering.h"
#include "convert/drawn_sample.h"
#include "convert/material_builder.h"
#include "convert/output_files.h"
#include "convert/precision.h"
#include "convert/scene_writer.h"
#include "convert/script_writer.h"
#include "convert/skeleton.h"
#include "convert/surface_plan.h"
#include "convert/texture_files.h"
#include "convert/travel.h"
#include "convert/warnings.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <optional>

namespace TW2::convert
{
namespace
{
constexpr const char* skinName = "skin";

class Converter
{
public:
    Converter(const Model& model, const std::string& modelFile, const Options& options)
        : m_model(model),
          m_strModelFile(modelFile),
          m_options(options),
          m_vecWarnings(model.m_vecWarnings),
          m_skeleton(makeSkeleton(model, m_vecWarnings)),
          m_bounds(model, m_skeleton)
    {
        std::vector<Matrixd> rest;
        for (const Joint& joint : m_skeleton.m_vecJoints)
        {
            rest.push_back(joint.m_world);
        }
        m_bounds.add(rest);
        m_strBase = makeFileName(options.m_strName.empty() ? m_model.m_strName : options.m_strName);
        m_summary.m_bSkinned = m_model.isSkinned();
    }

    Summary convert(const std::string& folder)
    {
        m_summary.m_tolerance = m_options.m_tolerance.value_or(chooseTolerance(m_model, m_skeleton));
        std::optional<TravelChoice> travel;
        if (!m_options.m_strTravel.empty())
        {
            travel = chooseTravel(m_model, m_options.m_strTravel, m_strModelFile);
        }
        // Clips are reduced while the pictures and the geometry are written.
        AnimationWriter clips(m_model, m_skeleton, m_options, m_summary.m_tolerance, travel, m_strBase, m_files,
                              m_bounds);
        Warnings warnings;
        TextureFiles textures(m_model.m_vecPictures, m_files, warnings);
        m_vecPlans = planSurfaces(m_model, textures, warnings);
        const MaterialListChunk materials = buildMaterials(m_model, m_vecPlans);
        m_summary.m_uiTextures = m_files.getCount();
        if (m_summary.m_bSkinned)
        {
            addSkinnedObject(materials, clips);
        }
        else
        {
            addRigidObject(materials, clips);
        }
        for (ScriptBlock& block : m_vecBlocks)
        {
            block.m_bounds = m_bounds.getBox();
            block.m_dRadius = m_bounds.getRadius();
        }
        addScript();
        m_summary.m_uiNodes = m_skeleton.m_vecJoints.size();
        m_summary.m_uiMaterials = m_model.m_vecSurfaces.size();
        m_summary.m_uiCameras = m_model.m_vecCameras.size();
        m_summary.m_uiLights = m_model.m_vecLights.size();
        m_summary.m_vecWarnings = m_vecWarnings;
        for (std::string& line : warnings.makeLines())
        {
            m_summary.m_vecWarnings.push_back(std::move(line));
        }
        m_summary.m_vecSources = m_model.m_vecSources;
        for (const Picture& picture : m_model.m_vecPictures)
        {
            if (!picture.m_strFile.empty())
            {
                m_summary.m_vecSources.push_back(picture.m_strFile);
            }
        }
        m_summary.m_vecFiles = m_files.write(folder);
        m_summary.m_strScript = m_summary.m_vecFiles.back();
        return std::move(m_summary);
    }

private:
    [[nodiscard]] bool isShown(std::size_t mesh) const
    {
        return m_skeleton.m_vecHolders[mesh] >= 0 || !m_model.m_vecMeshes[mesh].m_vecBones.empty();
    }

    void addSkinnedObject(const MaterialListChunk& materials, AnimationWriter& clips)
    {
        ScriptBlock skeleton;
        skeleton.m_strName = "skeleton";
        skeleton.m_strComment = "The bones and their animations; never drawn.";
        skeleton.m_strGeometryFile = m_strBase + "_skeleton.tw";
        S_MemoryFileWriter bones;
        writeSkeleton(bones, m_skeleton);
        writeStage(bones, m_model, m_skeleton);
        m_files.add(skeleton.m_strGeometryFile, bones);

        ScriptBlock skin;
        skin.m_strName = skinName;
        skin.m_strComment = "What is drawn: one mesh that hangs on the bones.";
        skin.m_strGeometryFile = m_strBase + "_skin.tw";
        skin.m_strSkinFile = m_strBase + ".skd";
        addSkin(skin, materials);
        addAnimations(skeleton, clips);
        m_vecBlocks.push_back(std::move(skeleton));
        m_vecBlocks.push_back(std::move(skin));
    }

    void addSkin(const ScriptBlock& block, const MaterialListChunk& materials)
    {
        GeometryBuilder geometry;
        for (std::size_t i = 0; i < m_model.m_vecMeshes.size(); ++i)
        {
            const Mesh& mesh = m_model.m_vecMeshes[i];
            if (isShown(i))
            {
                const Mesh drawn =
                    arrangeMesh(mesh, m_vecPlans[static_cast<std::size_t>(mesh.m_iMaterial)].m_vecLayers);
                geometry.add(drawn, m_skeleton.m_vecMeshToSkin[i],
                             chooseInfluences(drawn, std::max(m_skeleton.m_vecHolders[i], 0), m_skeleton.m_vecBones[i],
                                              m_summary.m_influences));
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
        for (const Joint& joint : m_skeleton.m_vecJoints)
        {
            binding.boneNames.emplace_back(joint.m_strName.c_str());
        }
        geometry.fill(binding);
        S_MemoryFileWriter skinData;
        skinData << binding;
        m_files.add(block.m_strSkinFile, skinData);
        m_summary.m_uiVertices = geometry.getVertexCount();
        m_summary.m_uiTriangles = geometry.getTriangleCount();
        m_summary.m_uiGroups = geometry.getGroupCount();
    }

    void addRigidObject(const MaterialListChunk& materials, AnimationWriter& clips)
    {
        ScriptBlock& object = m_vecBlocks.emplace_back();
        object.m_strName = "object";
        object.m_strGeometryFile = m_strBase + ".tw";
        S_MemoryFileWriter writer;
        writer << materials;
        const GeometrySize size = writeGeometry(writer, m_model, m_vecPlans, m_skeleton);
        writeStage(writer, m_model, m_skeleton);
        m_files.add(object.m_strGeometryFile, writer);
        m_summary.m_uiVertices = size.m_uiVertices;
        m_summary.m_uiTriangles = size.m_uiTriangles;
        m_summary.m_uiGroups = size.m_uiGroups;
        addAnimations(object, clips);
    }

    void addAnimations(ScriptBlock& block, AnimationWriter& clips)
    {
        if (m_summary.m_bSkinned || !m_model.m_vecClips.empty())
        {
            block.m_vecAnimations.push_back(
                clips.addRest(m_summary.m_bSkinned ? "the pose the skin was bound in" : "the model at rest"));
        }
        std::ranges::move(clips.addClips(1), std::back_inserter(block.m_vecAnimations));
        // Rows of unit length would take a scale away.
        block.m_strCrossMode = clips.isScaled() ? "linear" : "orthonormalized";
        m_summary.m_vecClips = clips.getSummaries();
    }

    void addScript()
    {
        const std::string comment =
            "Made by tw2 convert from " + makeLine(std::filesystem::path(m_strModelFile).filename().string()) +
            ".\nFiles are looked for in the current directory of the program that loads it, then beside this script.";
        m_files.add(m_strBase + ".script", makeScript(comment, m_vecBlocks));
    }

    const Model& m_model;
    std::string m_strModelFile;
    const Options& m_options;
    std::vector<std::string> m_vecWarnings;
    Skeleton m_skeleton;
    DrawnBounds m_bounds;
    std::string m_strBase;
    OutputFiles m_files;
    std::vector<SurfacePlan> m_vecPlans;
    std::vector<ScriptBlock> m_vecBlocks;
    Summary m_summary;
};
}  // namespace

Summary convertModel(const std::vector<std::string>& modelFiles, const std::string& folder, const Options& options)
{
    std::vector<Model> models = readModels(modelFiles, options);
    const auto showsAnything = [](const Model& model)
    {
        return std::any_of(model.m_vecMeshes.begin(), model.m_vecMeshes.end(),
                           [](const Mesh& mesh) { return !mesh.m_vecIndices.empty(); });
    };
    const auto found = std::find_if(models.begin(), models.end(), showsAnything);
    const auto first = found == models.end() ? models.begin() : found;
    const std::string& bodyFile = modelFiles[static_cast<std::size_t>(first - models.begin())];
    std::vector<MotionSource> sources;
    gatherClips(*first, models, bodyFile, options, sources);
    Summary summary = Converter(*first, bodyFile, options).convert(folder);
    summary.m_vecSources.insert(summary.m_vecSources.begin(), modelFiles.begin(), modelFiles.end());
    summary.m_vecMotionSources = std::move(sources);
    return summary;
}
}  // namespace TW2::convert
