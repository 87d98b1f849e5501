#include "tools/convert_summary.h"

#include "json/writer.h"

#include <platform/runtime/file.h>

#include <sstream>
#include <string>

namespace tools
{
namespace
{
using TW2::convert::ClipSummary;
using TW2::convert::MotionSource;
using TW2::convert::PoseError;
using TW2::convert::Summary;

void printClip(const ClipSummary& clip, const TW2::convert::Tolerance& tolerance)
{
    std::printf(
        "  %d  %s: %u frames at %d per second%s, keys %zu -> %zu, %zu bytes, largest error %.4g units, %.3g "
        "degrees%s\n",
        clip.m_iIndex, clip.m_strName.c_str(), clip.m_uiFrames, clip.m_iFrameRate, clip.m_bLooping ? ", looping" : "",
        clip.m_uiSampledKeys, clip.m_uiKeys, clip.m_uiBytes, clip.m_error.m_dDistance, clip.m_error.m_dDegrees,
        clip.m_error.isWithin(tolerance) ? "" : " (more than allowed)");
    constexpr double rounding = 2e-3;  // of files that say times in few digits
    if (clip.m_dLonger > rounding)
    {
        std::printf("     %.3g s longer than in the file, as frames are whole\n", clip.m_dLonger);
    }
    if (!clip.m_strTravelFile.empty() || clip.m_uiEvents > 0)
    {
        std::printf("     %s%zu events\n", clip.m_strTravelFile.empty() ? "" : "with travel, ", clip.m_uiEvents);
    }
}

void printWarnings(const Summary& summary, std::FILE* messages)
{
    for (const std::string& warning : summary.m_vecWarnings)
    {
        std::fprintf(messages, "tw2: warning: %s\n", warning.c_str());
    }
}

/// Where clips of another file came from, and what was done to them.
void printSource(const MotionSource& source)
{
    std::printf("  motion of %s: %zu nodes by name, %zu by spelling, %zu by the map, %zu without a counterpart",
                source.m_strName.c_str(), source.m_counts.m_uiByName, source.m_counts.m_uiBySpelling,
                source.m_counts.m_uiByMap, source.m_vecLost.size());
    if (source.m_bFitted)
    {
        std::printf("; fitted to a skeleton %.3g times as large", source.m_dRatio);
    }
    if (source.m_slide)
    {
        std::printf(", standing feet slide up to %.3g units (%.3g before)", source.m_slide->m_dDistance,
                    source.m_slide->m_dBefore);
    }
    std::printf("\n");
}

void printBody(const Summary& summary)
{
    std::printf("  %s of %zu nodes, %zu vertices, %zu triangles in %zu groups, %zu materials, %zu textures",
                summary.m_bSkinned ? "skinned character" : "object", summary.m_uiNodes, summary.m_uiVertices,
                summary.m_uiTriangles, summary.m_uiGroups, summary.m_uiMaterials, summary.m_uiTextures);
    if (summary.m_uiCameras > 0 || summary.m_uiLights > 0)
    {
        std::printf(", %zu cameras, %zu lights", summary.m_uiCameras, summary.m_uiLights);
    }
    std::printf("\n");
    if (summary.m_influences.m_uiReduced > 0)
    {
        std::printf("  influences cut to the 4 strongest at %zu vertices (up to %zu before)\n",
                    summary.m_influences.m_uiReduced, summary.m_influences.m_uiMost);
    }
    if (summary.m_influences.m_uiUnbound > 0)
    {
        std::printf("  %zu vertices that no bone moved hang on their mesh's node\n", summary.m_influences.m_uiUnbound);
    }
}

void writeError(TW2::json::Writer& json, const PoseError& error)
{
    json.beginObject();
    json.member("units", error.m_dDistance);
    json.member("degrees", error.m_dDegrees);
    json.endObject();
}

void writeClip(TW2::json::Writer& json, const ClipSummary& clip)
{
    json.member("index", clip.m_iIndex);
    json.member("name", clip.m_strName);
    json.member("file", clip.m_strFile);
    json.member("framesPerSecond", clip.m_iFrameRate);
    json.member("frames", clip.m_uiFrames);
    json.member("looping", clip.m_bLooping);
    json.member("secondsLonger", clip.m_dLonger);
    json.member("sampledKeys", clip.m_uiSampledKeys);
    json.member("keys", clip.m_uiKeys);
    json.member("bytes", clip.m_uiBytes);
    json.member("travelFile", clip.m_strTravelFile);
    json.member("events", clip.m_uiEvents);
    json.key("largestError");
    writeError(json, clip.m_error);
}

void writeSource(TW2::json::Writer& json, const MotionSource& source)
{
    json.member("name", source.m_strName);
    json.member("nodesByName", source.m_counts.m_uiByName);
    json.member("nodesBySpelling", source.m_counts.m_uiBySpelling);
    json.member("nodesByMap", source.m_counts.m_uiByMap);
    json.list("withoutCounterpart", source.m_vecLost);
    json.member("fitted", source.m_bFitted);
    json.member("sizeRatio", source.m_dRatio);
    if (source.m_slide)
    {
        json.member("footSlide", source.m_slide->m_dDistance);
        json.member("footSlideBefore", source.m_slide->m_dBefore);
    }
}

/// A name as make writes it.
std::string escapeForMake(const std::string& name)
{
    std::string escaped;
    for (const char c : name)
    {
        escaped += c == ' ' || c == '#' || c == '\\' ? "\\" : c == '$' ? "$" : "";
        escaped += c;
    }
    return escaped;
}
}  // namespace

void printSummary(const Summary& summary, std::FILE* messages, bool onto, bool quiet)
{
    if (quiet)
    {
        printWarnings(summary, messages);
        return;
    }
    std::printf("%s\n", summary.m_strScript.c_str());
    for (const MotionSource& source : summary.m_vecMotionSources)
    {
        printSource(source);
    }
    if (!onto)
    {
        printBody(summary);
    }
    if (!summary.m_vecClips.empty())
    {
        std::printf("  animations%s, allowed error %.4g units, %.3g degrees:\n", onto ? "" : " (0 is the pose at rest)",
                    summary.m_tolerance.m_dDistance, summary.m_tolerance.m_dDegrees);
    }
    for (const ClipSummary& clip : summary.m_vecClips)
    {
        printClip(clip, summary.m_tolerance);
    }
    std::fflush(stdout);
    printWarnings(summary, messages);
}

void printJson(const Summary& summary)
{
    std::ostringstream text;
    TW2::json::Writer json(text);
    json.beginObject();
    json.member("script", summary.m_strScript);
    json.list("files", summary.m_vecFiles);
    json.list("sources", summary.m_vecSources);
    json.member("skinned", summary.m_bSkinned);
    json.member("nodes", summary.m_uiNodes);
    json.member("vertices", summary.m_uiVertices);
    json.member("triangles", summary.m_uiTriangles);
    json.member("groups", summary.m_uiGroups);
    json.member("materials", summary.m_uiMaterials);
    json.member("textures", summary.m_uiTextures);
    json.member("cameras", summary.m_uiCameras);
    json.member("lights", summary.m_uiLights);
    json.key("allowedError");
    writeError(json, {summary.m_tolerance.m_dDistance, summary.m_tolerance.m_dDegrees});
    json.objects("clips", summary.m_vecClips, [&json](const ClipSummary& clip) { writeClip(json, clip); });
    json.objects("motionSources", summary.m_vecMotionSources,
                 [&json](const MotionSource& source) { writeSource(json, source); });
    json.list("warnings", summary.m_vecWarnings);
    json.endObject();
    std::fputs(text.str().c_str(), stdout);
}

void writeDepfile(const std::string& file, const Summary& summary)
{
    std::string text = escapeForMake(summary.m_strScript) + ":";
    for (const std::string& source : summary.m_vecSources)
    {
        text += " \\\n  " + escapeForMake(source);
    }
    text += "\n";
    for (const std::string& source : summary.m_vecSources)
    {
        text += "\n" + escapeForMake(source) + ":\n";
    }
    File.write(file, text.data(), text.size());
}
}  // namespace tools
