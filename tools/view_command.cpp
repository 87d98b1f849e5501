#include "tools/commands.h"
#include "viewer/window/view_window.h"

#include <memory>
#include <string>

namespace
{
struct Arguments
{
    TW2::viewer::WindowOptions options;
    std::string size = "1280x800";
};

void run(Arguments& arguments)
{
    TW2::viewer::WindowOptions& options = arguments.options;
    const tools::Size size = tools::parseSize(arguments.size, {480, 320});
    options.m_uiWidth = size.width;
    options.m_uiHeight = size.height;
    const std::string& picture = options.m_strWindowPicture;
    if (!picture.empty() && !tools::hasEnding(picture, ".png") && !tools::hasEnding(picture, ".gif"))
    {
        throw tools::Failure("\"" + picture + "\" is to be a picture of the window, which ends in .png or .gif");
    }
    TW2::viewer::ViewWindow(options).run();
}

const tools::Command s_command(
    "view", "Look at an animated object in a window",
    [](CLI::App& command)
    {
        const auto arguments = std::make_shared<Arguments>();
        TW2::viewer::WindowOptions& options = arguments->options;
        command.add_option("FILE", options.m_strFile,
                           "Script, folder with a script, or a model, which is converted first");
        command.add_option("--size", arguments->size,
                           "WIDTHxHEIGHT of the window, 480x320 or more (default: 1280x800)");
        command
            .add_option("--scale", options.m_fScale, "How large letters and controls are (default: as the screen says)")
            ->check(CLI::Range(0.5, 4.0));
        command
            .add_option("--do", options.m_vecLines,
                        "Command to begin with, such as \"clip walk\" or \"wait 20\" (pictures); may be repeated")
            ->allow_extra_args(false);
        command.add_flag_callback(
            "--no-settings", [&options] { options.m_bSettings = false; },
            "Begin as on the first day, and keep nothing");
        command.add_option(
            "--window-picture", options.m_strWindowPicture,
            "When it is closed, write the window as it looks into a .png file, or as it has looked into a .gif");
        command.add_option("--pictures", options.m_uiPictures, "Close the window after so many pictures");
        command.add_option("--seconds-per-picture", options.m_dSecondsPerPicture,
                           "Let so much time pass with each picture, however long it takes");
        command.callback([arguments] { run(*arguments); });
    });
}  // namespace
