#include "viewer/window/view_window.h"

#include "viewer/command_words.h"
#include "viewer/commands.h"
#include "viewer/failure.h"
#include "viewer/pictures.h"
#include "viewer/render_command.h"
#include "viewer/window/requests.h"
#include "viewer/window/settings.h"

#include <platform/image/image.h>

#include <epoxy/gl.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <utility>

namespace TW2::viewer
{
namespace fs = std::filesystem;

namespace
{
/// A name that no file has yet: "walk.png", "walk-2.png", ...
std::string makeFreeName(const std::string& stem, const char* extension)
{
    std::string name = stem + extension;
    for (int number = 2; fs::exists(name); ++number)
    {
        name = stem + "-" + std::to_string(number) + extension;
    }
    return name;
}
}  // namespace

ViewWindow::ViewWindow(const WindowOptions& options)
    : m_options(options),
      m_window(options.m_uiWidth, options.m_uiHeight, "tw2 view", options.m_fScale),
      m_recorder(options.m_strWindowPicture, options.m_dSecondsPerPicture)
{
    if (m_options.m_bSettings)
    {
        m_vecSettings = readSettings(getSettingsFile());
        for (const std::string& line : m_vecSettings)
        {
            try
            {
                viewer::execute(m_viewer, line);
            }
            catch (const Failure&)
            {
                continue;  // of an older or newer version: the rest still counts
            }
        }
    }
    if (!m_options.m_strFile.empty())
    {
        open(m_options.m_strFile);
    }
}

void ViewWindow::run()
{
    const bool alone = m_options.m_uiPictures > 0;
    unsigned int pictures = 0;
    double last = m_window.getTime();
    while (!m_window.isClosing())
    {
        if (m_signals.areThere())
        {
            m_window.close();
        }
        m_window.poll();
        for (const std::string& file : m_window.takeDroppedFiles())
        {
            open(file);
        }
        pollFiles();
        pollConversion();
        doLines();
        if (alone && !m_messages.m_strError.empty())
        {
            throw Failure(m_messages.m_strError);
        }
        const double now = m_window.getTime();
        m_viewer.update(m_options.m_dSecondsPerPicture > 0.0 ? m_options.m_dSecondsPerPicture
                                                             : std::min(now - last, 0.25));
        last = now;
        drawPicture();
        if (alone && m_conversion.getState() != Conversion::State::Running && ++pictures >= m_options.m_uiPictures)
        {
            m_window.close();
        }
        m_recorder.take(m_window.getWidth(), m_window.getHeight(), m_bLoaded, m_window.isClosing());
        m_window.show();
    }
    if (m_options.m_bSettings && describeSettings(m_viewer) != m_vecSettings)
    {
        writeSettings(getSettingsFile(), describeSettings(m_viewer));
    }
}

/// Carries out what the options say, up to the next "wait PICTURES".
void ViewWindow::doLines()
{
    if (!m_bLoaded || m_uiWait > 0)
    {
        m_uiWait -= m_uiWait > 0 ? 1 : 0;
        return;
    }
    while (m_uiNextLine < m_options.m_vecLines.size() && m_uiWait == 0)
    {
        const std::string& line = m_options.m_vecLines[m_uiNextLine++];
        if (std::sscanf(line.c_str(), "wait %u", &m_uiWait) != 1)
        {
            doLine(line);
        }
    }
}

/// What went wrong stays for those who read it after the last line.
void ViewWindow::doLine(const std::string& line)
{
    const std::string before = std::exchange(m_messages.m_strError, {});
    attempt(
        [this, &line]
        {
            try
            {
                if (line == "wait" || line.starts_with("wait "))
                {
                    throw Failure("wait how many pictures? Such as \"wait 20\"");
                }
                viewer::execute(m_viewer, line);
            }
            catch (const std::exception& error)
            {
                throw Failure("--do \"" + line + "\": " + error.what());
            }
        });
    const bool both = !before.empty() && !m_messages.m_strError.empty();
    m_messages.m_strError = before + (both ? "\n" : "") + m_messages.m_strError;
}

void ViewWindow::drawPicture()
{
    m_window.begin();
    const auto height = static_cast<float>(m_window.getHeight());
    m_free = m_panels.getFree(m_viewer, static_cast<float>(m_window.getWidth()), height);
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    // What lies below the panels, which let it shine through a little.
    glClearColor(0.11F, 0.12F, 0.14F, 1.0F);
    glClear(GL_COLOR_BUFFER_BIT);
    // OpenGL counts rows from the bottom.
    glViewport(static_cast<GLint>(m_free.m_fLeft), static_cast<GLint>(height - m_free.m_fTop - m_free.m_fHeight),
               static_cast<GLsizei>(m_free.m_fWidth), static_cast<GLsizei>(m_free.m_fHeight));
    attempt([this] { m_viewer.draw(m_renderer, getPictureWidth(), getPictureHeight()); });
    handleInput();
    Requests requests;
    m_panels.draw(m_viewer, m_messages, requests);
    m_window.finish();
    carryOut(requests);
}

void ViewWindow::carryOut(const Requests& requests)
{
    for (const std::string& line : requests.m_vecLines)
    {
        execute(line);
    }
    if (requests.m_bReloadModel)
    {
        open(m_strModel);
    }
    if (requests.m_bPicture)
    {
        attempt([this] { writePicture(); });
    }
    if (requests.m_bLoop)
    {
        attempt([this] { writeLoopPicture(); });
    }
    if (requests.m_bCopyRenderCommand)
    {
        attempt([this] { copyRenderCommand(); });
    }
    if (requests.m_bQuit)
    {
        m_window.close();
    }
}

template <typename Work>
void ViewWindow::attempt(const Work& work)
{
    const unsigned int loads = m_viewer.getLoadCount();
    try
    {
        work();
        if (m_viewer.getLoadCount() != loads)
        {
            afterLoading();
        }
    }
    catch (const std::exception& error)
    {
        fail(error.what());
    }
}

void ViewWindow::execute(const std::string& line)
{
    attempt([this, &line] { viewer::execute(m_viewer, line); });
}

void ViewWindow::executeKey(const std::string& key)
{
    attempt([this, &key] { viewer::executeKey(m_viewer, key); });
}

void ViewWindow::copyRenderCommand()
{
    static_cast<void>(needObject(m_viewer));
    const std::string command = makeRenderCommand(m_viewer, getPictureWidth(), getPictureHeight());
    const std::string missing = listWhatRenderLeavesOut(m_viewer);
    m_window.setClipboard(command);
    note("In the clipboard: " + command + (missing.empty() ? "" : "\nIt draws all but " + missing + ".") +
         (Conversion::isModel(m_strModel) ? "\nIts script goes with this window: \"tw2 convert\" makes one that stays."
                                          : ""));
}

void ViewWindow::writePicture()
{
    static_cast<void>(needObject(m_viewer));
    const std::string file = makeFreeName(fs::path(m_strModel).stem().string(), ".png");
    takePicture(m_viewer, m_renderer, getPictureWidth(), getPictureHeight()).writePNG(file.c_str());
    note("Written: " + fs::absolute(file).string());
}

void ViewWindow::writeLoopPicture()
{
    static_cast<void>(needObject(m_viewer));
    constexpr double framesPerSecond = 25.0;
    constexpr unsigned int widest = 640;
    const unsigned int width = std::min(getPictureWidth(), widest);
    const unsigned int height = std::max(1U, getPictureHeight() * width / getPictureWidth());
    const std::string file = makeFreeName(fs::path(m_strModel).stem().string(), ".gif");
    writeLoop(m_viewer, m_renderer, file, width, height, framesPerSecond);
    note("Written: " + fs::absolute(file).string());
}

void ViewWindow::fail(const std::string& reason)
{
    m_messages.m_strError = reason;
    m_messages.m_strNote.clear();
}

void ViewWindow::note(const std::string& text)
{
    // As long as it takes to read it.
    constexpr double shortest = 5.0;
    constexpr double lettersPerSecond = 15.0;
    m_messages.m_strNote = text;
    m_dNoteUntil = m_window.getTime() + std::max(shortest, static_cast<double>(text.size()) / lettersPerSecond);
}
}  // namespace TW2::viewer
