#include "viewer/window/conversion.h"

#include "viewer/failure.h"
#include "viewer/text.h"

#include <platform/runtime/number.h>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <string_view>
#include <system_error>
#include <utility>

namespace TW2::viewer
{
namespace fs = std::filesystem;

namespace
{
fs::path makeFolder()
{
    std::string name = (fs::temp_directory_path() / "tw2-view-XXXXXX").string();
    if (!mkdtemp(name.data()))
    {
        throw Failure("no temporary folder can be made: " + std::string(std::strerror(errno)));
    }
    return name;
}

/// Appends what there is to read without waiting.
void readAll(int pipe, std::string& text)
{
    std::array<char, 4096> buffer{};
    for (ssize_t count = 0; (count = read(pipe, buffer.data(), buffer.size())) > 0;)
    {
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
}
}  // namespace

Conversion::~Conversion()
{
    cancel();
    dropFolder(m_doneFolder);
    dropFolder(m_olderFolder);
}

bool Conversion::isModel(const fs::path& file)
{
    const std::string extension = toLower(file.extension().string());
    return extension != ".script" && extension != ".txt";
}

void Conversion::start(const fs::path& model)
{
    cancel();
    m_model = model;
    m_folder = makeFolder();
    m_strOutput.clear();
    m_begin = std::chrono::steady_clock::now();
    m_strProgress.clear();
    m_strStep.clear();
    m_dPart = 0.0;
    std::array<int, 2> output{-1, -1};
    std::array<int, 2> progress{-1, -1};
    const bool piped = pipe2(output.data(), O_CLOEXEC) == 0 && pipe2(progress.data(), O_CLOEXEC) == 0;
    const std::string file = model.string();
    const std::string folder = m_folder.string();
    m_iProcess = piped ? fork() : -1;
    if (m_iProcess == 0)
    {
        dup2(output[1], STDOUT_FILENO);
        dup2(output[1], STDERR_FILENO);
        // Not to be closed by what begins now.
        fcntl(progress[1], F_SETFD, 0);
        const std::string descriptor = std::to_string(progress[1]);
        execl("/proc/self/exe", "tw2", "convert", file.c_str(), "-o", folder.c_str(), "--progress", descriptor.c_str(),
              static_cast<char*>(nullptr));
        _exit(127);
    }
    const int reason = errno;
    close(output[1]);
    close(progress[1]);
    m_iPipe = output[0];
    m_iProgressPipe = progress[0];
    if (m_iProcess < 0)
    {
        closePipes();
        throw Failure("no process can be started: " + std::string(std::strerror(reason)));
    }
    fcntl(m_iPipe, F_SETFL, O_NONBLOCK);
    fcntl(m_iProgressPipe, F_SETFL, O_NONBLOCK);
    m_eState = State::Running;
}

Conversion::State Conversion::poll()
{
    if (m_eState == State::Running)
    {
        readOutput();
        readProgress();
        int status = 0;
        if (waitpid(m_iProcess, &status, WNOHANG) == m_iProcess)
        {
            m_iProcess = -1;
            readOutput();
            finish(status);
        }
    }
    return m_eState;
}

void Conversion::readOutput()
{
    readAll(m_iPipe, m_strOutput);
}

/// The last whole line counts: "0.650 clip walk".
void Conversion::readProgress()
{
    readAll(m_iProgressPipe, m_strProgress);
    const std::size_t end = m_strProgress.rfind('\n');
    if (end == std::string::npos)
    {
        return;
    }
    std::string_view line(m_strProgress.data(), end);
    line.remove_prefix(line.rfind('\n') + 1);  // of nothing found: 0
    const auto [rest, error] = S_fromChars(line.data(), line.data() + line.size(), m_dPart);
    if (error == std::errc())
    {
        m_strStep.assign(rest, line.data() + line.size());
    }
    m_strProgress.erase(0, end + 1);
}

void Conversion::closePipes() noexcept
{
    for (int* pipe : {&m_iPipe, &m_iProgressPipe})
    {
        if (*pipe >= 0)
        {
            close(*pipe);
        }
        *pipe = -1;
    }
}

void Conversion::finish(int status)
{
    closePipes();
    m_strScript.clear();
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(m_folder, error))
    {
        if (entry.path().extension() == ".script")
        {
            m_strScript = entry.path().string();
        }
    }
    m_eState = WIFEXITED(status) && WEXITSTATUS(status) == 0 && !m_strScript.empty() ? State::Done : State::Failed;
    if (m_eState == State::Done)
    {
        dropFolder(m_olderFolder);
        m_olderFolder = std::exchange(m_doneFolder, std::exchange(m_folder, {}));
    }
    else
    {
        dropFolder(m_folder);
    }
    if (m_strOutput.empty() && m_eState == State::Failed)
    {
        m_strOutput = m_model.string() + ": the converter ended without a word";
    }
}

double Conversion::getSeconds() const
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_begin).count();
}

void Conversion::cancel() noexcept
{
    if (m_iProcess > 0)
    {
        kill(m_iProcess, SIGTERM);
        waitpid(m_iProcess, nullptr, 0);
        m_iProcess = -1;
    }
    closePipes();
    dropFolder(m_folder);
    m_eState = State::Idle;
}

void Conversion::dropFolder(fs::path& folder) noexcept
{
    std::error_code error;
    if (!folder.empty())
    {
        fs::remove_all(folder, error);
    }
    folder.clear();
}
}  // namespace TW2::viewer
