#pragma once

#include "viewer/failure.h"

#include <CLI/App.hpp>

#include <string>

/// The frame of the tw2 command. A sub-command is one source file, `<name>_command.cpp`, which registers itself:
///
///     const tools::Command s_command("analyze", "lists the chunks of files",
///                                    [](CLI::App& command)
///                                    {
///                                        auto files = std::make_shared<std::vector<std::string>>();
///                                        command.add_option("FILE", *files)->required();
///                                        command.callback([files] { analyze(*files); });
///                                    });
///
/// The callback does the work and prints to standard output. What it throws ends the program with status 1 and the
/// message on standard error; wrong arguments end it with status 2.
namespace tools
{
/// A failure that is not an exception of a library.
using Failure = TW2::viewer::Failure;

/// A sub-command; must be a static object.
class Command
{
public:
    using AddArguments = void (*)(CLI::App& command);

    Command(const char* name, const char* description, AddArguments addArguments);

    /// Adds every sub-command to the program, in the order of their names.
    static void addAll(CLI::App& program);

private:
    const char* m_szName;
    const char* m_szDescription;
    AddArguments m_addArguments;
    const Command* m_pNext;
};

/// Of a picture or a window, in pixels.
struct Size
{
    unsigned int width;
    unsigned int height;
};

/// What `--size` says. Throws Failure when that is not WIDTHxHEIGHT with sides from those of `least` to 8192.
[[nodiscard]] Size parseSize(const std::string& text, const Size& least);

/// Whether a file's name ends so (given in small letters), letter case aside, and is more than that.
[[nodiscard]] bool hasEnding(const std::string& file, std::string_view ending);

/// Lets a number above 0 pass; of another one it says so, and what to give for "as exact as can be".
[[nodiscard]] CLI::Validator aboveZero();
}  // namespace tools
