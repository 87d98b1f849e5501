#include "convert/converter.h"
#include "tools/commands.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <string>
#include <vector>

namespace
{
using TW2::convert::ClipSummary;
using TW2::convert::ImportOptions;
using TW2::convert::Options;
using TW2::convert::Summary;

std::FILE* s_messages = stderr;

struct Arguments
{
    std::string model;
    std::string folder;
    std::vector<double> tolerance;
    std::string up = "auto";
    std::string loop = "auto";
    unsigned int timeout = 600;
    Options options;
};

void printClip(const ClipSummary& clip, const TW2::convert::Tolerance& tolerance)
{
    std::printf(
        "  %d  %s: %u frames at %d per second%s, keys %zu -> %zu, %zu bytes, largest error %.4g units, %.3g "
        "degrees%s\n",
        clip.m_iIndex, clip.m_strName.c_str(), clip.m_uiFrames, clip.m_iFrameRate, clip.m_bLooping ? ", looping" : "",
        clip.m_uiSampledKeys, clip.m_uiKeys, clip.m_uiBytes, clip.m_error.m_dDistance, clip.m_error.m_dDegrees,
        clip.m_error.isWithin(tolerance) ? "" : " (more than allowed)");
}

void printSummary(const Summary& summary)
{
    std::printf("%s\n", summary.m_strScript.c_str());
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
    if (!summary.m_vecClips.empty())
    {
        std::printf("  animations (0 is the pose at rest), allowed error %.4g units, %.3g degrees:\n",
                    summary.m_tolerance.m_dDistance, summary.m_tolerance.m_dDegrees);
    }
    for (const ClipSummary& clip : summary.m_vecClips)
    {
        printClip(clip, summary.m_tolerance);
    }
    std::fflush(stdout);
    for (const std::string& warning : summary.m_vecWarnings)
    {
        std::fprintf(s_messages, "tw2: warning: %s\n", warning.c_str());
    }
}

/// Runs the conversion; returns the program's exit status.
int convert(const Arguments& arguments)
{
    try
    {
        printSummary(TW2::convert::convertModel(arguments.model, arguments.folder, arguments.options));
        return EXIT_SUCCESS;
    }
    catch (const std::exception& error)
    {
        std::fprintf(s_messages, "tw2: %s\n", error.what());
        return EXIT_FAILURE;
    }
}

/// Importers write to standard error what they like: from here on only this command's own messages get there.
void keepMessagesApart()
{
    std::FILE* messages = fdopen(dup(STDERR_FILENO), "w");
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (messages && nowhere >= 0)
    {
        s_messages = messages;
        dup2(nowhere, STDERR_FILENO);
    }
}

/// Importers of many formats read damaged files, and some of them crash on some: the conversion runs in a process of
/// its own, so that a crash becomes a message.
void convertApart(const Arguments& arguments)
{
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child < 0)
    {
        throw tools::Failure(std::string("no process can be started: ") + std::strerror(errno));
    }
    if (child == 0)
    {
        alarm(arguments.timeout);
        keepMessagesApart();
        const int status = convert(arguments);
        std::fflush(nullptr);
        _exit(status);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR)
    {
    }
    if (WIFSIGNALED(status))
    {
        throw tools::Failure(arguments.model +
                             (WTERMSIG(status) == SIGALRM
                                  ? ": takes longer than " + std::to_string(arguments.timeout) + " seconds"
                                  : ": the importer crashed on it (" + std::string(strsignal(WTERMSIG(status))) + ")"));
    }
    if (WEXITSTATUS(status) != EXIT_SUCCESS)
    {
        std::exit(WEXITSTATUS(status));  // the reason is on standard error already
    }
}

void run(Arguments arguments)
{
    if (!arguments.tolerance.empty())
    {
        arguments.options.m_tolerance = {arguments.tolerance[0], arguments.tolerance[1]};
    }
    arguments.options.m_import.m_eUp = arguments.up == "x"   ? ImportOptions::UpAxis::X
                                       : arguments.up == "y" ? ImportOptions::UpAxis::Y
                                       : arguments.up == "z" ? ImportOptions::UpAxis::Z
                                                             : ImportOptions::UpAxis::Automatic;
    arguments.options.m_eLoop = arguments.loop == "always"  ? Options::Loop::Always
                                : arguments.loop == "never" ? Options::Loop::Never
                                                            : Options::Loop::Automatic;
    convertApart(arguments);
}

const tools::Command s_command(
    "convert", "Turn a modelling tool's file into files that the library loads",
    [](CLI::App& command)
    {
        const auto arguments = std::make_shared<Arguments>();
        command.add_option("MODEL", arguments->model, "FBX, glTF, COLLADA, X, BVH, ...: what Assimp reads")->required();
        command.add_option("-o,--output", arguments->folder, "Folder to write to; made when missing")->required();
        command
            .add_option("--tolerance", arguments->tolerance,
                        "Allowed error of the played pose: scene units and degrees (default: a two-thousandth of the "
                        "model's size, 0.1)")
            ->expected(2)
            ->check(CLI::PositiveNumber)
            ->type_name("UNITS DEGREES");
        command.add_option("--rate", arguments->options.m_iFrameRate, "Frames per second (default: chosen per clip)")
            ->check(CLI::Range(1, 960));
        command.add_option("--up", arguments->up, "Axis of the file that points up (default: auto)")
            ->check(CLI::IsMember({"auto", "x", "y", "z"}));
        command.add_option("--scale", arguments->options.m_import.m_dScale, "Scene units per unit of the file")
            ->check(CLI::PositiveNumber);
        command
            .add_option("--loop", arguments->loop, "Which clips repeat (default: auto, those that end as they begin)")
            ->check(CLI::IsMember({"auto", "always", "never"}));
        command.add_option("--name", arguments->options.m_strName, "Name of the files (default: the model's)");
        command.add_option("--timeout", arguments->timeout, "Seconds after which to give up (default: 600)");
        command.callback([arguments] { run(*arguments); });
    });
}  // namespace
