#pragma once

#include "render/scene_renderer.h"
#include "viewer/file_watch.h"
#include "viewer/viewer.h"
#include "viewer/window/closing_signals.h"
#include "viewer/window/conversion.h"
#include "viewer/window/glfw_window.h"
#include "viewer/window/panels.h"
#include "viewer/window/window_recorder.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace TW2::viewer
{
struct Requests;

/// What a window begins with.
struct WindowOptions
{
    std::string m_strFile;  ///< script, model, or a folder with a script; empty: files are dropped onto the window
    unsigned int m_uiWidth;
    unsigned int m_uiHeight;
    float m_fScale = 0.0F;  ///< how large letters and controls are; 0: as the screen says
    /// Commands carried out once the file is loaded; "wait N" lets N pictures pass before the next.
    std::vector<std::string> m_vecLines;
    bool m_bSettings = true;  ///< what is shown is kept from run to run
    /// @name Without anybody before it
    /// @{
    std::string m_strWindowPicture;     ///< written when it closes: how it looks then, or as a .gif all along
    unsigned int m_uiPictures = 0;      ///< pictures before that, or before closing; 0: until it is closed
    double m_dSecondsPerPicture = 0.0;  ///< fixed time step; 0: real time
    /// @}
};

/// The window of `tw2 view`: a viewer under panels, driven by mouse, keyboard and dropped files.
///
/// A model that is no script is converted by a process of its own, while the window goes on with what it shows. A file
/// that changes on the disk is loaded again. What fails is said in the window; the old object plays on.
class ViewWindow
{
public:
    /// Opens the window. Throws Failure when it cannot.
    explicit ViewWindow(const WindowOptions& options);

    /// Until the window is closed. Throws Failure when what the options name cannot be shown and nobody would see why,
    /// since the window closes by itself.
    void run();

private:
    void open(const std::string& file);
    void startConversion(const std::string& model);
    void afterLoading();
    void pollFiles();
    void pollConversion();
    void handleInput();
    void handleMouse();
    void handleKeys();
    void handleKey(const GlfwWindow::KeyPress& press);
    void carryOut(const Requests& requests);
    /// Says in the window what the work throws.
    template <typename Work>
    void attempt(const Work& work);
    void execute(const std::string& line);
    void executeKey(const std::string& key);
    void copyRenderCommand();
    void writePicture();
    void writeLoopPicture();
    void doLines();
    void doLine(const std::string& line);
    void drawPicture();
    [[nodiscard]] unsigned int getPictureWidth() const { return static_cast<unsigned int>(m_free.m_fWidth); }
    [[nodiscard]] unsigned int getPictureHeight() const { return static_cast<unsigned int>(m_free.m_fHeight); }
    void fail(const std::string& reason);
    void note(const std::string& text);

    ClosingSignals m_signals;
    WindowOptions m_options;
    GlfwWindow m_window;
    WindowRecorder m_recorder;
    render::SceneRenderer m_renderer;
    Viewer m_viewer;
    Conversion m_conversion;
    FileWatch m_watch;
    Panels m_panels;
    Messages m_messages;
    std::string m_strModel;  ///< what the user opened: a script, or the model that it was made from
    std::vector<std::string> m_vecSettings;
    double m_dLastLook = 0.0;
    double m_dNoteUntil = 0.0;
    Rectangle m_free;  ///< where the picture lies
    bool m_bLoaded = false;
    std::size_t m_uiNextLine = 0;  ///< of the commands to begin with
    unsigned int m_uiWait = 0;     ///< pictures until it
    bool m_bDragged = false;
};
}  // namespace TW2::viewer
