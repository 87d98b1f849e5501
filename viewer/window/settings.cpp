#include "viewer/window/settings.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace TW2::viewer
{
namespace fs = std::filesystem;

std::string getSettingsFile()
{
    const char* folder = std::getenv("XDG_CONFIG_HOME");
    const char* home = std::getenv("HOME");
    const fs::path base = folder && *folder ? fs::path(folder) : fs::path(home ? home : ".") / ".config";
    return (base / "tw2" / "view").string();
}

std::vector<std::string> readSettings(const std::string& file)
{
    std::vector<std::string> lines;
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);)
    {
        lines.push_back(line);
    }
    return lines;
}

void writeSettings(const std::string& file, const std::vector<std::string>& lines) noexcept
{
    std::error_code error;
    const fs::path target(file);
    const fs::path draft(file + ".new");
    fs::create_directories(target.parent_path(), error);
    {
        std::ofstream stream(draft);
        for (const std::string& line : lines)
        {
            stream << line << "\n";
        }
        if (!stream.flush())
        {
            fs::remove(draft, error);
            return;
        }
    }
    fs::rename(draft, target, error);
}
}  // namespace TW2::viewer
