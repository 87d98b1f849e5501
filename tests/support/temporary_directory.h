#pragma once

#include <platform/runtime/allocator.h>
#include <platform/runtime/file.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>

namespace support
{
/// A folder of its own for a test, removed with everything in it at the end of the scope.
///
/// A test that entered the folder leaves it again by itself: the directory of before is restored first.
class TemporaryDirectory
{
public:
    TemporaryDirectory()
    {
        std::random_device random;
        std::filesystem::path path;
        do
        {
            path = std::filesystem::temp_directory_path() / ("tw2-test-" + std::to_string(random()));
        } while (!std::filesystem::create_directory(path));  // false: somebody else's
        m_path = std::filesystem::canonical(path);
    }
    ~TemporaryDirectory()
    {
        std::error_code error;
        if (m_bEntered)
        {
            std::filesystem::current_path(m_previous, error);
        }
        std::filesystem::remove_all(m_path, error);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    /// The folder, without a closing separator.
    [[nodiscard]] const std::filesystem::path& getPath() const { return m_path; }
    /// The full name of `name` inside the folder; the file need not exist.
    [[nodiscard]] std::string file(std::string_view name) const { return (m_path / name).generic_string(); }

    /// Writes a file, making the folders on its way, and returns its full name.
    std::string write(std::string_view name, std::string_view content) const
    {
        const std::filesystem::path target = m_path / name;
        std::filesystem::create_directories(target.parent_path());
        std::ofstream stream(target, std::ios::binary);
        stream.write(content.data(), static_cast<std::streamsize>(content.size()));
        if (!stream.flush())
        {
            throw std::runtime_error("cannot write " + target.string());
        }
        return target.generic_string();
    }
    std::string write(std::string_view name, const S_Bytes& bytes) const
    {
        return write(name, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    }
    /// The content of a file of the folder.
    [[nodiscard]] std::string read(std::string_view name) const
    {
        const S_Bytes bytes = File.read(file(name));
        return {bytes.begin(), bytes.end()};
    }

    /// Makes the folder the process's current directory until the end of the scope.
    void enter()
    {
        m_previous = std::filesystem::current_path();
        std::filesystem::current_path(m_path);
        m_bEntered = true;
    }

private:
    std::filesystem::path m_path;
    std::filesystem::path m_previous;
    bool m_bEntered = false;
};
}  // namespace support
