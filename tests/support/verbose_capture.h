#pragma once

#include <platform/runtime/system.h>

#include <string>

namespace support
{
/// Collects what is written to the verbose log during its life; the log goes where it went before afterwards.
class VerboseCapture : public S_VerboseSink
{
public:
    VerboseCapture() : m_pPrevious(Sys.setVerboseSink(this)) {}
    ~VerboseCapture() override { Sys.setVerboseSink(m_pPrevious); }
    VerboseCapture(const VerboseCapture&) = delete;
    VerboseCapture& operator=(const VerboseCapture&) = delete;

    void write(const char* text, std::size_t size) override { m_text.append(text, size); }

    /// The log so far.
    [[nodiscard]] const std::string& getText() const { return m_text; }
    /// The log so far, which is then empty.
    std::string take()
    {
        std::string text;
        text.swap(m_text);
        return text;
    }

private:
    S_VerboseSink* m_pPrevious;
    std::string m_text;
};
}  // namespace support
