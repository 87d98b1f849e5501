#include "viewer/window/glfw_window.h"

#include "viewer/failure.h"

// The loader's header comes before GLFW's.
#include <backends/imgui_impl_glfw.h>
#include <backends/imgui_impl_opengl3.h>
#include <epoxy/gl.h>
#include <GLFW/glfw3.h>
#include <imgui.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>
#include <utility>

namespace TW2::viewer
{
namespace
{
/// A font that has the letters that people name things with; the built-in one has English ones only.
void loadFont(float scale)
{
    constexpr std::array<const char*, 3> files{"/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf",
                                               "/usr/share/fonts/truetype/noto/NotoSans-Regular.ttf",
                                               "/usr/share/fonts/truetype/liberation/LiberationSans-Regular.ttf"};
    static constexpr std::array<ImWchar, 7> letters{0x20, 0x24F, 0x370, 0x52F, 0x2000, 0x22FF, 0};
    constexpr float size = 14.0F;
    ImFontAtlas& fonts = *ImGui::GetIO().Fonts;
    const auto found =
        std::find_if(files.begin(), files.end(), [](const char* file) { return std::filesystem::exists(file); });
    if (found != files.end())
    {
        fonts.AddFontFromFileTTF(*found, size * scale, nullptr, letters.data());
        return;
    }
    ImFontConfig config;
    config.SizePixels = size * scale;
    fonts.AddFontDefault(&config);
}

void setStyle(float scale)
{
    ImGui::StyleColorsDark();
    ImGuiStyle& style = ImGui::GetStyle();
    style.WindowRounding = 4.0F;
    style.FrameRounding = 3.0F;
    style.GrabRounding = 3.0F;
    style.WindowBorderSize = 0.0F;
    style.ItemSpacing = {6.0F, 4.0F};
    style.Colors[ImGuiCol_WindowBg] = {0.11F, 0.12F, 0.14F, 0.92F};
    style.Colors[ImGuiCol_PopupBg] = {0.14F, 0.15F, 0.18F, 1.0F};
    // White letters stand on it.
    style.Colors[ImGuiCol_PlotHistogram] = {0.20F, 0.42F, 0.70F, 1.0F};
    style.ScaleAllSizes(scale);
}

/// Whether a program draws, not a graphics processor: several samples for each pixel would cost it most of its time.
bool isDrawnBySoftware()
{
    const std::string_view name(reinterpret_cast<const char*>(glGetString(GL_RENDERER)));
    constexpr std::array<std::string_view, 3> programs{"llvmpipe", "softpipe", "SwiftShader"};
    return std::any_of(programs.begin(), programs.end(),
                       [name](std::string_view program) { return name.find(program) != std::string_view::npos; });
}

std::string getReason()
{
    const char* reason = nullptr;
    glfwGetError(&reason);
    return reason ? std::string(": ") + reason : std::string();
}
}  // namespace

GlfwWindow::GlfwWindow(unsigned int width, unsigned int height, const char* title, float scale)
{
    if (!glfwInit())
    {
        throw Failure("no window can be opened" + getReason());
    }
    glfwWindowHint(GLFW_CONTEXT_VERSION_MAJOR, 3);
    glfwWindowHint(GLFW_CONTEXT_VERSION_MINOR, 3);
    glfwWindowHint(GLFW_OPENGL_PROFILE, GLFW_OPENGL_CORE_PROFILE);
    glfwWindowHint(GLFW_OPENGL_FORWARD_COMPAT, GLFW_TRUE);
    glfwWindowHint(GLFW_SAMPLES, 4);
    glfwWindowHint(GLFW_SCALE_TO_MONITOR, GLFW_TRUE);
    open(width, height, title);
    if (isDrawnBySoftware())
    {
        glfwDestroyWindow(m_pWindow);
        glfwWindowHint(GLFW_SAMPLES, 0);
        open(width, height, title);
    }
    glfwSwapInterval(1);
    float vertical = 1.0F;
    glfwGetWindowContentScale(m_pWindow, &m_fScale, &vertical);
    m_fScale = scale > 0.0F ? scale : std::max(m_fScale, 1.0F);
    glfwSetWindowSizeLimits(m_pWindow, 480, 320, GLFW_DONT_CARE, GLFW_DONT_CARE);
    glfwSetWindowUserPointer(m_pWindow, this);
    glfwSetDropCallback(m_pWindow,
                        [](GLFWwindow* window, int count, const char** files)
                        {
                            auto* self = static_cast<GlfwWindow*>(glfwGetWindowUserPointer(window));
                            self->m_vecDropped.insert(self->m_vecDropped.end(), files, files + count);
                        });
    // Dear ImGui calls what was set before it.
    glfwSetKeyCallback(
        m_pWindow,
        [](GLFWwindow* window, int key, int, int action, int modifiers)
        {
            if (action != GLFW_RELEASE)
            {
                static_cast<GlfwWindow*>(glfwGetWindowUserPointer(window))
                    ->m_vecKeys.push_back({key, (modifiers & GLFW_MOD_CONTROL) != 0, action == GLFW_REPEAT});
            }
        });
    IMGUI_CHECKVERSION();
    ImGui::CreateContext();
    // Where panels lie follows from the window's size: nothing of it is kept.
    ImGui::GetIO().IniFilename = nullptr;
    loadFont(m_fScale);
    setStyle(m_fScale);
    ImGui_ImplGlfw_InitForOpenGL(m_pWindow, true);
    ImGui_ImplOpenGL3_Init("#version 330");
}

void GlfwWindow::open(unsigned int width, unsigned int height, const char* title)
{
    m_pWindow = glfwCreateWindow(static_cast<int>(width), static_cast<int>(height), title, nullptr, nullptr);
    if (!m_pWindow)
    {
        const std::string reason = getReason();
        glfwTerminate();
        throw Failure("no window with OpenGL 3.3 can be opened" + reason);
    }
    glfwMakeContextCurrent(m_pWindow);
}

GlfwWindow::~GlfwWindow()
{
    ImGui_ImplOpenGL3_Shutdown();
    ImGui_ImplGlfw_Shutdown();
    ImGui::DestroyContext();
    glfwDestroyWindow(m_pWindow);
    glfwTerminate();
}

bool GlfwWindow::isClosing() const
{
    return glfwWindowShouldClose(m_pWindow) != 0;
}

void GlfwWindow::close()
{
    glfwSetWindowShouldClose(m_pWindow, GLFW_TRUE);
}

void GlfwWindow::setTitle(const std::string& title)
{
    glfwSetWindowTitle(m_pWindow, title.c_str());
}

void GlfwWindow::poll()
{
    glfwPollEvents();
}

std::vector<std::string> GlfwWindow::takeDroppedFiles()
{
    return std::exchange(m_vecDropped, {});
}

std::vector<GlfwWindow::KeyPress> GlfwWindow::takeKeys()
{
    return std::exchange(m_vecKeys, {});
}

void GlfwWindow::setClipboard(const std::string& text)
{
    glfwSetClipboardString(m_pWindow, text.c_str());
}

unsigned int GlfwWindow::getWidth() const
{
    int width = 0;
    int height = 0;
    glfwGetFramebufferSize(m_pWindow, &width, &height);
    return static_cast<unsigned int>(std::max(width, 1));
}

unsigned int GlfwWindow::getHeight() const
{
    int width = 0;
    int height = 0;
    glfwGetFramebufferSize(m_pWindow, &width, &height);
    return static_cast<unsigned int>(std::max(height, 1));
}

double GlfwWindow::getTime() const
{
    return glfwGetTime();
}

void GlfwWindow::begin()
{
    ImGui_ImplOpenGL3_NewFrame();
    ImGui_ImplGlfw_NewFrame();
    ImGui::NewFrame();
}

void GlfwWindow::finish()
{
    ImGui::Render();
    ImGui_ImplOpenGL3_RenderDrawData(ImGui::GetDrawData());
}

void GlfwWindow::show()
{
    glfwSwapBuffers(m_pWindow);
}
}  // namespace TW2::viewer
