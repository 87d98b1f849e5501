#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace TW2::viewer
{
/// Tells when files have changed and are whole again: looks at sizes and times, asks the system for nothing else.
class FileWatch
{
public:
    /// Watches these files, and everything in the folders that they lie in and in the folders below those.
    void watch(const std::vector<std::string>& files);
    /// Whether something changed since `watch`, and has stayed as it is since the last call: call it once or twice a
    /// second. True once per change.
    bool hasChanged();

private:
    /// A number that changes when any file does.
    [[nodiscard]] unsigned long long look() const;

    std::vector<std::filesystem::path> m_vecFolders;
    unsigned long long m_uiKnown = 0;
    unsigned long long m_uiSeen = 0;
};
}  // namespace TW2::viewer
