#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/scene.h>

#include <render/offscreen_context.h>
#include <render/overlays.h>
#include <render/picture_target.h>
#include <render/render_exception.h>
#include <render/scene_renderer.h>
#include <render/studio.h>

#include <cstdio>

// Draws through the installed renderer. A machine without a driver is no failure of the installation.
int main()
{
    try
    {
        const TW2::render::OffscreenContext driver;
        P_Context context;
        P_Scene scene(&context);
        P_Camera camera;
        TW2::render::SceneRenderer renderer;
        const TW2::render::PictureTarget target(64, 48);
        TW2::render::View view;
        view.m_topColor = view.m_bottomColor = G_FColor(10.0F, 20.0F, 30.0F);
        scene.executeFrame();
        target.bind();
        renderer.draw(scene, camera, view);
        const G_Image picture = target.read();
        return picture.isUniform() && picture.getPixel(0, 0)[1] == 20 ? 0 : 1;
    }
    catch (const TW2::render::RenderException& exception)
    {
        std::puts(exception.getErrorMessage());
        return 0;
    }
}
