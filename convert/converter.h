#pragma once

#include "convert/clip_fitting.h"
#include "convert/geometry_builder.h"
#include "convert/model_import.h"
#include "convert/track_reduction.h"

#include <cstddef>
#include <functional>
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
    /// Clips to take, each as `chooseClips` reads it; empty: all.
    std::vector<std::string> m_vecClips;
    bool m_bMergeClips = false;  ///< all clips that are taken become one
    std::string m_strTravel;     ///< whose motion is the object's travel, as `chooseTravel` reads it; empty: none's
    std::string m_strMapFile;    ///< which node is which between models, as `NodeMap` reads it; empty: names tell
    /// How many threads reduce the clips; what is written is the same with any number. 1: only the calling one does.
    unsigned int m_uiThreads = 1;
    std::string m_strBlock;  ///< of `addMotion`: the script's block; empty: the only one that is not a skin
    /// Is told what begins now, and which part of the work is behind it, 0 to 1; empty: nobody is told.
    std::function<void(const std::string& step, double part)> m_onProgress;

    void tell(const std::string& step, double part) const
    {
        if (m_onProgress)
        {
            m_onProgress(step, part);
        }
    }
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
    double m_dLonger = 0.0;           ///< seconds by which whole frames last longer than the model's clip
    std::size_t m_uiSampledKeys = 0;  ///< keys before the reduction
    std::size_t m_uiKeys = 0;         ///< keys written
    std::size_t m_uiBytes = 0;
    std::string m_strTravelFile;  ///< empty when it stays where it is
    std::size_t m_uiEvents = 0;
    /// Of the written tracks as the library plays them, with the travel put back, against the model's own motion.
    PoseError m_error;
};

/// What a conversion did.
struct Summary
{
    std::string m_strScript;                ///< full name of the script
    std::vector<std::string> m_vecFiles;    ///< what was written, the script last
    std::vector<std::string> m_vecSources;  ///< what was read: models, buffers and pictures
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
    std::vector<ClipSummary> m_vecClips;           ///< without the rest pose, which is animation 0
    std::vector<MotionSource> m_vecMotionSources;  ///< the files that gave clips to another one's body
    std::vector<std::string> m_vecWarnings;
};

/// Converts a model into a folder that the library loads: geometry, skeleton and skin data, an animation file per clip,
/// textures, and a commented script. Animation 0 is the pose that the skin was bound in (of a rigid model: its
/// unanimated pose); the model's clips follow from 1.
///
/// Of several files, which make one object, the first that shows anything gives the body and all give their clips,
/// fitted to its skeleton as `fitClips` says.
///
/// Nothing is written before the whole conversion has succeeded. Throws ConvertException or S_FileException.
Summary convertModel(const std::vector<std::string>& modelFiles, const std::string& folder, const Options& options);

/// Gives the clips of models to a character that was converted before: animation files beside its own, and further
/// animation blocks in its script, of which nothing else changes. Clips are fitted to its skeleton as `fitClips` says.
///
/// Nothing is written before all has succeeded, the script last. Throws ConvertException, also when the character has
/// an animation of a clip's name, S_FileException or S_ScriptException.
Summary addMotion(const std::vector<std::string>& modelFiles, const std::string& scriptFile, const Options& options);
}  // namespace TW2::convert
