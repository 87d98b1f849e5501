#include "tools/commands.h"

#include <tw2/version.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <numeric>
#include <string>
#include <string_view>
#include <utility>
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

/// How many letters have to be added, left out or replaced to make one word of the other (Levenshtein, 1965).
std::size_t getDistance(std::string_view from, std::string_view to)
{
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < from.size(); ++i)
    {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < to.size(); ++j)
        {
            const std::size_t replaced = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({row[j] + 1, row[j + 1] + 1, replaced});
        }
    }
    return row[to.size()];
}

/// What is said of a first word that is no sub-command: which one is nearest.
std::string describeUnknown(const std::string& word, const CLI::App& program)
{
    std::string nearest;
    std::size_t distance = std::string::npos;
    for (const CLI::App* command : program.get_subcommands([](const CLI::App*) { return true; }))
    {
        if (const std::size_t now = getDistance(word, command->get_name()); now < distance)
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
