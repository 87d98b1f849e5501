// Opens a window and draws a skinned character into it.
//
//     example_window [script [pictures]]      without one, in the project's folder: the sprout of its sample
//
// With a number of pictures it ends after so many and leaves the last one in "window.png".

#include <tw2/tw2.h>

#include <render/picture_target.h>
#include <render/scene_renderer.h>
#include <render/studio.h>

// The functions of OpenGL by any loader; the renderer's headers bring none.
#define GLFW_INCLUDE_NONE
#include <epoxy/gl.h>
#include <GLFW/glfw3.h>

#include <cstdio>
#include <cstdlib>

namespace
{
void run(GLFWwindow* window, const char* script, int pictures)
{
    TW2::TW_VertexAnimation character(script, "skeleton", "skin");
    const int index = character.getMaximumAnimationIndex();
    P_Context context;
    P_Scene scene(&context);
    character.addTo(&scene);
    P_Camera camera;
    camera.lookAt({2.0F, 3.0F, -11.0F}, {0.0F, 2.4F, 0.0F}, {0.0F, 1.0F, 0.0F});
    context.setCurrentCamera(&camera);
    const TW2::render::StudioLights lights(scene, camera, TW2::render::chooseLightStrength(character));
    TW2::render::SceneRenderer renderer;
    const TW2::render::View view;
    for (int drawn = 0; glfwWindowShouldClose(window) == GLFW_FALSE; ++drawn)
    {
        int width = 0;
        int height = 0;
        glfwGetFramebufferSize(window, &width, &height);
        if (width > 0 && height > 0)
        {
            glViewport(0, 0, width, height);
            camera.setPerspective(45.0F, static_cast<float>(width) / static_cast<float>(height), 0.1F, 100.0F);
            character.animateObject(
                index, pictures > 0 ? 0.1F * static_cast<float>(drawn) : static_cast<float>(glfwGetTime()));
            scene.executeFrame();
            renderer.draw(scene, camera, view);
            if (drawn + 1 == pictures)
            {
                const TW2::render::PictureTarget target(800, 600);
                target.bind();
                renderer.draw(scene, camera, view);
                target.read().writePNG("window.png");
                return;
            }
            glfwSwapBuffers(window);
        }
        glfwPollEvents();
    }
}
}  // namespace

int main(int argc, char** argv)
{
    glfwInit();
    glfwWindowHint(GLFW_CONTEXT_VERSION_MAJOR, 3);
    glfwWindowHint(GLFW_CONTEXT_VERSION_MINOR, 3);
    glfwWindowHint(GLFW_OPENGL_PROFILE, GLFW_OPENGL_CORE_PROFILE);
    glfwWindowHint(GLFW_SAMPLES, 4);
    int status = 1;
    if (GLFWwindow* const window = glfwCreateWindow(800, 600, "TW2", nullptr, nullptr))
    {
        glfwMakeContextCurrent(window);
        try
        {
            run(window, argc > 1 ? argv[1] : "sample/sprout.script", argc > 2 ? std::atoi(argv[2]) : 0);
            status = 0;
        }
        catch (const S_Exception& exception)
        {
            std::fprintf(stderr, "%s\n", exception.getErrorMessage());
        }
    }
    else
    {
        std::fprintf(stderr, "no window with OpenGL 3.3 can be opened here\n");
    }
    glfwTerminate();
    return status;
}
