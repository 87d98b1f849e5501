#include <platform/runtime/exception.h>
#include <platform/runtime/format_list.h>
#include <platform/runtime/system.h>

#include <algorithm>
#include <cstring>

const CRuntimeClass* CObject::GetRuntimeClass() const
{
    static constexpr CRuntimeClass runtimeClass{"CObject"};
    return &runtimeClass;
}

CObject::~CObject() = default;

void CObject::Serialize(std::string& archive) const
{
    archive += GetRuntimeClass()->m_lpszClassName;
    archive += '\n';
}

void CObject::AssertValid() const {}

void CObject::Dump(std::string& text) const
{
    text += GetRuntimeClass()->m_lpszClassName;
}

int CException::GetErrorMessage(char* text, unsigned int size, unsigned int* helpContext) const
{
    if (helpContext)
    {
        *helpContext = 0;
    }
    if (text && size > 0)
    {
        text[0] = '\0';
    }
    return 0;
}

int CException::ReportError(unsigned int, unsigned int) const
{
    std::string text;
    Dump(text);
    Sys.verbose("%s\n", text.c_str());
    return 1;
}

S_Exception::S_Exception() = default;
S_Exception::S_Exception(const S_Exception&) = default;
S_Exception& S_Exception::operator=(const S_Exception&) = default;
S_Exception::~S_Exception() = default;

const CRuntimeClass* S_Exception::GetRuntimeClass() const
{
    static constexpr CRuntimeClass runtimeClass{"S_Exception"};
    return &runtimeClass;
}

int S_Exception::GetErrorMessage(char* text, unsigned int size, unsigned int* helpContext) const
{
    CException::GetErrorMessage(text, size, helpContext);
    const char* message = getErrorMessage();
    if (text && size > 0)
    {
        const std::size_t length = std::min<std::size_t>(std::strlen(message), size - 1);
        std::memcpy(text, message, length);
        text[length] = '\0';
    }
    return *message != '\0';
}

void S_Exception::Dump(std::string& text) const
{
    text += getErrorMessage();
}

const char* S_Exception::getErrorMessage() const noexcept
{
    return m_strMessage.c_str();
}

const char* S_Exception::what() const noexcept
{
    return m_strMessageWithHints.empty() ? getErrorMessage() : m_strMessageWithHints.c_str();
}

void S_Exception::setError(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const S_ListEnd end(arguments);
    std::string message = S_formatList<std::string>(format, arguments);  // an argument may be the message that is there
    m_strMessage.swap(message);
    m_strMessageWithHints.clear();
}

void S_Exception::addHint(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const S_ListEnd end(arguments);
    const std::string hint = S_formatList<std::string>(format, arguments);
    std::string text = m_strMessageWithHints.empty()
                           ? getErrorMessage() + std::string(" (")
                           : m_strMessageWithHints.substr(0, m_strMessageWithHints.size() - 1) + "; ";
    text += hint;
    text += ')';
    m_strMessageWithHints.swap(text);
}

S_MemoryException::S_MemoryException() = default;
S_MemoryException::~S_MemoryException() = default;

S_MemoryException_Allocation::S_MemoryException_Allocation() = default;
S_MemoryException_Allocation::~S_MemoryException_Allocation() = default;

const CRuntimeClass* S_MemoryException_Allocation::GetRuntimeClass() const
{
    static constexpr CRuntimeClass runtimeClass{"S_MemoryException_Allocation"};
    return &runtimeClass;
}

const char* S_MemoryException_Allocation::getErrorMessage() const noexcept
{
    return "Out of system memory resources";
}

S_FileException::S_FileException(const char* fileName, const char* reason)
{
    setError("File \"%s\": %s", fileName, reason);
}
S_FileException::~S_FileException() = default;

const CRuntimeClass* S_FileException::GetRuntimeClass() const
{
    static constexpr CRuntimeClass runtimeClass{"S_FileException"};
    return &runtimeClass;
}

S_MemoryFileException::S_MemoryFileException(const char* fileName, unsigned int chunkId, std::size_t offset,
                                             const char* expected)
{
    if (chunkId != 0)
    {
        setError("File \"%s\", chunk 0x%X, byte %zu: expected %s", fileName, chunkId, offset, expected);
    }
    else
    {
        setError("File \"%s\", top level, byte %zu: expected %s", fileName, offset, expected);
    }
}
S_MemoryFileException::~S_MemoryFileException() = default;

const CRuntimeClass* S_MemoryFileException::GetRuntimeClass() const
{
    static constexpr CRuntimeClass runtimeClass{"S_MemoryFileException"};
    return &runtimeClass;
}

S_ScriptException::S_ScriptException(const char* fileName, unsigned int line, const char* block, const char* key,
                                     const char* problem)
{
    const bool topLevel = *block == '\0';
    setError("Script \"%s\", line %u, %s%s%s%s%s%s: %s", fileName, line, topLevel ? "top level" : "block \"", block,
             topLevel ? "" : "\"", key ? ", key \"" : "", key ? key : "", key ? "\"" : "", problem);
}
S_ScriptException::~S_ScriptException() = default;

const CRuntimeClass* S_ScriptException::GetRuntimeClass() const
{
    static constexpr CRuntimeClass runtimeClass{"S_ScriptException"};
    return &runtimeClass;
}
