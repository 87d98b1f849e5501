#pragma once

#include <string>
#include <vector>

namespace TW2::viewer
{
/// The file in which a window keeps what is shown from one run to the next: lines that are commands. Lies in the user's
/// folder for settings ($XDG_CONFIG_HOME/tw2/view, else ~/.config/tw2/view).
[[nodiscard]] std::string getSettingsFile();

/// None when there is no such file.
[[nodiscard]] std::vector<std::string> readSettings(const std::string& file);

/// Writes them as a whole or not at all; a place that cannot be written is no error, since nothing is lost but comfort.
void writeSettings(const std::string& file, const std::vector<std::string>& lines) noexcept;
}  // namespace TW2::viewer
