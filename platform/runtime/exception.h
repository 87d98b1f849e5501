#pragma once

#include <platform/compiler.h>
#include <platform/export.h>

#include <cstddef>
#include <exception>
#include <string>

/// Name of a class at run time.
struct CRuntimeClass
{
    const char* m_lpszClassName;  ///< The class's name, a literal.
};

/// Root of the framework's objects: a run-time class, serialization and diagnostics.
class TW2_PLATFORM_API CObject
{
public:
    CObject() = default;
    CObject(const CObject&) = default;
    CObject& operator=(const CObject&) = default;

    /// What a framework that shows exceptions by itself asks for; the library does not.
    [[nodiscard]] virtual const CRuntimeClass* GetRuntimeClass() const;
    virtual ~CObject();
    /// Appends what identifies the object to `archive`; here the class name and a line end.
    virtual void Serialize(std::string& archive) const;
    /// Checks the object's invariants; the roots have none.
    virtual void AssertValid() const;
    /// Appends a description for people to `text`.
    virtual void Dump(std::string& text) const;
};

/// Root of the framework's exceptions.
class TW2_PLATFORM_API CException : public CObject
{
public:
    /// Copies the message into `text`, at most `size` bytes with the closing zero. `helpContext` is set to 0 when
    /// given. Returns 1 when there is a message, else 0 (then `text` is the empty string).
    virtual int GetErrorMessage(char* text, unsigned int size, unsigned int* helpContext) const;
    /// Writes the message to the verbose log; returns 1. The arguments exist for the framework and change nothing here.
    virtual int ReportError(unsigned int type = 0, unsigned int messageId = 0) const;
};

/// What the runtime layer and everything above it throws: an exception with a message.
///
/// Thrown by value, caught by reference. Also a std::exception, so that a host which knows nothing of this layer prints
/// the message of an exception that it did not catch.
class TW2_PLATFORM_API S_Exception : public CException, public std::exception
{
public:
    /// A copy of the message.
    S_Exception(const S_Exception&);
    /// A copy of the message.
    S_Exception& operator=(const S_Exception&);
    ~S_Exception() override;

    [[nodiscard]] const CRuntimeClass* GetRuntimeClass() const override;
    int GetErrorMessage(char* text, unsigned int size, unsigned int* helpContext) const override;
    void Dump(std::string& text) const override;

    /// The message; valid as long as the exception is unchanged.
    [[nodiscard]] virtual const char* getErrorMessage() const noexcept;
    /// The message, and in parentheses what was added to it by `addHint`; valid as long as the exception is unchanged.
    [[nodiscard]] const char* what() const noexcept final;

    /// Adds what helps to mend it, for people, to what `what()` tells: formatted printf-style. The message stays as it
    /// is.
    S_FORMAT_LIKE_PRINTF(2, 3) void addHint(const char* format, ...);

protected:
    S_Exception();
    /// Formats the message, printf-style. The message so far may be among the arguments.
    S_FORMAT_LIKE_PRINTF(2, 3) void setError(const char* format, ...);

private:
    std::string m_strMessage;
    std::string m_strMessageWithHints;  ///< empty without hints
};

/// A failure of memory.
class TW2_PLATFORM_API S_MemoryException : public S_Exception
{
public:
    ~S_MemoryException() override;

protected:
    S_MemoryException();
};

/// Memory ran out: "Out of system memory resources". Holds no storage of its own.
class TW2_PLATFORM_API S_MemoryException_Allocation : public S_MemoryException
{
public:
    S_MemoryException_Allocation();
    ~S_MemoryException_Allocation() override;
    [[nodiscard]] const CRuntimeClass* GetRuntimeClass() const override;
    [[nodiscard]] const char* getErrorMessage() const noexcept override;
};

/// A file cannot be found, opened, read or written; the message names the file and the reason.
class TW2_PLATFORM_API S_FileException : public S_Exception
{
public:
    /// `fileName` and `reason` make the message.
    S_FileException(const char* fileName, const char* reason);
    ~S_FileException() override;
    [[nodiscard]] const CRuntimeClass* GetRuntimeClass() const override;
};

/// A chunk file is damaged; the message names the file, the chunk, the byte offset and what was expected.
class TW2_PLATFORM_API S_MemoryFileException : public S_Exception
{
public:
    /// `chunkId` is the innermost open chunk, 0 at top level; `offset` counts bytes from the start of the file.
    S_MemoryFileException(const char* fileName, unsigned int chunkId, std::size_t offset, const char* expected);
    ~S_MemoryFileException() override;
    [[nodiscard]] const CRuntimeClass* GetRuntimeClass() const override;
};

/// A script is damaged or does not fit what is asked of it; the message names file, line, block and key.
class TW2_PLATFORM_API S_ScriptException : public S_Exception
{
public:
    /// `line` counts from 1; `block` is the nesting text, empty for the top level; `key` may be null.
    S_ScriptException(const char* fileName, unsigned int line, const char* block, const char* key, const char* problem);
    ~S_ScriptException() override;
    [[nodiscard]] const CRuntimeClass* GetRuntimeClass() const override;
};
