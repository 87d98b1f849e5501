#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace TW2::viewer
{
class Viewer;

/// One thing that a viewer does when it is told to in words: what the keys of the window, the page, scripts and tests
/// share.
struct Command
{
    std::string_view m_strName;
    std::string_view m_strArguments;  ///< as in a manual: "SECONDS", "[on|off]"
    std::string_view m_strHelp;
    std::string_view m_strKey;  ///< key in window and page that does it, with `m_strKeyArguments`; empty: none
    std::string_view m_strKeyArguments;
    void (*m_run)(Viewer& viewer, const std::vector<std::string>& arguments);
};

/// What the command's key does: "show or hide: skeleton".
[[nodiscard]] std::string describeKey(const Command& command);

/// Every command, in the order of a manual.
[[nodiscard]] std::span<const Command> listCommands();

/// Carries out one line: a command and its arguments, separated by spaces, with quotes around what contains some.
/// Throws Failure for a line that means nothing (with what would have been right) or that cannot be done; the viewer is
/// then as before.
void execute(Viewer& viewer, std::string_view line);

/// Carries out what a key does; false when it does nothing. `key`: a letter or digit as it is printed on the key, or
/// "Space", "Left", "Right", "Home".
bool executeKey(Viewer& viewer, std::string_view key);

/// The lines that bring what is shown, speed and looping back: what a face keeps from one run to the next.
[[nodiscard]] std::vector<std::string> describeSettings(const Viewer& viewer);
}  // namespace TW2::viewer
