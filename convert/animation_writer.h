#pragma once

#include "convert/clip_reducer.h"
#include "convert/converter.h"
#include "convert/output_files.h"
#include "convert/script_writer.h"
#include "convert/travel.h"
#include "convert/unique_names.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace TW2::convert
{
/// Lower case; what is not a letter or a digit of ASCII becomes "_".
[[nodiscard]] std::string makeFileName(const std::string& text);
/// One line of text: line ends in a name would end a comment early.
[[nodiscard]] std::string makeLine(std::string text);

/// A two-thousandth of the model's size, 0.1 degrees.
[[nodiscard]] Tolerance chooseTolerance(const Model& model, const Skeleton& skeleton);

/// Makes animation files of a model's clips, and tells what a script says about them. The clips are reduced on
/// `Options::m_uiThreads` threads from its construction on.
class AnimationWriter
{
public:
    /// All must outlive the writer. `travel`: what is taken out of all clips, if anything. `base` begins the names of
    /// the files, which go to `files`; what the clips draw goes to `bounds`.
    AnimationWriter(const Model& model, const Skeleton& skeleton, const Options& options, const Tolerance& tolerance,
                    const std::optional<TravelChoice>& travel, const std::string& base, OutputFiles& files,
                    DrawnBounds& bounds);

    /// Gives files other names than those that this folder has already.
    void avoidFilesIn(const std::string& folder) { m_strAvoided = folder; }
    /// The pose at rest, as animation 0.
    [[nodiscard]] ScriptBlock::Animation addRest(const std::string& comment);
    /// All clips of the model, in their order; call it once. Throws what reducing them throws.
    [[nodiscard]] std::vector<ScriptBlock::Animation> addClips(int firstIndex);
    /// Whether any clip scales anything.
    [[nodiscard]] bool isScaled() const noexcept { return m_bScaled; }
    /// What became of the clips, in their order.
    [[nodiscard]] const std::vector<ClipSummary>& getSummaries() const noexcept { return m_vecSummaries; }

private:
    [[nodiscard]] ScriptBlock::Animation addClip(int index, const Clip& clip, const WrittenClip& written);
    [[nodiscard]] std::string makeClipName(const std::string& clip);
    [[nodiscard]] std::string addRecords(const std::string& name, const std::vector<KeyframeAnimationChunk>& records);

    const Model& m_model;
    const Skeleton& m_skeleton;
    const Options& m_options;
    std::string m_strBase;
    OutputFiles& m_files;
    DrawnBounds& m_bounds;
    ClipReducer m_reducer;
    ClipsAhead m_clipsAhead;
    std::string m_strAvoided;
    UniqueNames m_fileNames{"clip"};
    UniqueNames m_scriptNames{"clip"};
    bool m_bScaled = false;
    std::vector<ClipSummary> m_vecSummaries;
};
}  // namespace TW2::convert
