/// What the window opens: scripts, folders, models that are converted first, and files that change on the disk.

#include "viewer/commands.h"
#include "viewer/failure.h"
#include "viewer/window/view_window.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <sstream>
#include <string>
#include <string_view>

namespace TW2::viewer
{
namespace fs = std::filesystem;

namespace
{
/// The script that a folder holds: the one in it, or the first of several by name.
std::string findScript(const fs::path& folder)
{
    std::vector<std::string> scripts;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder))
    {
        if (entry.path().extension() == ".script")
        {
            scripts.push_back(entry.path().string());
        }
    }
    if (scripts.empty())
    {
        throw Failure(folder.string() + ": there is no .script file in this folder");
    }
    return *std::min_element(scripts.begin(), scripts.end());
}

/// The last line of what the converter wrote: the reason, without the name of the command that this window belongs to.
std::string findReason(const std::string& output)
{
    constexpr std::string_view command = "tw2: ";
    const std::size_t end = output.find_last_not_of('\n');
    const std::size_t begin = end == std::string::npos ? end : output.find_last_of('\n', end);
    const std::string line = end == std::string::npos ? output : output.substr(begin + 1, end - begin);
    return line.starts_with(command) ? line.substr(command.size()) : line;
}

/// The lines of the converter's summary that say what was left out.
std::string collectWarnings(const std::string& summary)
{
    std::string warnings;
    std::istringstream lines(summary);
    for (std::string line; std::getline(lines, line);)
    {
        if (line.find("warning: ") != std::string::npos)
        {
            warnings += (warnings.empty() ? "" : "\n") + line;
        }
    }
    return warnings;
}
}  // namespace

void ViewWindow::open(const std::string& file)
{
    try
    {
        if (!fs::exists(file))
        {
            throw Failure(file + ": there is no such file");
        }
        const std::string inFolder = fs::is_directory(file) ? findScript(file) : file;
        m_strModel = fs::absolute(inFolder).string();
        if (Conversion::isModel(inFolder))
        {
            startConversion(m_strModel);
            return;
        }
        m_viewer.open(m_strModel);
        m_conversion.cancel();
        afterLoading();
    }
    catch (const std::exception& error)
    {
        fail(error.what());
    }
}

void ViewWindow::startConversion(const std::string& model)
{
    m_conversion.start(model);
    m_messages.m_strError.clear();
}

void ViewWindow::afterLoading()
{
    m_messages.m_strError.clear();
    m_window.setTitle(fs::path(m_strModel).filename().string() + " - tw2 view");
    std::vector<std::string> files = m_viewer.getObject()->getFiles();
    if (Conversion::isModel(m_strModel))
    {
        files = {m_strModel};
    }
    m_watch.watch(files);
    m_bLoaded = true;
}

void ViewWindow::pollFiles()
{
    constexpr double interval = 0.5;
    const double now = m_window.getTime();
    if (m_dNoteUntil > 0.0 && now > m_dNoteUntil)
    {
        m_messages.m_strNote.clear();
        m_dNoteUntil = 0.0;
    }
    if (!m_viewer.getObject() || now - m_dLastLook < interval)
    {
        return;
    }
    m_dLastLook = now;
    if (!m_watch.hasChanged())
    {
        return;
    }
    if (Conversion::isModel(m_strModel))
    {
        open(m_strModel);
        return;
    }
    execute("reload");
}

void ViewWindow::pollConversion()
{
    const Conversion::State before = m_conversion.getState();
    if (before != Conversion::State::Running)
    {
        return;
    }
    const Conversion::State state = m_conversion.poll();
    m_messages.m_strProgress.clear();
    if (state == Conversion::State::Running)
    {
        std::array<char, 64> seconds{};
        std::snprintf(seconds.data(), seconds.size(), ": converting, %.1f s,", m_conversion.getSeconds());
        m_messages.m_strProgress =
            m_conversion.getModel().filename().string() + seconds.data() + m_conversion.getStep();
        m_messages.m_fProgress = static_cast<float>(m_conversion.getPart());
    }
    else if (state == Conversion::State::Failed)
    {
        fail(findReason(m_conversion.getOutput()));
    }
    else
    {
        try
        {
            m_viewer.open(m_conversion.getScript());
            afterLoading();
            note(collectWarnings(m_conversion.getOutput()));
        }
        catch (const std::exception& error)
        {
            fail(error.what());
        }
    }
}
}  // namespace TW2::viewer
