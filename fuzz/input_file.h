#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>

namespace fuzz
{
/// A file on disk that a target fills again for every input, for what reads by file name only.
class InputFile
{
public:
    /// `ending`: for readers that go by it, such as ".fbx".
    explicit InputFile(const std::string& ending = {})
    {
        std::string name = (std::filesystem::temp_directory_path() / ("tw2-fuzz-XXXXXX" + ending)).string();
        const int descriptor = mkstemps(name.data(), static_cast<int>(ending.size()));
        if (descriptor < 0)
        {
            std::abort();
        }
        m_pStream = fdopen(descriptor, "wb");
        m_name = std::move(name);
    }
    ~InputFile()
    {
        std::fclose(m_pStream);
        std::remove(m_name.c_str());
    }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    void write(const std::uint8_t* data, std::size_t size)
    {
        std::FILE* const stream = std::freopen(m_name.c_str(), "wb", m_pStream);
        if (!stream || std::fwrite(data, 1, size, stream) != size || std::fflush(stream) != 0)
        {
            std::abort();
        }
    }
    [[nodiscard]] const std::string& getName() const { return m_name; }

private:
    std::string m_name;
    std::FILE* m_pStream;
};
}  // namespace fuzz
