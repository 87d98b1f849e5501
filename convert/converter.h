#pragma once

#include "convert/geometry_builder.h"
#include "convert/model_import.h"
#include "convert/track_reduction.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace TW2::convert
{
/// How a model is converted.
struct Options
{
    enum class Loop
    {
        Automatic,  ///< clips whose last pose is their first one
        Always,
        Never
    };
    ImportOptions m_import;
    std::optional<Tolerance> m_tolerance;  ///< default: a two-thousandth of the model's size, 0.1 degrees
    int m_iFrameRate = 0;                  ///< frames per second; 0: chosen for each clip by its keys
    Loop m_eLoop = Loop::Automatic;
    std::string m_strName;  ///< what the written files are called; empty: as the model's file
};

/// What became of one clip.
struct ClipSummary
{
    int m_iIndex = 0;  ///< animation index in the script
    std::string m_strName;
    std::string m_strFile;
    int m_iFrameRate = 0;
    unsigned int m_uiFrames = 0;
    bool m_bLooping = false;
    std::size_t m_uiSampledKeys = 0;  ///< keys before the reduction
    std::size_t m_uiKeys = 0;         ///< keys written
    std::size_t m_uiBytes = 0;
    PoseError m_error;  ///< of the written tracks as the library plays them, against the model's own motion
};

/// What a conversion did.
struct Summary
{
    std::string m_strScript;  ///< full name of the script
    std::vector<std::string> m_vecFiles;
    bool m_bSkinned = false;
    std::size_t m_uiNodes = 0;
    std::size_t m_uiVertices = 0;
    std::size_t m_uiTriangles = 0;
    std::size_t m_uiGroups = 0;
    std::size_t m_uiMaterials = 0;
    std::size_t m_uiTextures = 0;
    std::size_t m_uiCameras = 0;
    std::size_t m_uiLights = 0;
    InfluenceSummary m_influences;
    Tolerance m_tolerance;
    std::vector<ClipSummary> m_vecClips;  ///< without the rest pose, which is animation 0
    std::vector<std::string> m_vecWarnings;
};

/// Converts a model into a folder that the library loads: geometry, skeleton and skin data, an animation file per clip,
/// textures, and a commented script. Animation 0 is the pose that the skin was bound in (of a rigid model: its
/// unanimated pose); the model's clips follow from 1.
///
/// Nothing is written before the whole conversion has succeeded. Throws ConvertException or S_FileException.
Summary convertModel(const std::string& modelFile, const std::string& folder, const Options& options);
}  // namespace TW2::convert
