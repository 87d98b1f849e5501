#include "viewer/commands.h"

#include "viewer/command_words.h"
#include "viewer/failure.h"
#include "viewer/find_by.h"
#include "viewer/viewer.h"

#include <algorithm>
#include <array>

namespace TW2::viewer
{
namespace
{
using Surface = render::View::Surface;
using Wireframe = render::View::Wireframe;

/// What the mixer has no place for.
void needNoMixer(const Viewer& viewer)
{
    if (viewer.getMixer().isOn())
    {
        throw Failure("the mixer plays: \"mixer off\" gives blends, frozen poses and groups of bones back");
    }
}

/// @name What is shown, by name
/// @{
struct Flag
{
    std::string_view m_strName;
    bool Show::*m_pFlag;
};
constexpr std::array<Flag, 11> switches{Flag{"mesh", &Show::m_bMesh},
                                        Flag{"skeleton", &Show::m_bSkeleton},
                                        Flag{"names", &Show::m_bBoneNames},
                                        Flag{"axes", &Show::m_bAxes},
                                        Flag{"bounds", &Show::m_bBounds},
                                        Flag{"grid", &Show::m_bGrid},
                                        Flag{"shadow", &Show::m_bShadow},
                                        Flag{"studio-lights", &Show::m_bStudioLights},
                                        Flag{"file-lights", &Show::m_bFileLights},
                                        Flag{"visibility", &Show::m_bVisibility},
                                        Flag{"dark", &Show::m_bDark}};
constexpr std::array<std::string_view, 4> surfaceWords{"materials", "unlit", "normals", "weights"};
constexpr std::array<std::string_view, 3> wireframeWords{"none", "over", "only"};
constexpr std::array<std::string_view, 3> crossModeWords{"linear", "normalized", "orthonormalized"};
/// @}

void show(Viewer& viewer, const Arguments& arguments)
{
    std::array<std::string_view, switches.size()> names{};
    std::transform(switches.begin(), switches.end(), names.begin(), [](const Flag& flag) { return flag.m_strName; });
    bool& flag = viewer.getShow().*switches[choose(arguments.at(0), names)].m_pFlag;
    flag = toSwitch(arguments, 1, flag);
}

void blend(Viewer& viewer, const Arguments& arguments)
{
    needNoMixer(viewer);
    const int slot = toWhole(arguments.at(0));
    const bool empty = arguments.at(1) == "none";
    const float weight = arguments.size() > 2 ? static_cast<float>(toNumber(arguments[2])) : 1.0F;
    if (weight < 0.0F)
    {
        throw Failure("a weight is 0 or more, not " + arguments[2]);
    }
    viewer.getPlayback().setSlot(slot, empty ? -1 : needObject(viewer).findClip(arguments[1]), weight);
}

void look(Viewer& viewer, const Arguments& arguments)
{
    struct Direction
    {
        float m_fAzimuth;
        float m_fElevation;
    };
    constexpr std::array<std::string_view, 6> names{"front", "back", "left", "right", "top", "corner"};
    constexpr std::array<Direction, 6> directions{Direction{0.0F, 0.0F},   Direction{180.0F, 0.0F},
                                                  Direction{-90.0F, 0.0F}, Direction{90.0F, 0.0F},
                                                  Direction{0.0F, 89.0F},  Direction{35.0F, 12.0F}};
    const Direction direction = directions[choose(arguments.at(0), names)];
    viewer.getCamera().m_fAzimuth = direction.m_fAzimuth;
    viewer.getCamera().m_fElevation = direction.m_fElevation;
    viewer.frameNext();
}

void nextClip(Viewer& viewer, int step)
{
    const std::vector<Clip>& clips = viewer.getPlayback().getClips();
    if (clips.empty())
    {
        throw Failure("there are no animations");
    }
    const auto now = findBy(clips, viewer.getPlayback().getMainAnimation(), &Clip::m_iIndex);
    const auto count = static_cast<int>(clips.size());
    const int place = now == clips.end() ? 0 : (static_cast<int>(now - clips.begin()) + step + count) % count;
    viewer.playClip(clips[static_cast<std::size_t>(place)].m_iIndex);
}

const std::array s_commands{
    Command{"open", "SCRIPT [OBJECT]", "load a script", "", "",
            [](Viewer& viewer, const Arguments& a) { viewer.open(a.at(0), a.size() > 1 ? a[1] : std::string()); }},
    Command{"reload", "", "load the script again", "R", "", [](Viewer& viewer, const Arguments&) { viewer.reload(); }},
    Command{"object", "NAME", "look at another object of the script", "", "",
            [](Viewer& viewer, const Arguments& a)
            { viewer.open(std::string(needObject(viewer).getScriptFile()), a.at(0)); }},
    Command{"level", "N|auto", "level of detail, or by distance", "", "",
            [](Viewer& viewer, const Arguments& a) { viewer.setLevel(a.at(0) == "auto" ? -1 : toWhole(a.at(0))); }},

    Command{"clip", "NAME", "play an animation", "", "",
            [](Viewer& viewer, const Arguments& a) { viewer.playClip(needObject(viewer).findClip(a.at(0))); }},
    Command{"next", "", "play the next animation", "N", "",
            [](Viewer& viewer, const Arguments&) { nextClip(viewer, 1); }},
    Command{"previous", "", "play the animation before", "P", "",
            [](Viewer& viewer, const Arguments&) { nextClip(viewer, -1); }},
    Command{"blend", "SLOT NAME|none [WEIGHT]", "blend an animation in: slot 0 to 2", "", "", blend},
    Command{"crossmode", "linear|normalized|orthonormalized", "how blended matrices are corrected", "", "",
            [](Viewer& viewer, const Arguments& a)
            { viewer.setCrossMode(static_cast<InterpolationMode>(choose(a.at(0), crossModeWords))); }},
    Command{"freeze", "", "freeze the present pose", "Z", "",
            [](Viewer& viewer, const Arguments&)
            {
                needNoMixer(viewer);
                static_cast<void>(needObject(viewer));
                viewer.freeze();
            }},
    Command{"fade", "[SECONDS]", "fade the frozen pose out, in seconds", "X", "0.5",
            [](Viewer& viewer, const Arguments& a) { viewer.getPlayback().fadeOut(a.empty() ? 0.5 : toNumber(a[0])); }},
    Command{"frozen", "WEIGHT", "weight of the frozen pose, 0 to 1", "", "",
            [](Viewer& viewer, const Arguments& a)
            { viewer.getPlayback().setFrozenWeight(static_cast<float>(toNumber(a.at(0)))); }},
    Command{"group", "BONE NAME", "a bone and all below it play another animation", "", "",
            [](Viewer& viewer, const Arguments& a)
            {
                needNoMixer(viewer);
                const LoadedObject& object = needObject(viewer);
                viewer.getPlayback().setGroup(object.findBone(a.at(0)), object.findClip(a.at(1)));
            }},
    Command{"ungroup", "", "all bones play the same again", "", "",
            [](Viewer& viewer, const Arguments&) { viewer.getPlayback().clearGroup(); }},

    Command{"play", "[on|off]", "let the clock run", "Space", "",
            [](Viewer& viewer, const Arguments& a)
            { viewer.getPlayback().setPlaying(toSwitch(a, 0, viewer.getPlayback().isPlaying())); }},
    Command{"seek", "SECONDS", "go to a time, in seconds", "Home", "0",
            [](Viewer& viewer, const Arguments& a) { viewer.seek(toNumber(a.at(0))); }},
    Command{"step", "FRAMES", "pause and go on by frames", "Right", "1",
            [](Viewer& viewer, const Arguments& a) { viewer.step(toWhole(a.at(0))); }},
    Command{"back", "", "pause and go a frame back", "Left", "",
            [](Viewer& viewer, const Arguments&) { viewer.step(-1); }},
    Command{"speed", "FACTOR", "how fast: 1 as made, negative backwards, -10 to 10", "1", "1",
            [](Viewer& viewer, const Arguments& a) { viewer.getPlayback().setSpeed(toNumber(a.at(0))); }},
    Command{"loop", "[on|off]", "begin again at the end", "L", "",
            [](Viewer& viewer, const Arguments& a)
            { viewer.getPlayback().setLooping(toSwitch(a, 0, viewer.getPlayback().isLooping())); }},

    Command{"show", "mesh|skeleton|names|axes|bounds|grid|shadow|studio-lights|file-lights|visibility|dark [on|off]",
            "show or hide", "S", "skeleton", show},
    Command{"surface", "materials|unlit|normals|weights", "what the colour of a surface says", "", "",
            [](Viewer& viewer, const Arguments& a)
            { viewer.getShow().m_eSurface = static_cast<Surface>(choose(a.at(0), surfaceWords)); }},
    Command{"wireframe", "none|over|only", "triangles as lines", "", "",
            [](Viewer& viewer, const Arguments& a)
            { viewer.getShow().m_eWireframe = static_cast<Wireframe>(choose(a.at(0), wireframeWords)); }},
    Command{"wire", "", "triangles as lines over the surfaces, or not", "W", "",
            [](Viewer& viewer, const Arguments&)
            {
                Wireframe& wireframe = viewer.getShow().m_eWireframe;
                wireframe = wireframe == Wireframe::None ? Wireframe::Over : Wireframe::None;
            }},
    Command{"texture", "SET [on|off]", "let an animated texture run", "", "",
            [](Viewer& viewer, const Arguments& a)
            { viewer.setTextureAnimation(a.at(0), toSwitch(a, 1, viewer.isTextureAnimationOn(a.at(0)))); }},
    Command{"bone", "NAME|none", "pick a bone", "", "",
            [](Viewer& viewer, const Arguments& a)
            { viewer.setPickedBone(a.at(0) == "none" ? -1 : needObject(viewer).findBone(a.at(0))); }},
    Command{"crowd", "COPIES", "copies besides the object, 0 to 10000", "", "",
            [](Viewer& viewer, const Arguments& a)
            {
                if (toWhole(a.at(0)) < 0)
                {
                    throw Failure("the copies are 0 or more, not " + a[0]);
                }
                viewer.setCrowd(static_cast<std::size_t>(toWhole(a[0])));
            }},

    Command{"frame", "", "look at the whole object", "F", "",
            [](Viewer& viewer, const Arguments&) { viewer.frameNext(); }},
    Command{"look", "front|back|left|right|top|corner", "look from a side", "", "", look},
    Command{"orbit", "DEGREES DEGREES", "circle around, and up", "", "",
            [](Viewer& viewer, const Arguments& a) {
                viewer.getCamera().orbit(static_cast<float>(toNumber(a.at(0))), static_cast<float>(toNumber(a.at(1))));
            }},
    Command{"pan", "RIGHT UP", "move the eye, in heights of the picture", "", "",
            [](Viewer& viewer, const Arguments& a)
            {
                viewer.settleFrame();
                viewer.getCamera().pan(static_cast<float>(toNumber(a.at(0))), static_cast<float>(toNumber(a.at(1))));
            }},
    Command{"zoom", "FACTOR", "multiply the distance", "", "",
            [](Viewer& viewer, const Arguments& a)
            {
                viewer.settleFrame();
                viewer.getCamera().zoom(static_cast<float>(toNumber(a.at(0))));
            }},
};

/// Words of a line; quotes hold words with spaces together.
Arguments split(std::string_view line)
{
    Arguments words;
    std::size_t i = 0;
    while (i < line.size())
    {
        if (line[i] == ' ')
        {
            ++i;
            continue;
        }
        const bool quoted = line[i] == '"';
        const std::size_t begin = quoted ? i + 1 : i;
        const std::size_t end = std::min(line.find(quoted ? '"' : ' ', begin), line.size());
        words.emplace_back(line.substr(begin, end - begin));
        i = end + 1;
    }
    return words;
}

/// Arguments without which a command does nothing: those outside of brackets.
std::size_t countNeeded(std::string_view arguments)
{
    const std::string_view needed = arguments.substr(0, arguments.find('['));
    return static_cast<std::size_t>(std::count_if(needed.begin(), needed.end(),
                                                  [previous = ' '](char letter) mutable
                                                  { return std::exchange(previous, letter) == ' ' && letter != ' '; }));
}
}  // namespace

std::span<const Command> listCommands()
{
    static const std::vector<Command> all = []
    {
        std::vector<Command> commands(s_commands.begin(), s_commands.end());
        const std::span<const Command> motion = listMotionCommands();
        commands.insert(commands.end(), motion.begin(), motion.end());
        return commands;
    }();
    return all;
}

std::string describeKey(const Command& command)
{
    std::string text(command.m_strHelp);
    return command.m_strKeyArguments.empty() ? text : text + ": " + std::string(command.m_strKeyArguments);
}

void execute(Viewer& viewer, std::string_view line)
{
    Arguments words = split(line);
    if (words.empty())
    {
        return;
    }
    const std::span<const Command> commands = listCommands();
    const auto command = findBy(commands, words.front(), &Command::m_strName);
    if (command == commands.end())
    {
        std::string names;
        for (const Command& known : commands)
        {
            names += (names.empty() ? "" : ", ") + std::string(known.m_strName);
        }
        throw Failure("there is no command \"" + words.front() + "\"; there are: " + names);
    }
    words.erase(words.begin());
    if (words.size() < countNeeded(command->m_strArguments))
    {
        throw Failure("it is: " + std::string(command->m_strName) + " " + std::string(command->m_strArguments));
    }
    command->m_run(viewer, words);
}

bool executeKey(Viewer& viewer, std::string_view key)
{
    const std::span<const Command> commands = listCommands();
    const auto command = findBy(commands, key, &Command::m_strKey);
    if (key.empty() || command == commands.end())
    {
        return false;
    }
    execute(viewer, std::string(command->m_strName) + " " + std::string(command->m_strKeyArguments));
    return true;
}

std::vector<std::string> describeSettings(const Viewer& viewer)
{
    std::vector<std::string> lines;
    const Show& shown = viewer.getShow();
    for (const Flag& flag : switches)
    {
        lines.push_back("show " + std::string(flag.m_strName) + (shown.*flag.m_pFlag ? " on" : " off"));
    }
    lines.push_back("surface " + std::string(surfaceWords[static_cast<std::size_t>(shown.m_eSurface)]));
    lines.push_back("wireframe " + std::string(wireframeWords[static_cast<std::size_t>(shown.m_eWireframe)]));
    lines.push_back(std::string("loop ") + (viewer.getPlayback().isLooping() ? "on" : "off"));
    lines.push_back("speed " + std::to_string(viewer.getPlayback().getSpeed()));
    return lines;
}
}  // namespace TW2::viewer
