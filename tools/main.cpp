#include "tools/commands.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

namespace
{
constexpr int s_usageError = 2;

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

int run(int argc, char** argv)
{
    CLI::App program("Works with the files of the TW2 keyframe-animation library.", "tw2");
    program.require_subcommand(1);
    tools::Command::addAll(program);
    try
    {
        program.parse(argc, argv);
    }
    catch (const CLI::ParseError& error)
    {
        return program.exit(error) == EXIT_SUCCESS ? EXIT_SUCCESS : s_usageError;
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
