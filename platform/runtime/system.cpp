#include <platform/runtime/operating_system.h>
#include <platform/runtime/system.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <string>

S_System Sys;

S_VerboseSink::~S_VerboseSink() = default;

void S_System::verbose(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    std::string text(static_cast<std::size_t>(std::max(length, 0)), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, again);
    va_end(again);
    if (m_pSink)
    {
        m_pSink->write(text.data(), text.size());
    }
    else
    {
        S_OperatingSystem::print(text);
    }
}

S_VerboseSink* S_System::setVerboseSink(S_VerboseSink* sink) noexcept
{
    S_VerboseSink* previous = m_pSink;
    m_pSink = sink;
    return previous;
}
