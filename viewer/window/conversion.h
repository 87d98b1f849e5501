#pragma once

#include <chrono>
#include <filesystem>
#include <string>

namespace TW2::viewer
{
/// Converts a modelling tool's file in a process of its own, so that a crash of an importer stays there and the window
/// goes on. The result lies in a temporary folder that goes with this object.
class Conversion
{
public:
    enum class State
    {
        Idle,
        Running,
        Done,
        Failed
    };

    Conversion() = default;
    ~Conversion();
    Conversion(const Conversion&) = delete;
    Conversion& operator=(const Conversion&) = delete;

    /// Whether a file is a model to convert, by its name: anything but a script.
    [[nodiscard]] static bool isModel(const std::filesystem::path& file);

    /// Begins; what was made last stays until the next but one begins, since it may still be shown. Throws Failure when
    /// no process can be started.
    void start(const std::filesystem::path& model);
    /// Looks how far it is.
    State poll();
    /// Ends what is under way.
    void cancel() noexcept;

    [[nodiscard]] State getState() const noexcept { return m_eState; }
    [[nodiscard]] const std::filesystem::path& getModel() const noexcept { return m_model; }
    /// Which part of the work is done, 0 to 1.
    [[nodiscard]] double getPart() const noexcept { return m_dPart; }
    /// What it is doing, in the converter's words; empty before the first.
    [[nodiscard]] const std::string& getStep() const noexcept { return m_strStep; }
    /// Seconds since the beginning.
    [[nodiscard]] double getSeconds() const;
    /// The script, when done.
    [[nodiscard]] const std::string& getScript() const noexcept { return m_strScript; }
    /// What the converter printed: the summary, or why it failed.
    [[nodiscard]] const std::string& getOutput() const noexcept { return m_strOutput; }

private:
    void finish(int status);
    void readOutput();
    void readProgress();
    void closePipes() noexcept;
    void dropFolder(std::filesystem::path& folder) noexcept;

    State m_eState = State::Idle;
    std::filesystem::path m_model;
    std::filesystem::path m_folder;  ///< what is being made
    std::filesystem::path m_doneFolder;
    std::filesystem::path m_olderFolder;
    std::string m_strScript;
    std::string m_strOutput;
    int m_iProcess = -1;
    int m_iPipe = -1;
    int m_iProgressPipe = -1;
    std::string m_strProgress;  ///< what has come through it and is no whole line yet
    std::string m_strStep;
    double m_dPart = 0.0;
    std::chrono::steady_clock::time_point m_begin;
};
}  // namespace TW2::viewer
