#include "convert/animation_writer.h"
#include "convert/character_script.h"
#include "convert/clip_gathering.h"
#include "convert/convert_exception.h"
#include "convert/converter.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <sstream>

namespace TW2::convert
{
namespace
{
/// A script that had two animations of one name could be played by number alone.
void checkNames(const CharacterScript& character, const std::vector<Clip>& clips)
{
    if (clips.empty())
    {
        throw ConvertException(character.m_strFile.c_str(), "the models give no clips to it");
    }
    for (const Clip& clip : clips)
    {
        std::string name = makeLine(clip.m_strName);
        std::transform(name.begin(), name.end(), name.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        if (character.m_setNames.contains(name))
        {
            const std::string reason = "has an animation \"" + clip.m_strName + "\" already: --clip \"" +
                                       clip.m_strName + "=NEW\" gives the clip another name";
            throw ConvertException(character.m_strFile.c_str(), reason.c_str());
        }
    }
}

std::string print(const Vector3d& v)
{
    std::ostringstream text;
    text << '(' << v.x << ", " << v.y << ", " << v.z << ')';
    return text.str();
}

/// The script's volumes are left as they are.
void warnOfBounds(const CharacterScript& character, const DrawnBounds& bounds, std::vector<std::string>& warnings)
{
    const Box& is = bounds.getBox();
    if (character.m_bounds.isEmpty() || is.isEmpty())
    {
        return;
    }
    Box both = character.m_bounds;
    both.add(is.getLow());
    both.add(is.getHigh());
    constexpr double slight = 1e-4;
    if (both.getDiagonal() > character.m_bounds.getDiagonal() * (1.0 + slight))
    {
        std::ostringstream text;
        text << "the clips reach beyond the bounding volumes in the script: boundingBoxMin " << print(both.getLow())
             << ", boundingBoxMax " << print(both.getHigh()) << " and boundingSphereRadius " << bounds.getRadius()
             << " would contain them";
        warnings.push_back(text.str());
    }
}
}  // namespace

Summary addMotion(const std::vector<std::string>& modelFiles, const std::string& scriptFile, const Options& options)
{
    CharacterScript character = readCharacter(scriptFile, options.m_strBlock);
    Model& body = character.m_model;
    std::vector<Model> models = readModels(modelFiles, options);
    Summary summary;
    gatherClips(body, models, scriptFile, options, summary.m_vecMotionSources);
    checkNames(character, body.m_vecClips);

    const Skeleton skeleton = makeSkeleton(body, body.m_vecWarnings);
    DrawnBounds bounds(body, skeleton);
    OutputFiles files;
    const std::string folder = std::filesystem::path(scriptFile).parent_path().string();
    summary.m_tolerance = options.m_tolerance.value_or(chooseTolerance(body, skeleton));
    std::optional<TravelChoice> travel;
    if (!options.m_strTravel.empty())
    {
        travel = chooseTravel(body, options.m_strTravel, scriptFile);
    }
    AnimationWriter writer(body, skeleton, options, summary.m_tolerance, travel, character.m_strPlace, files, bounds);
    writer.avoidFilesIn(folder.empty() ? "." : folder);
    const std::vector<ScriptBlock::Animation> animations = writer.addClips(character.m_iNextIndex);
    if (writer.isScaled() && character.m_strCrossMode != "linear")
    {
        body.m_vecWarnings.push_back(
            "the clips scale nodes, which is lost where animations are blended: crossmode is " +
            character.m_strCrossMode);
    }
    warnOfBounds(character, bounds, body.m_vecWarnings);
    files.add(std::filesystem::path(scriptFile).filename().string(), addAnimations(character, animations));
    summary.m_bSkinned = body.isSkinned();
    summary.m_uiNodes = skeleton.m_vecJoints.size();
    summary.m_vecClips = writer.getSummaries();
    summary.m_vecWarnings = body.m_vecWarnings;
    summary.m_vecSources = modelFiles;
    summary.m_vecSources.insert(summary.m_vecSources.end(), body.m_vecSources.begin(), body.m_vecSources.end());
    summary.m_vecFiles = files.write(folder.empty() ? "." : folder);
    summary.m_strScript = summary.m_vecFiles.back();
    return summary;
}
}  // namespace TW2::convert
