#include "tools/commands.h"
#include "viewer/text.h"

#include <tw2/version.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

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

/// Of names, of which there is one at least, the one that takes the fewest changes.
std::string findNearest(const std::string& word, const std::vector<std::string>& names)
{
    return *std::min_element(names.begin(), names.end(),
                             [&word](const std::string& a, const std::string& b)
                             { return TW2::viewer::countChanges(word, a) < TW2::viewer::countChanges(word, b); });
}

/// What is said of a first word that is no sub-command: which one is nearest.
std::string describeUnknown(const std::string& word, const CLI::App& program)
{
    std::vector<std::string> names;
    for (const CLI::App* command : program.get_subcommands([](const CLI::App*) { return true; }))
    {
        names.push_back(command->get_name());
    }
    return "there is no command \"" + word + "\"; the nearest is \"" + findNearest(word, names) +
           "\", and tw2 --help lists all";
}

/// The same of an option of a sub-command; empty when what was not understood is none.
std::string describeUnknownOption(const CLI::App& program)
{
    const std::vector<CLI::App*> commands = program.get_subcommands();
    const std::vector<std::string> rest = program.remaining(true);
    if (commands.empty() || rest.empty() || !rest.front().starts_with("--"))
    {
        return {};
    }
    const std::string word = rest.front().substr(2, rest.front().find('=') - 2);
    std::vector<std::string> names;
    for (const CLI::Option* option : commands.front()->get_options())
    {
        names.insert(names.end(), option->get_lnames().begin(), option->get_lnames().end());
    }
    return "there is no option \"--" + word + "\"; the nearest is \"--" + findNearest(word, names) + "\", and tw2 " +
           commands.front()->get_name() + " --help lists all";
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
        const bool unknown = dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr;
        if (const std::string reason = unknown ? describeUnknownOption(program) : std::string(); !reason.empty())
        {
            printReason(reason);
            return usageError;
        }
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
