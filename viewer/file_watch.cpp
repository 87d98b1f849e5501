#include "viewer/file_watch.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <system_error>

namespace TW2::viewer
{
namespace fs = std::filesystem;

void FileWatch::watch(const std::vector<std::string>& files)
{
    m_vecFolders.clear();
    for (const std::string& file : files)
    {
        const fs::path folder = fs::path(file).parent_path();
        if (std::find(m_vecFolders.begin(), m_vecFolders.end(), folder) == m_vecFolders.end())
        {
            m_vecFolders.push_back(folder);
        }
    }
    m_uiKnown = m_uiSeen = look();
}

bool FileWatch::hasChanged()
{
    const unsigned long long now = look();
    const bool whole = now == m_uiSeen;
    m_uiSeen = now;
    if (!whole || now == m_uiKnown)
    {
        return false;
    }
    m_uiKnown = now;
    return true;
}

unsigned long long FileWatch::look() const
{
    // A sum, so that the order in which a folder lists its files does not matter.
    unsigned long long sum = 0;
    const auto add = [&sum](const fs::directory_entry& entry)
    {
        std::error_code error;
        if (!entry.is_regular_file(error))
        {
            return;
        }
        const std::uintmax_t size = entry.file_size(error);
        const auto time = entry.last_write_time(error).time_since_epoch().count();
        const std::size_t name = std::hash<std::string>()(entry.path().string());
        sum += (name ^ (static_cast<unsigned long long>(time) * 0x9E3779B97F4A7C15ULL)) + size * 0xBF58476D1CE4E5B9ULL;
    };
    for (const fs::path& folder : m_vecFolders)
    {
        std::error_code error;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder, error))
        {
            add(entry);
            if (entry.is_directory(error))
            {
                for (const fs::directory_entry& inner : fs::directory_iterator(entry.path(), error))
                {
                    add(inner);
                }
            }
        }
    }
    return sum;
}
}  // namespace TW2::viewer
