#include "render/animation_writer.h"
#include "render/contact_sheet.h"
#include "render/offscreen_context.h"
#include "tools/commands.h"
#include "tools/progress.h"
#include "tools/render_motion.h"
#include "tools/render_stage.h"
#include "viewer/animated_script.h"

#include <platform/runtime/str.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace
{
using tools::Moments;
using TW2::viewer::AnimatedScript;

struct Arguments
{
    std::string script;
    TW2::viewer::Selection selection;
    tools::MotionArguments motion;
    tools::StageArguments stage;
    double fps = 25.0;
    std::string size = "640x480";
    std::vector<std::string> output;
    std::string png;
    std::string gif;
    std::string webp;
    std::string sheet;
    std::string frames;
    unsigned int sheetPictures = 12;
    unsigned int columns = 0;
};

/// What `--output` names is what its ending says.
void sortOutput(Arguments& arguments)
{
    for (const std::string& file : arguments.output)
    {
        std::string& kind = tools::hasEnding(file, ".gif")                                          ? arguments.gif
                            : tools::hasEnding(file, ".webp")                                       ? arguments.webp
                            : tools::hasEnding(file, ".png") && file.find('#') != std::string::npos ? arguments.frames
                                                                                                    : arguments.png;
        if (!kind.empty())
        {
            throw tools::Failure("\"" + kind + "\" and \"" + file +
                                 "\" are the same kind of picture: name one of them");
        }
        kind = file;
    }
}

void checkOutput(const Arguments& arguments)
{
    struct Named
    {
        const std::string& m_file;
        const char* m_szEnding;
    };
    const std::array<Named, 5> files{Named{arguments.png, ".png"}, Named{arguments.frames, ".png"},
                                     Named{arguments.sheet, ".png"}, Named{arguments.gif, ".gif"},
                                     Named{arguments.webp, ".webp"}};
    if (std::ranges::all_of(files, [](const Named& named) { return named.m_file.empty(); }))
    {
        throw tools::Failure("say what to write: --output, --png, --frames, --sheet, --gif or --webp");
    }
    for (const Named& named : files)
    {
        if (!named.m_file.empty() && !tools::hasEnding(named.m_file, named.m_szEnding))
        {
            throw tools::Failure("\"" + named.m_file + "\" is to be a picture, which ends in " +
                                 (&named.m_file == &arguments.png && !arguments.output.empty() ? ".png, .gif or .webp"
                                                                                               : named.m_szEnding));
        }
    }
    if (!arguments.frames.empty() && arguments.frames.find('#') == std::string::npos)
    {
        throw tools::Failure("--frames needs a place for the number, such as walk_####.png");
    }
    if (!arguments.gif.empty() && arguments.stage.show.m_bTransparent)
    {
        throw tools::Failure("a GIF has no half transparent pixels: write a transparent animation as .webp");
    }
}

/// "walk_####.png" with a number in the place of the signs.
std::string makeNumberedName(const std::string& pattern, unsigned int number)
{
    const std::size_t first = pattern.find('#');
    const std::size_t last = pattern.find_last_of('#');
    const auto digits = static_cast<int>(last - first + 1);
    return pattern.substr(0, first) + S_STR("%0*u", digits, number).c_str() + pattern.substr(last + 1);
}

/// Draws what is asked for, each picture when it is needed, and keeps none of a long animation.
class Drawing
{
public:
    Drawing(const Arguments& arguments, const tools::Motion& motion, tools::Stage& stage)
        : m_arguments(arguments),
          m_stage(stage),
          m_moments(Moments::play(motion, arguments.fps)),
          m_sheet(Moments::spread(motion, arguments.sheetPictures)),
          m_samples(Moments::spread(motion, arguments.gif.empty() ? 0 : std::min(mostSamples, m_moments.count))),
          m_progress("Drawing", countPictures())
    {
        const tools::Size size = arguments.stage.size;
        if (!arguments.sheet.empty() && static_cast<double>(m_sheet.count) * size.width * size.height > mostSheetPixels)
        {
            throw tools::Failure("a sheet of " + std::to_string(m_sheet.count) + " pictures of " + arguments.size +
                                 " is more than " + std::to_string(mostSheetPixels / 1000000) +
                                 " million pixels: ask for fewer or smaller ones");
        }
        if (isAnimated() && m_moments.count > mostPictures)
        {
            throw tools::Failure("that would be " + std::to_string(m_moments.count) + " pictures, more than " +
                                 std::to_string(mostPictures) + ": give --from and --to, or fewer --fps");
        }
    }

    void run()
    {
        if (!m_arguments.png.empty())
        {
            draw(m_moments.begin).writePNG(m_arguments.png.c_str());
            m_vecWritten.push_back(m_arguments.png);
        }
        drawAnimations();
        if (!m_arguments.sheet.empty())
        {
            TW2::render::makeContactSheet(drawAll(m_sheet), m_arguments.columns).writePNG(m_arguments.sheet.c_str());
            m_vecWritten.push_back(m_arguments.sheet);
        }
        m_progress.finish();
        for (const std::string& file : m_vecWritten)
        {
            std::printf("%s\n", file.c_str());
        }
    }

private:
    static constexpr unsigned int mostPictures = 10000;
    static constexpr unsigned int mostSheetPixels = 200000000;
    static constexpr unsigned int mostSamples = 16;  ///< pictures that a GIF's colours are chosen from

    [[nodiscard]] bool isAnimated() const
    {
        return !m_arguments.frames.empty() || !m_arguments.gif.empty() || !m_arguments.webp.empty();
    }
    [[nodiscard]] unsigned int countPictures() const
    {
        return (m_arguments.png.empty() ? 0 : 1) + (m_arguments.sheet.empty() ? 0 : m_sheet.count) +
               (m_arguments.gif.empty() ? 0 : m_samples.count) + (isAnimated() ? m_moments.count : 0);
    }

    G_Image draw(double time)
    {
        G_Image picture = m_stage.draw(time);
        m_progress.step();
        return picture;
    }
    std::vector<G_Image> drawAll(const Moments& moments)
    {
        std::vector<G_Image> pictures;
        for (unsigned int i = 0; i < moments.count; ++i)
        {
            pictures.push_back(draw(moments.get(i)));
        }
        return pictures;
    }

    void drawAnimations()
    {
        std::vector<std::pair<std::unique_ptr<TW2::render::AnimationWriter>, std::string>> writers;
        const double fps = std::max(m_moments.getFramesPerSecond(), 1.0);
        if (!m_arguments.gif.empty())
        {
            writers.emplace_back(TW2::render::makeGIFWriter(drawAll(m_samples), std::min(fps, 50.0)), m_arguments.gif);
        }
        if (!m_arguments.webp.empty())
        {
            writers.emplace_back(TW2::render::makeWebPWriter(fps), m_arguments.webp);
        }
        for (unsigned int i = 0; isAnimated() && i < m_moments.count; ++i)
        {
            const G_Image picture = draw(m_moments.get(i));
            if (!m_arguments.frames.empty())
            {
                m_vecWritten.push_back(makeNumberedName(m_arguments.frames, i));
                picture.writePNG(m_vecWritten.back().c_str());
            }
            for (auto& [writer, file] : writers)
            {
                writer->add(picture);
            }
        }
        for (auto& [writer, file] : writers)
        {
            writer->write(file.c_str());
            m_vecWritten.push_back(file);
        }
    }

    const Arguments& m_arguments;
    tools::Stage& m_stage;
    Moments m_moments;
    Moments m_sheet;
    Moments m_samples;
    tools::Progress m_progress;
    std::vector<std::string> m_vecWritten;
};

void run(Arguments& arguments)
{
    sortOutput(arguments);
    checkOutput(arguments);
    arguments.stage.size = tools::parseSize(arguments.size, {1, 1});
    arguments.stage.show.m_bGrid = arguments.stage.show.m_bGrid && !arguments.stage.show.m_bTransparent;
    constexpr double turn = 4.0;  // seconds
    arguments.motion.atLeast = arguments.stage.turntable ? turn : 0.0;
    AnimatedScript script(arguments.script, arguments.selection);
    const tools::Motion motion(arguments.motion, script);
    const TW2::render::OffscreenContext context;
    tools::Stage stage(arguments.stage, arguments.script, script, motion);
    Drawing(arguments, motion, stage).run();
}

void addPictureOptions(CLI::App& command, Arguments& arguments)
{
    command.add_option(
        "-o,--output", arguments.output,
        "What to write, by its ending: .png one picture (numbered ones with ####), .gif, .webp animated");
    command.add_option("--png", arguments.png, "Write one picture, at --time or --from");
    command.add_option("--frames", arguments.frames, "Write numbered pictures: walk_####.png");
    command.add_option("--sheet", arguments.sheet, "Write one picture with many moments side by side");
    command.add_option("--gif", arguments.gif, "Write an animated GIF");
    command.add_option("--webp", arguments.webp, "Write an animated WebP: all colours, transparency");
    command.add_option("--sheet-pictures", arguments.sheetPictures, "Moments on the sheet (default: 12)")
        ->check(CLI::Range(1, 400));
    command.add_option("--columns", arguments.columns, "Columns of the sheet (default: about as wide as high)")
        ->check(CLI::Range(1, 400));
    command.add_option("--size", arguments.size, "WIDTHxHEIGHT of each picture (default: 640x480)");
    command.add_option("--fps", arguments.fps, "Pictures per second (default: 25)")->check(CLI::Range(1.0, 50.0));
}

/// A flag that sets one value of several.
template <typename Value>
CLI::Option* addChoice(CLI::App& command, const char* name, Value& target, Value value, const char* help)
{
    return command.add_flag_callback(
        name, [&target, value] { target = value; }, help);
}

void addViewOptions(CLI::App& command, tools::StageArguments& stage)
{
    using TW2::render::View;
    TW2::viewer::Show& show = stage.show;
    addChoice(command, "--skeleton", show.m_bSkeleton, true, "Draw the bones over the picture");
    addChoice(command, "--axes", show.m_bAxes, true, "Draw the axes of the bones: x red, y green, z blue");
    addChoice(command, "--bounds", show.m_bBounds, true, "Draw the bounding box and sphere");
    CLI::Option* wireframe = addChoice(command, "--wireframe", show.m_eWireframe, View::Wireframe::Over,
                                       "Draw the sides of the triangles over the surfaces");
    addChoice(command, "--wireframe-only", show.m_eWireframe, View::Wireframe::Only,
              "Draw the sides of the triangles instead of the surfaces")
        ->excludes(wireframe);
    CLI::Option* normals = addChoice(command, "--normals", show.m_eSurface, View::Surface::Normals,
                                     "Show normals as colours: x red, y green, z blue");
    CLI::Option* unlit = addChoice(command, "--unlit", show.m_eSurface, View::Surface::Unlit,
                                   "Show textures and colours as they are, without light")
                             ->excludes(normals);
    CLI::Option* bone = command.add_option("--bone", stage.bone, "Highlight what a bone moves, by its name or number");
    addChoice(command, "--weights", show.m_eSurface, View::Surface::BoneWeights,
              "Show how much that bone moves: blue nothing, red it alone")
        ->excludes(normals)
        ->excludes(unlit)
        ->needs(bone);
    addChoice(command, "--dark", show.m_bDark, true, "Draw before a dark background");
    addChoice(command, "--transparent", show.m_bTransparent, true,
              "Leave the background and the grid out (.png, .webp)");
    addChoice(command, "--no-mesh", show.m_bMesh, false, "Leave the surfaces out");
    addChoice(command, "--no-grid", show.m_bGrid, false, "Leave the ground grid out");
    addChoice(command, "--no-lights", show.m_bStudioLights, false, "Leave the lights and their shadow out");
    addChoice(command, "--no-shadow", show.m_bShadow, false, "Leave the shadow out");
    command.add_flag("--file-lights", stage.fileLights, "Add the lights that the files bring");
}

void addCameraOptions(CLI::App& command, tools::StageArguments& stage)
{
    command.add_option("--azimuth", stage.viewpoint.m_fAzimuth, "Degrees around the object; 0: from the front");
    command.add_option("--elevation", stage.viewpoint.m_fElevation, "Degrees above the horizon");
    command.add_option("--angle", stage.viewpoint.m_fVerticalAngle, "Field of view from bottom to top, in degrees")
        ->check(CLI::Range(1.0, 170.0));
    CLI::Option* eye =
        command.add_option("--eye", stage.eye, "Where the camera stands")->expected(3)->type_name("X Y Z");
    command.add_option("--target", stage.target, "What the camera looks at")
        ->expected(3)
        ->type_name("X Y Z")
        ->needs(eye);
    CLI::Option* camera =
        command.add_option("--camera", stage.camera, "Look through a camera of the files, by its name")->excludes(eye);
    command.add_flag("--turntable", stage.turntable, "Go around the object once in the time range, or in four seconds")
        ->excludes(camera);
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
        CLI::Option* animation =
            command.add_option("--animation", arguments->motion.animation, "Index, name, or part of a name");
        CLI::Option* blend =
            command.add_option("--blend", arguments->motion.blend, "Two animations A:B: fade from A into B")
                ->excludes(animation);
        command
            .add_option("--weight", arguments->motion.weight, "Weight of B, or its course over the time range (0..1)")
            ->needs(blend);
        CLI::Option* time = command.add_option("--time", arguments->motion.time, "One moment, in seconds");
        command.add_option("--from", arguments->motion.from, "Begin of the time range, in seconds")->excludes(time);
        command.add_option("--to", arguments->motion.to, "End of the time range, in seconds")->excludes(time);
        addPictureOptions(command, *arguments);
        addViewOptions(command, arguments->stage);
        addCameraOptions(command, arguments->stage);
        command.callback([arguments] { run(*arguments); });
    });
}  // namespace
