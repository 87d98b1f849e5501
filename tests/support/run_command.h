#pragma once

#include "tests/support/temporary_directory.h"

#include <sys/wait.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace support
{
using Strings = std::vector<std::string>;

inline Strings operator+(Strings a, const Strings& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

/// What a run of a program left.
struct CommandResult
{
    int status = -1;  ///< exit status; -1 when the program did not end by itself
    std::string output;
    std::string errors;
};

/// Runs a program and waits for it; `before` and `after` stand around it as they are in the shell's line.
inline CommandResult runProgram(const std::string& program, const std::vector<std::string>& arguments,
                                const std::string& before = {}, const std::string& after = {})
{
    const TemporaryDirectory directory;
    const auto quote = [](const std::string& text)
    {
        std::string quoted = "'";
        for (const char letter : text)
        {
            quoted += letter == '\'' ? std::string("'\\''") : std::string(1, letter);
        }
        return quoted + "'";
    };
    std::string line = before + quote(program);
    for (const std::string& argument : arguments)
    {
        line += ' ' + quote(argument);
    }
    line += after;
    line += " >" + quote(directory.file("output")) + " 2>" + quote(directory.file("errors")) + " </dev/null";
    const int status = std::system(line.c_str());
    CommandResult result;
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.output = directory.read("output");
    result.errors = directory.read("errors");
    return result;
}

#ifdef TW2_COMMAND
/// Runs the built tw2 command, in the same way.
inline CommandResult runTW2(const std::vector<std::string>& arguments, const std::string& before = {},
                            const std::string& after = {})
{
    return runProgram(TW2_COMMAND, arguments, before, after);
}
#endif
}  // namespace support
