#pragma once

#include <platform/compiler.h>
#include <platform/export.h>

#include <cstddef>

/// Where the verbose log goes. A host derives from it to show the log in a place of its own.
class TW2_PLATFORM_API S_VerboseSink
{
public:
    virtual ~S_VerboseSink();
    /// Takes `size` characters of log text; `text` is valid during the call only.
    virtual void write(const char* text, std::size_t size) = 0;
};

/// The process's log, reached through the global object `Sys`.
class TW2_PLATFORM_API S_System
{
public:
    /// Writes to the log, printf-style; standard output unless a sink is set.
    S_FORMAT_LIKE_PRINTF(2, 3) void verbose(const char* format, ...);

    /// Sends the log to `sink` (not owned; null: standard output again). Returns the sink that was set before.
    S_VerboseSink* setVerboseSink(S_VerboseSink* sink) noexcept;

private:
    S_VerboseSink* m_pSink = nullptr;
};

/// The one system object of the process.
extern TW2_PLATFORM_API S_System Sys;
