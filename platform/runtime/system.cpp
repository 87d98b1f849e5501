#include <platform/runtime/format_list.h>
#include <platform/runtime/operating_system.h>
#include <platform/runtime/system.h>

#include <string>

S_System Sys;

S_VerboseSink::~S_VerboseSink() = default;

void S_System::verbose(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const S_ListEnd end(arguments);
    const auto text = S_formatList<std::string>(format, arguments);
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
