#include "tools/commands.h"

#include "viewer/text.h"

#include <algorithm>
#include <cstdio>
#include <string_view>
#include <vector>

namespace tools
{
namespace
{
// Set before any static object of another file is made.
constinit const Command* s_pFirst = nullptr;
}  // namespace

Command::Command(const char* name, const char* description, AddArguments addArguments)
    : m_szName(name), m_szDescription(description), m_addArguments(addArguments), m_pNext(s_pFirst)
{
    s_pFirst = this;
}

void Command::addAll(CLI::App& program)
{
    std::vector<const Command*> commands;
    for (const Command* command = s_pFirst; command; command = command->m_pNext)
    {
        commands.push_back(command);
    }
    std::sort(commands.begin(), commands.end(),
              [](const Command* a, const Command* b)
              { return std::string_view(a->m_szName) < std::string_view(b->m_szName); });
    for (const Command* command : commands)
    {
        command->m_addArguments(*program.add_subcommand(command->m_szName, command->m_szDescription));
    }
}

Size parseSize(const std::string& text, const Size& least)
{
    constexpr unsigned int most = 8192;
    Size size{};
    char rest;
    if (std::sscanf(text.c_str(), "%ux%u%c", &size.width, &size.height, &rest) != 2 || size.width < least.width ||
        size.height < least.height || size.width > most || size.height > most)
    {
        throw Failure("--size is WIDTHxHEIGHT, from " + std::to_string(least.width) + "x" +
                      std::to_string(least.height) + " to 8192x8192, not \"" + text + "\"");
    }
    return size;
}

bool hasEnding(const std::string& file, std::string_view ending)
{
    return file.size() > ending.size() && TW2::viewer::toLower(file).ends_with(ending);
}

CLI::Validator aboveZero()
{
    return CLI::Validator(
        [](const std::string& text)
        {
            double value = 0.0;
            return CLI::detail::lexical_cast(text, value) && value > 0.0
                       ? std::string()
                       : "must be a number above 0, such as 0.000001, not " + text;
        },
        "");
}
}  // namespace tools
