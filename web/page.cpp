/// The functions that the page calls. Every one that can fail returns the reason as text, empty when it did not: the
/// page shows it, and what was loaded plays on.

#include "render/scene_renderer.h"
#include "viewer/commands.h"
#include "viewer/render_command.h"
#include "viewer/viewer.h"
#include "web/state.h"

#include <emscripten/emscripten.h>
#include <emscripten/html5.h>
#include <GLES3/gl3.h>

#if defined(TW2_HAS_CONVERT)
#include "convert/converter.h"
#endif

#include <exception>
#include <filesystem>
#include <memory>
#include <string>

namespace
{
using TW2::viewer::Viewer;

struct Page
{
    Viewer m_viewer;
    std::unique_ptr<TW2::render::SceneRenderer> m_renderer;
    std::string m_strAnswer;  // what the last call returned points here
};

Page& page()
{
    static Page s_page;
    return s_page;
}

const char* answer(std::string text)
{
    page().m_strAnswer = std::move(text);
    return page().m_strAnswer.c_str();
}

template <typename Work>
const char* attempt(const Work& work)
{
    try
    {
        work();
        return answer({});
    }
    catch (const std::exception& error)
    {
        return answer(error.what());
    }
}
}  // namespace

extern "C"
{
    /// Makes the WebGL 2 context of the canvas with that selector.
    EMSCRIPTEN_KEEPALIVE const char* tw2_start(const char* canvas)
    {
        EmscriptenWebGLContextAttributes attributes;
        emscripten_webgl_init_context_attributes(&attributes);
        attributes.majorVersion = 2;
        attributes.alpha = EM_FALSE;
        attributes.antialias = EM_TRUE;
        attributes.preserveDrawingBuffer = EM_TRUE;  // a picture of the canvas can be taken at any time
        const EMSCRIPTEN_WEBGL_CONTEXT_HANDLE context = emscripten_webgl_create_context(canvas, &attributes);
        if (context <= 0 || emscripten_webgl_make_context_current(context) != EMSCRIPTEN_RESULT_SUCCESS)
        {
            return answer("This browser offers no WebGL 2.");
        }
        return attempt([] { page().m_renderer = std::make_unique<TW2::render::SceneRenderer>(); });
    }

    EMSCRIPTEN_KEEPALIVE const char* tw2_execute(const char* line)
    {
        return attempt([line] { TW2::viewer::execute(page().m_viewer, line); });
    }

    EMSCRIPTEN_KEEPALIVE int tw2_key(const char* key)
    {
        try
        {
            return TW2::viewer::executeKey(page().m_viewer, key) ? 1 : 0;
        }
        catch (const std::exception& error)
        {
            answer(error.what());
            return 2;
        }
    }

    /// What `tw2_key` said when it returned 2.
    EMSCRIPTEN_KEEPALIVE const char* tw2_answer()
    {
        return page().m_strAnswer.c_str();
    }

    EMSCRIPTEN_KEEPALIVE const char* tw2_open(const char* script)
    {
        return attempt([script] { page().m_viewer.open(script); });
    }

    /// Converts a model in the page's file system into `folder` and opens it; the answer begins with "!" when it
    /// failed, else it holds the warnings, one a line.
    EMSCRIPTEN_KEEPALIVE const char* tw2_convert(const char* model, const char* folder)
    {
#if defined(TW2_HAS_CONVERT)
        try
        {
            std::filesystem::create_directories(folder);
            const TW2::convert::Summary summary = TW2::convert::convertModel({model}, folder, {});
            page().m_viewer.open(summary.m_strScript);
            std::string warnings;
            for (const std::string& warning : summary.m_vecWarnings)
            {
                warnings += warning + "\n";
            }
            return answer(warnings);
        }
        catch (const std::exception& error)
        {
            return answer("!" + std::string(error.what()));
        }
#else
        static_cast<void>(folder);
        return answer("!" + std::string(model) +
                      ": this page was built without the converter; convert it with tw2 convert");
#endif
    }

    EMSCRIPTEN_KEEPALIVE int tw2_can_convert()
    {
#if defined(TW2_HAS_CONVERT)
        return 1;
#else
        return 0;
#endif
    }

    /// Lets `seconds` pass and draws into the canvas.
    EMSCRIPTEN_KEEPALIVE const char* tw2_frame(double seconds, int width, int height)
    {
        return attempt(
            [=]
            {
                page().m_viewer.update(seconds);
                glBindFramebuffer(GL_FRAMEBUFFER, 0);
                glViewport(0, 0, width, height);
                page().m_viewer.draw(*page().m_renderer, static_cast<unsigned int>(width),
                                     static_cast<unsigned int>(height));
            });
    }

    EMSCRIPTEN_KEEPALIVE void tw2_pick(float x, float y)
    {
        page().m_viewer.pick(x, y);
    }

    EMSCRIPTEN_KEEPALIVE const char* tw2_object()
    {
        return answer(TW2::viewer::describeObject(page().m_viewer));
    }

    EMSCRIPTEN_KEEPALIVE const char* tw2_state()
    {
        return answer(TW2::viewer::describeState(page().m_viewer));
    }

    /// How the picked bone moves in the animation that plays.
    EMSCRIPTEN_KEEPALIVE const char* tw2_curves()
    {
        return answer(TW2::viewer::describeCurves(page().m_viewer));
    }

    /// The `tw2 render` command of the picture; on a second line what it leaves out.
    EMSCRIPTEN_KEEPALIVE const char* tw2_render_command(int width, int height)
    {
        return answer(TW2::viewer::makeRenderCommand(page().m_viewer, static_cast<unsigned int>(width),
                                                     static_cast<unsigned int>(height)) +
                      "\n" + TW2::viewer::listWhatRenderLeavesOut(page().m_viewer));
    }

    EMSCRIPTEN_KEEPALIVE const char* tw2_commands()
    {
        return answer(TW2::viewer::describeCommands());
    }

    /// Names of the bones and where they are in a picture of that size: "x y index" lines.
    EMSCRIPTEN_KEEPALIVE const char* tw2_labels(int width, int height)
    {
        std::string lines;
        for (const Viewer::Label& label :
             page().m_viewer.getLabels(static_cast<unsigned int>(width), static_cast<unsigned int>(height)))
        {
            lines += std::to_string(label.m_fX) + " " + std::to_string(label.m_fY) + " " +
                     std::to_string(label.m_iBone) + "\n";
        }
        return answer(std::move(lines));
    }
}

int main()
{
    return 0;
}
