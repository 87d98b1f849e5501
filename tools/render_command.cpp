#include "render/bounds.h"
#include "render/contact_sheet.h"
#include "render/gif_writer.h"
#include "render/offscreen_context.h"
#include "render/picture_target.h"
#include "render/scene_renderer.h"
#include "render/studio.h"
#include "tools/animated_script.h"
#include "tools/commands.h"
#include "tools/progress.h"

#include <tw2/object/object_animation.h>

#include <platform/runtime/str.h>
#include <platform/scene/camera.h>
#include <platform/scene/context.h>
#include <platform/scene/scene.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace
{
using tools::AnimatedScript;

struct Arguments
{
    std::string script;
    tools::Selection selection;
    std::string animation;
    std::string blend;
    std::string weight = "0..1";
    std::optional<double> time;
    std::optional<double> from;
    std::optional<double> to;
    double fps = 25.0;
    std::string size = "640x480";
    std::string png;
    std::string gif;
    std::string sheet;
    std::string frames;
    unsigned int sheetPictures = 12;
    unsigned int columns = 0;
    std::vector<float> eye;
    std::vector<float> target;
    TW2::render::Viewpoint viewpoint;
    bool skeleton = false;
    bool noGrid = false;
    bool noLights = false;
};

/// What is shown at each time: one animation, or a fade from one into another.
struct Motion
{
    int first = -1;
    int second = -1;
    double weightFrom = 0.0;  ///< of the second animation, at the beginning
    double weightTo = 0.0;
    double begin = 0.0;  ///< seconds
    double end = 0.0;
    unsigned int pictures = 1;

    [[nodiscard]] double getTime(unsigned int picture) const
    {
        return pictures > 1 ? begin + (end - begin) * picture / (pictures - 1) : begin;
    }
    [[nodiscard]] double getWeight(unsigned int picture) const
    {
        const double progress = pictures > 1 ? static_cast<double>(picture) / (pictures - 1) : 0.0;
        return weightFrom + (weightTo - weightFrom) * progress;
    }
};

std::pair<unsigned int, unsigned int> parseSize(const std::string& text)
{
    unsigned int width = 0;
    unsigned int height = 0;
    char rest = 0;
    if (std::sscanf(text.c_str(), "%ux%u%c", &width, &height, &rest) != 2 || width == 0 || height == 0 ||
        width > 8192 || height > 8192)
    {
        throw tools::Failure("--size is WIDTHxHEIGHT, each 1 to 8192, not \"" + text + "\"");
    }
    return {width, height};
}

/// The number that is all of `text`; nothing when it is none.
std::optional<double> parseNumber(std::string_view text)
{
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

/// "0.5" or "0..1".
std::pair<double, double> parseWeight(std::string_view text)
{
    const std::size_t dots = text.find("..");
    const std::optional<double> from = parseNumber(text.substr(0, dots));
    const std::optional<double> to = dots == std::string_view::npos ? from : parseNumber(text.substr(dots + 2));
    if (!from || !to)
    {
        throw tools::Failure("--weight is a number or a range such as 0..1, not \"" + std::string(text) + "\"");
    }
    return {*from, *to};
}

Motion chooseMotion(const Arguments& arguments, AnimatedScript& script)
{
    Motion motion;
    if (arguments.blend.empty())
    {
        motion.first =
            arguments.animation.empty() ? script.chooseAnimation() : script.findAnimation(arguments.animation);
    }
    else
    {
        const std::size_t colon = arguments.blend.find(':');
        if (colon == std::string::npos)
        {
            throw tools::Failure("--blend is two animations, such as 0:1, not \"" + arguments.blend + "\"");
        }
        motion.first = script.findAnimation(arguments.blend.substr(0, colon));
        motion.second = script.findAnimation(arguments.blend.substr(colon + 1));
        std::tie(motion.weightFrom, motion.weightTo) = parseWeight(arguments.weight);
    }
    TW2::TW_ObjectAnimation& skeleton = script.getSkeleton();
    const auto lengthOf = [&skeleton](int index)
    {
        const float fps = index >= 0 ? skeleton.getAnimationFPS(index) : 0.0F;
        return fps > 0.0F ? static_cast<double>(skeleton.getAnimationFrames(index) - 1) / static_cast<double>(fps)
                          : 0.0;
    };
    const double length = std::max(lengthOf(motion.first), lengthOf(motion.second));
    motion.begin = arguments.time.value_or(arguments.from.value_or(0.0));
    motion.end = arguments.time.value_or(arguments.to.value_or(std::max(length, motion.begin)));
    if (motion.end < motion.begin)
    {
        throw tools::Failure("the time range ends before it begins");
    }
    motion.pictures = static_cast<unsigned int>(std::floor((motion.end - motion.begin) * arguments.fps + 1e-6)) + 1;
    return motion;
}

/// A scene with one animated object, its lights and its camera.
class Stage
{
public:
    Stage(const Arguments& arguments, AnimatedScript& script, const Motion& motion)
        : m_script(script), m_motion(motion), m_scene(&m_context)
    {
        m_script.getObject().addTo(&m_scene);
        m_context.setCurrentCamera(nullptr);
        frame(arguments);
        m_context.setCurrentCamera(&m_camera);
        if (!arguments.noLights)
        {
            m_lights.emplace(m_scene, m_camera, TW2::render::chooseLightStrength(m_script.getDrawn()));
        }
        if (!arguments.noGrid)
        {
            TW2::render::addGroundGrid(m_view, m_bounds);
        }
    }

    ~Stage() { m_script.getObject().remove(); }
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    G_Image draw(TW2::render::SceneRenderer& renderer, const TW2::render::PictureTarget& target, unsigned int picture,
                 bool skeleton)
    {
        pose(picture);
        TW2::render::View view = m_view;
        if (skeleton)
        {
            TW2::render::addSkeleton(view, m_script.getSkeleton(), G_FColor(230.0F, 80.0F, 40.0F));
        }
        target.bind();
        renderer.draw(m_scene, m_camera, view);
        return target.read();
    }

private:
    void pose(unsigned int picture)
    {
        const auto time = static_cast<float>(m_motion.getTime(picture));
        if (m_motion.second >= 0)
        {
            m_script.getObject().crossAnimateObject(m_motion.first, time,
                                                    static_cast<float>(1.0 - m_motion.getWeight(picture)),
                                                    m_motion.second, time, nullptr);
        }
        else if (m_motion.first >= 0)
        {
            m_script.getObject().animateObject(m_motion.first, time, nullptr);
        }
        m_scene.executeFrame();
    }

    /// Looks at the whole motion, or from where the arguments say.
    void frame(const Arguments& arguments)
    {
        constexpr unsigned int mostSamples = 40;
        const unsigned int samples = std::min(m_motion.pictures, mostSamples);
        for (unsigned int i = 0; i < samples; ++i)
        {
            pose(samples > 1 ? i * (m_motion.pictures - 1) / (samples - 1) : 0);
            collect();
        }
        if (m_bounds.isEmpty())
        {
            throw tools::Failure("there is nothing to see: the object has no visible vertices");
        }
        const auto [width, height] = parseSize(arguments.size);
        const float aspect = static_cast<float>(width) / static_cast<float>(height);
        TW2::render::frameCamera(m_camera, m_vecPoints, arguments.viewpoint, aspect);
        if (!arguments.eye.empty())
        {
            const M_Vector3Template<float> eye{arguments.eye[0], arguments.eye[1], arguments.eye[2]};
            const M_Vector3Template<float> at =
                arguments.target.empty()
                    ? m_bounds.getCenter()
                    : M_Vector3Template<float>{arguments.target[0], arguments.target[1], arguments.target[2]};
            m_camera.lookAt(eye, at, {0.0F, 1.0F, 0.0F});
            const float distance = (at - eye).length() + m_bounds.getSize();
            m_camera.setPerspective(arguments.viewpoint.m_fVerticalAngle, aspect, distance * 0.001F, distance * 20.0F);
        }
    }

    /// Takes the vertices of the present pose, or as many of them as are enough to frame it.
    void collect()
    {
        constexpr std::size_t enough = 4000;
        m_vecVertices.clear();
        TW2::render::collectVertices(m_script.getObject(), m_vecVertices);
        const std::size_t step = m_vecVertices.size() / enough + 1;
        for (std::size_t i = 0; i < m_vecVertices.size(); ++i)
        {
            const M_Vector3Template<float>& point = m_vecVertices[i];
            m_bounds.add(point);
            if (i % step == 0 && std::isfinite(point.x + point.y + point.z))
            {
                m_vecPoints.push_back(point);
            }
        }
    }

    AnimatedScript& m_script;
    const Motion& m_motion;
    std::vector<M_Vector3Template<float>> m_vecVertices;
    std::vector<M_Vector3Template<float>> m_vecPoints;
    P_Context m_context;
    P_Scene m_scene;
    P_Camera m_camera;
    TW2::render::Bounds m_bounds;
    TW2::render::View m_view;
    std::optional<TW2::render::StudioLights> m_lights;
};

/// "walk_####.png" with a number in the place of the signs.
std::string makeNumberedName(const std::string& pattern, unsigned int number)
{
    const std::size_t first = pattern.find('#');
    const std::size_t last = pattern.find_last_of('#');
    const auto digits = static_cast<int>(last - first + 1);
    return pattern.substr(0, first) + S_STR("%0*u", digits, number).c_str() + pattern.substr(last + 1);
}

std::vector<G_Image> pickForSheet(const std::vector<G_Image>& pictures, unsigned int count)
{
    const auto total = static_cast<unsigned int>(pictures.size());
    const unsigned int used = std::clamp(count, 1U, total);
    std::vector<G_Image> chosen;
    for (unsigned int i = 0; i < used; ++i)
    {
        chosen.push_back(pictures[used > 1 ? std::size_t{i} * (total - 1) / (used - 1) : 0]);
    }
    return chosen;
}

void writePictures(const Arguments& arguments, const std::vector<G_Image>& pictures)
{
    if (!arguments.png.empty())
    {
        pictures.front().writePNG(arguments.png.c_str());
        std::printf("%s\n", arguments.png.c_str());
    }
    for (std::size_t i = 0; !arguments.frames.empty() && i < pictures.size(); ++i)
    {
        const std::string name = makeNumberedName(arguments.frames, static_cast<unsigned int>(i));
        pictures[i].writePNG(name.c_str());
        std::printf("%s\n", name.c_str());
    }
    if (!arguments.sheet.empty())
    {
        TW2::render::makeContactSheet(pickForSheet(pictures, arguments.sheetPictures), arguments.columns)
            .writePNG(arguments.sheet.c_str());
        std::printf("%s\n", arguments.sheet.c_str());
    }
    if (!arguments.gif.empty())
    {
        TW2::render::writeGIF(arguments.gif.c_str(), pictures, arguments.fps);
        std::printf("%s\n", arguments.gif.c_str());
    }
}

void run(const Arguments& arguments)
{
    if (arguments.png.empty() && arguments.gif.empty() && arguments.sheet.empty() && arguments.frames.empty())
    {
        throw tools::Failure("say what to write: --png, --frames, --sheet or --gif");
    }
    if (!arguments.frames.empty() && arguments.frames.find('#') == std::string::npos)
    {
        throw tools::Failure("--frames needs a place for the number, such as walk_####.png");
    }
    const auto [width, height] = parseSize(arguments.size);
    AnimatedScript script(arguments.script, arguments.selection);
    Motion motion = chooseMotion(arguments, script);
    const bool only = arguments.gif.empty() && arguments.sheet.empty() && arguments.frames.empty();
    constexpr unsigned int mostPictures = 2000;
    if (motion.pictures > mostPictures)
    {
        throw tools::Failure("that would be " + std::to_string(motion.pictures) + " pictures, more than " +
                             std::to_string(mostPictures) + ": give --from and --to, or fewer --fps");
    }

    const TW2::render::OffscreenContext context;
    TW2::render::SceneRenderer renderer;
    const TW2::render::PictureTarget target(width, height);
    Stage stage(arguments, script, motion);
    std::vector<G_Image> pictures;
    tools::Progress progress("Drawing", only ? 1 : motion.pictures);
    for (unsigned int i = 0; i < (only ? 1 : motion.pictures); ++i)
    {
        pictures.push_back(stage.draw(renderer, target, i, arguments.skeleton));
        progress.step();
    }
    progress.finish();
    writePictures(arguments, pictures);
}

void addPictureOptions(CLI::App& command, Arguments& arguments)
{
    command.add_option("--png", arguments.png, "Write one picture, at --time or --from");
    command.add_option("--frames", arguments.frames, "Write numbered pictures: walk_####.png");
    command.add_option("--sheet", arguments.sheet, "Write one picture with many moments side by side");
    command.add_option("--gif", arguments.gif, "Write an animated GIF");
    command.add_option("--sheet-pictures", arguments.sheetPictures, "Moments on the sheet (default: 12)");
    command.add_option("--columns", arguments.columns, "Columns of the sheet (default: about as wide as high)");
    command.add_option("--size", arguments.size, "WIDTHxHEIGHT of each picture (default: 640x480)");
    command.add_option("--fps", arguments.fps, "Pictures per second (default: 25)")->check(CLI::Range(1.0, 50.0));
    command.add_flag("--skeleton", arguments.skeleton, "Draw the bones over the picture");
    command.add_flag("--no-grid", arguments.noGrid, "Leave the ground grid out");
    command.add_flag("--no-lights", arguments.noLights, "Leave the lights out");
}

void addCameraOptions(CLI::App& command, Arguments& arguments)
{
    command.add_option("--azimuth", arguments.viewpoint.m_fAzimuth, "Degrees around the object; 0: from the front");
    command.add_option("--elevation", arguments.viewpoint.m_fElevation, "Degrees above the horizon");
    command.add_option("--angle", arguments.viewpoint.m_fVerticalAngle, "Field of view from bottom to top, in degrees")
        ->check(CLI::Range(1.0, 170.0));
    command.add_option("--eye", arguments.eye, "Where the camera stands")->expected(3)->type_name("X Y Z");
    command.add_option("--target", arguments.target, "What the camera looks at")->expected(3)->type_name("X Y Z");
}

const tools::Command s_command(
    "render", "Draw an animated object",
    [](CLI::App& command)
    {
        const auto arguments = std::make_shared<Arguments>();
        command.add_option("SCRIPT", arguments->script, "Script file")->required();
        command.add_option("--block", arguments->selection.block, "Block to draw (default: the first skin, or block)");
        command.add_option("--skeleton-block", arguments->selection.skeleton, "Skeleton of a skin");
        command.add_option("--levels", arguments->selection.levels, "Blocks that are levels of detail, nearest first")
            ->delimiter(',');
        command.add_option("--animation", arguments->animation, "Index, or part of the animation file's name");
        command.add_option("--blend", arguments->blend, "Two animations A:B: fade from A into B");
        command.add_option("--weight", arguments->weight, "Weight of B, or its course over the time range (0..1)");
        command.add_option("--time", arguments->time, "One moment, in seconds");
        command.add_option("--from", arguments->from, "Begin of the time range, in seconds");
        command.add_option("--to", arguments->to, "End of the time range, in seconds");
        addPictureOptions(command, *arguments);
        addCameraOptions(command, *arguments);
        command.callback([arguments] { run(*arguments); });
    });
}  // namespace
