#pragma once

#include <platform/runtime/allocator.h>

#include <cstdio>
#include <filesystem>
#include <string_view>

/// What the systems do each in their way. Names are UTF-8 on all of them. Not for hosts.
namespace S_OperatingSystem
{
/// @name Names
/// @{
[[nodiscard]] std::filesystem::path toPath(std::string_view name);
/// With '/' as separator.
[[nodiscard]] S_String fromPath(const std::filesystem::path& path);
/// Whether "a" and "A" are one name: every name that exists then exists in any letter case.
[[nodiscard]] bool ignoresCase() noexcept;
/// Whether absolute names begin with a drive, or with "//" and a server.
[[nodiscard]] bool hasDrives() noexcept;
/// Where `ignoresCase`: the last part of an existing name in the letter case that it has on disk.
[[nodiscard]] S_String getNameOnDisk(std::string_view name);
/// @}

/// @name Files
/// Null, false: errno says why.
/// @{

/// For reading bytes; others may go on to replace the file.
[[nodiscard]] std::FILE* openFile(const char* name);
/// For writing bytes, where no file of that name stands.
[[nodiscard]] std::FILE* createFile(const char* name);
/// For writing bytes to the device or pipe of that name.
[[nodiscard]] std::FILE* openStream(const char* name);
void removeFile(const char* name) noexcept;
/// Gives the file `name` the name `target`, in the place of what stands there, in one step.
[[nodiscard]] bool replaceFile(const char* name, const char* target) noexcept;
/// Makes it the process's current directory. Allocates nothing.
[[nodiscard]] bool changeDirectory(const char* name) noexcept;
/// @}

[[nodiscard]] long getProcessNumber() noexcept;
/// Writes text to the standard output: UTF-8, also where that is a console that expects something else.
void print(std::string_view text);
}  // namespace S_OperatingSystem
