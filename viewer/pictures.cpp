#include "viewer/pictures.h"

#include "render/animation_writer.h"
#include "render/gl.h"
#include "render/picture_target.h"
#include "render/scene_renderer.h"
#include "viewer/failure.h"
#include "viewer/viewer.h"

#include <array>
#include <cmath>
#include <memory>
#include <vector>

namespace TW2::viewer
{
namespace
{
/// Puts the target back that was bound.
class TargetGuard
{
public:
    TargetGuard()
    {
        glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &m_iTarget);
        glGetIntegerv(GL_VIEWPORT, m_aiViewport.data());
    }
    ~TargetGuard()
    {
        glBindFramebuffer(GL_FRAMEBUFFER, static_cast<GLuint>(m_iTarget));
        glViewport(m_aiViewport[0], m_aiViewport[1], m_aiViewport[2], m_aiViewport[3]);
    }
    TargetGuard(const TargetGuard&) = delete;
    TargetGuard& operator=(const TargetGuard&) = delete;

private:
    GLint m_iTarget = 0;
    std::array<GLint, 4> m_aiViewport{};
};
}  // namespace

G_Image takePicture(Viewer& viewer, render::SceneRenderer& renderer, unsigned int width, unsigned int height)
{
    const TargetGuard guard;
    const render::PictureTarget target(width, height);
    target.bind();
    viewer.draw(renderer, width, height);
    return target.read();
}

void writeLoop(Viewer& viewer, render::SceneRenderer& renderer, const std::string& file, unsigned int width,
               unsigned int height, double framesPerSecond)
{
    const Playback& playback = viewer.getPlayback();
    const double period = playback.getPeriod();
    const auto count = static_cast<unsigned int>(std::lround(period * framesPerSecond));
    if (count < 2)
    {
        throw Failure("nothing moves: there is no loop to write");
    }
    const TargetGuard guard;
    const render::PictureTarget target(width, height);
    const double time = playback.getTime();
    const auto draw = [&](unsigned int picture)
    {
        viewer.seek(period * picture / count);  // of the mixer, too
        viewer.update(0.0);
        target.bind();
        viewer.draw(renderer, width, height);
        return target.read();
    };
    std::unique_ptr<render::AnimationWriter> writer;
    if (file.ends_with(".webp"))
    {
        writer = render::makeWebPWriter(framesPerSecond);
    }
    else
    {
        std::vector<G_Image> samples;
        for (unsigned int i = 0; i < 4; ++i)
        {
            samples.push_back(draw(count * i / 4));
        }
        writer = render::makeGIFWriter(samples, framesPerSecond);
    }
    for (unsigned int i = 0; i < count; ++i)
    {
        writer->add(draw(i));
    }
    viewer.seek(time);
    viewer.update(0.0);
    writer->write(file.c_str());
}
}  // namespace TW2::viewer
