#include "tools/commands.h"
#include "viewer/text.h"

#include <tw2/version.h>

#include <CLI/CLI.hpp>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

namespace
{
constexpr int usageError = 2;

/// A reason stands on one line, whatever names of files and chunks it quotes.
void printReason(std::string reason)
{
    for (char& letter : reason)
    {
        if (static_cast<unsigned char>(letter) < ' ')
        {
            letter = ' ';
        }
    }
    std::fflush(stdout);
    std::fprintf(stderr, "tw2: %s\n", reason.c_str());
}

/// What is said of a first word that is no sub-command: which one is nearest.
std::string describeUnknown(const std::string& word, const CLI::App& program)
{
    std::string nearest;
    std::size_t distance = std::string::npos;
    for (const CLI::App* command : program.get_subcommands([](const CLI::App*) { return true; }))
    {
        if (const std::size_t now = TW2::viewer::countChanges(word, command->get_name()); now < distance)
        {
            distance = now;
            nearest = command->get_name();
        }
    }
    return "there is no command \"" + word + "\"; the nearest is \"" + nearest + "\", and tw2 --help lists all";
}

int run(int argc, char** argv)
{
    CLI::App program("Works with the files of the TW2 keyframe-animation library.", "tw2");
    program.require_subcommand(1);
    program.set_version_flag("--version", "tw2 " TW2_VERSION_TEXT);
    tools::Command::addAll(program);
    const auto isFirstWord = [argv](const CLI::App* command) { return command->get_name() == argv[1]; };
    if (argc > 1 && argv[1][0] != '-' && program.get_subcommands(isFirstWord).empty())
    {
        printReason(describeUnknown(argv[1], program));
        return usageError;
    }
    try
    {
        program.parse(argc, argv);
    }
    catch (const CLI::ParseError& error)
    {
        return program.exit(error) == EXIT_SUCCESS ? EXIT_SUCCESS : usageError;
    }
    // A result that did not reach its place is a failure too.
    if (std::fflush(stdout) != 0 || std::ferror(stdout))
    {
        printReason("cannot write to standard output");
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
}  // namespace

int main(int argc, char** argv)
{
    try
    {
        return run(argc, argv);
    }
    catch (const std::exception& error)
    {
        printReason(error.what());
        return EXIT_FAILURE;
    }
}
