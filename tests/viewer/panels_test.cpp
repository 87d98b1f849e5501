#include "viewer/window/panels.h"

#include "tests/support/character_files.h"
#include "tests/support/material_records.h"
#include "tests/viewer/hand.h"
#include "viewer/commands.h"
#include "viewer/key_curves.h"
#include "viewer/viewer.h"

#include <gtest/gtest.h>
#include <imgui.h>

#include <algorithm>
#include <array>
#include <functional>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

/// The panels without a window: what they say, and what they ask for wherever somebody clicks.
namespace
{
using support::Hand;
using TW2::viewer::execute;
using TW2::viewer::Viewer;

constexpr float width = support::panelsWidth;
constexpr float height = support::panelsHeight;

/// Lines whose numbers are where a slider was clicked.
std::string leaveOutNumbers(const std::string& line)
{
    return std::regex_replace(line, std::regex("-?[0-9]+[.][0-9]+|^(crowd) [0-9]+"), "$1#");
}

/// What stands there but for what depends on how fast the machine is.
std::string read(Viewer& viewer)
{
    return std::regex_replace(Hand(viewer).read(), std::regex("[^\n]* (ns per bone|ms|a second|KB per copy)\n"), "");
}

/// The lines of a text that do not stand in another one.
std::string findNew(const std::string& text, const std::string& before)
{
    std::string lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
    {
        lines += ("\n" + before).find("\n" + line + "\n") == std::string::npos ? line + "\n" : "";
    }
    return lines;
}

/// What is said of the picked bone's motion, and of the clock.
const std::string curves = R"(moves (units): x y z
0.1 to 0.5
turns (degrees): x y z
1.535 to 46.06
4 keys in 8 frames
{ 0.200 s }
[ |< ] [ < ] [ Pause ] [ > ] [x] loop { speed 1.00 } frame 2.0  animation0
)";

/// What clicks ask for, every line once, sorted.
class Sweep
{
public:
    Sweep(Viewer& viewer, bool window) : m_viewer(viewer), m_bWindow(window) {}

    /// Clicks at a place and, where that unfolds something and `further` asks for it, then at all places below.
    void click(float x, float y, bool further)
    {
        Hand hand(m_viewer, m_bWindow);
        hand.click(x, y);
        take(hand);
        for (float below = y + step; further && hand.hasPopUp() && below < y + 170.0F; below += step)
        {
            Hand second(m_viewer, m_bWindow);
            second.click(x, y);
            second.click(x + 5.0F, below);
            take(second);
        }
    }
    [[nodiscard]] std::string getText() const
    {
        std::string all;
        for (const std::string& line : m_asked)
        {
            all += line + "\n";
        }
        return all;
    }

    static constexpr float step = 7.0F;

private:
    void take(const Hand& hand)
    {
        for (const std::string& line : hand.getAsked())
        {
            m_asked.insert(leaveOutNumbers(line));
        }
    }

    Viewer& m_viewer;
    bool m_bWindow;
    std::set<std::string> m_asked;
};

/// What is asked for of a list, separated by semicolons, and besides it: of both nothing is expected.
std::string compareAsked(const std::string& asked, const std::string& expected)
{
    const std::string lines = std::regex_replace(expected, std::regex(";\\s+"), "\n") + "\n";
    const std::string missing = findNew(lines, asked);
    const std::string more = findNew(asked, lines);
    return (missing.empty() ? "" : "missing:\n" + missing) + (more.empty() ? "" : "not expected:\n" + more);
}

/// What the controls ask for.
std::string sweep(Viewer& viewer)
{
    Sweep sweep(viewer, false);
    for (const float x : {15.0F, 40.0F, 70.0F, 100.0F, 130.0F, 170.0F, 230.0F, 290.0F})
    {
        for (float y = 5.0F; y < height; y += Sweep::step)
        {
            sweep.click(x, y, x > 100.0F && x < 200.0F);
        }
    }
    return sweep.getText();
}
}  // namespace

/// A character of three bones and two animations.
class PanelsTest : public testing::Test
{
protected:
    PanelsTest()
    {
        m_files.m_materials.materials.resize(2);
        m_files.m_materials.materials[0].name = "material0";
        m_files.m_materials.materials[1].name = "material1";
        m_viewer.open(m_files.write());
        m_viewer.update(0.1);
    }
    void run(const std::vector<const char*>& lines)
    {
        for (const char* line : lines)
        {
            execute(m_viewer, line);
        }
        m_viewer.update(0.1);
    }

    support::CharacterFiles m_files{{3, 6, 2, 2, 8}};
    Viewer m_viewer;
};

TEST_F(PanelsTest, SayAndAskForWhatThereIs)
{
    const std::string plain = read(m_viewer);
    EXPECT_EQ(plain, R"({ object: skin }
Animations (N, P)
animation0
animation1
### Blend ###
{ animation0 } { 1.00 }
{ (none) } { 0.00 }
{ (none) } { 0.00 }
{ cross mode: normalized }
[ Freeze (Z) ]
### Group of bones ###
Pick a bone, in the picture or in the tree: it and all below it can play something else.
### Mixer ###
[ ] play by the mixer (M)
Fades into what is chosen, plays layers, tells events, lets the object travel.
### Look and reach ###
Pick a bone, in the picture or in the tree: it can look at a point or reach for it.
### Ground and feet ###
[ ] feet on the ground (G)
{ 0 degrees } ground rises
{ 0 degrees } towards
### Show ###
[x] mesh
[ ] skeleton (S)
[ ] bone names
[ ] bone axes
[ ] bounding volumes
[x] grid
[x] shadow
[ ] dark
[x] studio lights
{ surface: materials }
{ wireframe (W): none }
### Bones (3) ###
{ part of a name }
Bone0
Bone1
Bone2
### Materials (2) ###
material0
   layers
material1
   layers
### Crowd and costs ###
{ 0 } copies
{ 0.100 s }
[ |< ] [ < ] [ Pause ] [ > ] [x] loop { speed 1.00 } frame 1.0  animation0
)");
    const std::string asked = sweep(m_viewer);
    EXPECT_EQ(
        compareAsked(
            asked,
            R"(back; blend 0 0; blend 0 0 #; blend 0 1; blend 1 0; blend 1 1; blend 1 none; blend 2 0; blend 2 1; bone 0;
bone 1; bone 2; clip 0; clip 1; crossmode linear; crossmode normalized; crossmode orthonormalized; crowd#;
freeze; loop off; mixer on; object "skeleton"; object "skin"; object "skinFar"; plant on; play; play off;
seek #; seek 0; show axes on; show bounds on; show dark on; show grid off; show mesh off; show names on;
show shadow off; show skeleton on; show studio-lights off; slope #; slope # #; speed #; step 1;
surface materials; surface normals; surface unlit; surface weights; wireframe none; wireframe only;
wireframe over)"),
        "");
}

TEST_F(PanelsTest, ShowWhatIsPickedFrozenAndGrouped)
{
    const std::string plain = read(m_viewer);
    const std::string asked = sweep(m_viewer);
    run({"bone 1", "freeze", "group 1 1"});
    EXPECT_EQ(findNew(read(m_viewer), plain), R"([ Freeze (Z) ] [ Fade out (X) ]
{ 1.00 } frozen
Bone1 and below plays
{ animation1 }
{ does: none }
[ Plant Bone1 ]
### Picked bone ###
1  Bone1 [ let go ]
at 0.168 0.200 0.500
)" + curves);
    EXPECT_EQ(compareAsked(
                  findNew(sweep(m_viewer), asked),
                  R"(bone none; fade #; frozen #; group 1 0; group 1 1; leg 1; reach chain 1; reach look 1; reach none;
reach two-bones 1; ungroup)"),
              "");
}

TEST_F(PanelsTest, CurvesGoThroughEveryFrameWithDotsAtTheirKeysAndALineAtTheClock)
{
    run({"bone 1"});
    const TW2::viewer::KeyCurves sampled = TW2::viewer::sampleCurves(*m_viewer.getObject(), 1, 0);
    const auto last = static_cast<float>(sampled.m_aValues[0].size() - 1);
    Hand hand(m_viewer);
    const std::vector<TW2::viewer::Rectangle> plots = hand.findBoxes(IM_COL32(20, 22, 26, 255));
    ASSERT_EQ(plots.size(), 2U);
    constexpr std::array<ImU32, 3> colors{IM_COL32(235, 90, 80, 255), IM_COL32(110, 200, 90, 255),
                                          IM_COL32(90, 150, 240, 255)};
    for (std::size_t i = 0; i < 6; ++i)
    {
        const std::size_t half = i / 3 * 3;
        const TW2::viewer::Rectangle& plot = plots[i / 3];
        const auto toX = [&](float frame) { return plot.m_fLeft + frame / last * plot.m_fWidth; };
        float low = sampled.m_aValues[half][0];
        float high = low;
        for (std::size_t other = half; other < half + 3; ++other)
        {
            for (const float value : sampled.m_aValues[other])
            {
                low = std::min(low, value);
                high = std::max(high, value);
            }
        }
        const auto toY = [&](float value)
        { return plot.m_fTop + plot.m_fHeight - 3.0F - (value - low) / (high - low) * (plot.m_fHeight - 6.0F); };
        const std::vector<float>& values = sampled.m_aValues[i];
        for (std::size_t at = 1; at < values.size(); ++at)
        {
            EXPECT_TRUE(hand.isPainted(toX(static_cast<float>(at) - 0.5F), toY(0.5F * (values[at - 1] + values[at])),
                                       colors[i % 3]))
                << "curve " << i << " before frame " << at;
        }
        for (const int key : sampled.m_vecKeyFrames)
        {
            const float x = toX(static_cast<float>(key));
            const float y = toY(values[static_cast<std::size_t>(key)]);
            EXPECT_TRUE(hand.isPainted(x, y - 2.2F, colors[i % 3]) && hand.isPainted(x, y + 2.2F, colors[i % 3]))
                << "curve " << i << " at its key in frame " << key;
        }
        const float now = toX(static_cast<float>(m_viewer.getPlayback().getFrame()));
        EXPECT_TRUE(hand.isPainted(now, plot.m_fTop + 2.0F, IM_COL32(255, 255, 255, 160)));
        EXPECT_TRUE(hand.isPainted(now, plot.m_fTop + plot.m_fHeight - 2.0F, IM_COL32(255, 255, 255, 160)));
    }
}

TEST_F(PanelsTest, ShowWhatTheMixerPlaysAndWhatReaches)
{
    const std::string plain = read(m_viewer);
    execute(m_viewer, "bone 0");
    EXPECT_NE(read(m_viewer).find("{ does: none }"), std::string::npos) << "the first bone, too";
    execute(m_viewer, "bone none");
    const std::string asked = sweep(m_viewer);
    run({"bone 1", "mixer on", "add-layer additive 1 1", "add-layer replace", "layer-weight 1 0.25", "mix 1 1",
         "reach look 2"});
    EXPECT_EQ(findNew(read(m_viewer), plain), R"([x] play by the mixer (M)
{ 0.30 } fade (s)
[ ] in step
[x] travel (T) [ Home (B) ]
animation0  100 %
animation1  8 %
layer 1, added: Bone1
{ plays: animation1 }
{ 0.25 } weight
layer 2: all bones
{ plays: (none) }
{ 1.00 } weight
new layer for Bone1 and below:
{ 0 bones } falloff
[ Replace ] [ Add ] [ Clear ]
{ does: look }
{ along its: z }
{ 2.33 } { 0.57 } { -2.31 }
[ At the eye ] or Ctrl and drag
[ Plant Bone1 ]
### Picked bone ###
1  Bone1 [ let go ]
at 0.498 0.237 0.148
)" + curves);
    EXPECT_GT(Hand(m_viewer).findBoxes(ImGui::GetColorU32(ImGuiCol_PlotHistogram)).at(0).m_fWidth, 0.9F * width);
    const std::string askedOfMixer = sweep(m_viewer);
    EXPECT_EQ(
        compareAsked(
            findNew(askedOfMixer, asked),
            R"(add-layer additive 1 0; add-layer replace 1 0; bone none; clear-layers; forward -x; forward -y; forward -z;
forward x; forward y; forward z; home; in-step on; layer-weight 1 #; layer-weight 2 #; leg 1; mix 0 1;
mix 0 2; mix 1 1; mix 1 2; mix-fade #; mixer off; reach chain 2; reach look 2; reach two-bones 2;
target eye; travel off; unmix 1; unmix 2)"),
        "");
    EXPECT_EQ(askedOfMixer.find("blend"), std::string::npos) << "the mixer has no place for it";
}

TEST_F(PanelsTest, ShowTheFeetOnTheGround)
{
    m_viewer.open(TW2_SAMPLE "/walker.script");
    run({"play off"});
    const std::string plain = read(m_viewer);
    const std::string asked = sweep(m_viewer);
    run({"plant on", "slope 10 0"});
    EXPECT_EQ(findNew(read(m_viewer), plain), R"([x] feet on the ground (G)
{ 10 degrees } ground rises
{ 1.00 } weight
thigh_left to foot_left: off by 0.000
thigh_right to foot_right: off by 0.000
hips: moved by -0.024
)");
    const std::string askedNow = findNew(sweep(m_viewer), asked);
    EXPECT_NE(askedNow.find("plant off\n"), std::string::npos) << askedNow;
    EXPECT_NE(askedNow.find("plant-weight #\n"), std::string::npos) << askedNow;
}

TEST_F(PanelsTest, TheMenuAsksForWhatItSays)
{
    Sweep sweep(m_viewer, true);
    for (float x = 10.0F; x < 150.0F; x += 12.0F)
    {
        sweep.click(x, 8.0F, true);
    }
    EXPECT_EQ(
        compareAsked(
            sweep.getText(),
            R"((command); (load again); (loop); (picture); (quit); frame; look back; look corner; look front; look left;
look right; look top)"),
        "");
}

TEST_F(PanelsTest, LeaveThePictureFreeAndLetErrorsBeClosed)
{
    Hand hand(m_viewer, true);
    const TW2::viewer::Rectangle free = hand.getFree();
    EXPECT_NEAR(free.m_fLeft, 0.27F * width, 1e-3F);
    EXPECT_NEAR(free.m_fWidth, 0.46F * width, 1e-3F);
    EXPECT_GT(free.m_fTop, 10.0F);
    EXPECT_LT(free.m_fTop + free.m_fHeight, height - 40.0F);
    hand.m_panels.toggle();
    EXPECT_EQ(hand.getFree().m_fLeft, 0.0F);
    EXPECT_EQ(hand.getFree().m_fWidth, width);
    hand.m_messages.m_strError = "It is broken.";
    for (float y = free.m_fTop; y < free.m_fTop + 100.0F && !hand.m_messages.m_strError.empty(); y += Sweep::step)
    {
        hand.click(0.5F * width, y);
    }
    EXPECT_EQ(hand.m_messages.m_strError, "");

    const auto count = [&hand](ImU32 color)
    {
        hand.click(1.0F, 1.0F);
        return Hand::countLetters(color);
    };
    constexpr ImU32 white = IM_COL32(255, 255, 255, 255);
    const int before = count(white);
    hand.m_messages = {"It is broken.", "It is written.", "It is being done.", 0.5F};
    EXPECT_EQ(count(IM_COL32(255, 140, 102, 255)), 11);
    EXPECT_EQ(count(white) - before, 12 + 14 + 3 + 10) << "note, progress, its part, button";
}

TEST_F(PanelsTest, ShowOnlyWhatAnObjectHas)
{
    support::TextureFolder pictures;
    pictures.add({"wave0.png", "wave1.png"});
    m_files.m_materials.texturePath = pictures.getDirectory().getPath().string().c_str();
    support::fillTexture(m_files.m_materials.materials[0].accessDiffuseTexture(), "wave", {"wave0.png", "wave1.png"});
    m_files.m_skinKeys = "distance 40";
    const std::string script = m_files.write();
    const auto readWith = [this](const std::vector<const char*>& lines)
    {
        run(lines);
        return read(m_viewer);
    };
    m_viewer.open(script, "skeleton");
    const std::string bare = readWith({"play off", "bone 0", "surface weights"});
    m_viewer.open(script);
    const std::string skinned = readWith({"bone 0"});
    EXPECT_EQ(findNew(bare, skinned), "{ object: skeleton }\n[x] visibility tracks\n");
    EXPECT_EQ(findNew(skinned, bare), R"({ object: skin (levels of detail) }
{ by distance } level
[x] texture wave
### Materials (2) ###
material0
   layers
material1
   layers
)");
    const std::string changed = readWith({"level 1", "texture wave off", "bone none", "play on", "speed 0"});
    const std::string news = findNew(changed, skinned);
    EXPECT_TRUE(news.starts_with("{ 1 } level\n[ ] texture wave\n")) << news;
    EXPECT_NE(news.find("Pick a bone to see how much it moves.\n"), std::string::npos) << news;
    EXPECT_NE(findNew(skinned, changed).find("red: the bone alone, green: half, blue: not at all\n"),
              std::string::npos);
    EXPECT_NE(skinned.find("[ Play ]"), std::string::npos);
    const std::string asked = sweep(m_viewer);
    for (const char* line : {"level auto\n", "level 0\n", "texture \"wave\" on\n"})
    {
        EXPECT_NE(asked.find(line), std::string::npos) << line << asked;
    }
}

TEST_F(PanelsTest, UnfoldWhatACommandHasTurnedOn)
{
    const char* const parts[] = {"Fades into", "[x] travel", "At the eye", "ground rises", "off by"};
    const auto isUnfolded = [&](std::vector<const char*> lines)
    {
        m_viewer.open(TW2_SAMPLE "/walker.script");
        run(lines);
        const std::string text = Hand(m_viewer, false, true).read();
        std::string unfolded;
        for (const char* part : parts)
        {
            unfolded += text.find(part) == std::string::npos ? "-" : "+";
        }
        return unfolded;
    };
    EXPECT_EQ(isUnfolded({}), "-----");
    EXPECT_EQ(isUnfolded({"mixer on"}), "-+---");
    EXPECT_EQ(isUnfolded({"reach look 2"}), "--+--");
    EXPECT_EQ(isUnfolded({"slope 10 0"}), "---+-");
    EXPECT_EQ(isUnfolded({"plant on"}), "---++");
}

TEST_F(PanelsTest, TheTreeOfBonesIsIndentedFilteredAndShowsWhatIsPicked)
{
    const support::CharacterFiles files{{30, 6, 2, 2, 8}};
    m_viewer.open(files.write());
    using Asked = std::vector<std::string>;
    const auto ask = [this](float x, float y, const std::function<void(Hand&)>& before)
    {
        Hand hand(m_viewer);
        before(hand);
        hand.click(x, y);
        return hand.getAsked();
    };
    // The bones that a column of clicks comes by, and where each is.
    std::map<std::string, float> rows;
    const auto list = [&](
                          float x, const std::function<void(Hand&)>& before = [](Hand&) {})
    {
        rows.clear();
        std::string bones;
        for (float y = 0.0F; y < height; y += 5.0F)
        {
            const Asked asked = ask(x, y, before);
            if (asked.size() == 1 && asked[0].starts_with("bone ") && rows.emplace(asked[0], y).second)
            {
                bones += asked[0].substr(5) + " ";
            }
        }
        return bones;
    };
    constexpr float right = 250.0F;
    const std::string first = list(right);
    EXPECT_TRUE(first.starts_with("0 1 2 3 4 5 6 7 8 9 ")) << first;
    const std::map<std::string, float> whole = rows;
    std::vector<float> edges;
    for (const char* bone : {"bone 0", "bone 1", "bone 2", "bone 3", "bone 6", "bone 7"})
    {
        float outside = 0.0F;
        for (float inside = right; inside - outside > 0.5F;)
        {
            const float middle = 0.5F * (outside + inside);
            (ask(middle, whole.at(bone), [](Hand&) {}) == Asked{bone} ? inside : outside) = middle;
        }
        edges.push_back(outside);
    }
    const float step = edges[1] - edges[0];
    EXPECT_GT(step, 5.0F);
    for (const auto& [edge, depth] : {std::pair(2, 1.0F), {3, 2.0F}, {4, 2.0F}, {5, 3.0F}})
    {
        EXPECT_NEAR(edges[static_cast<std::size_t>(edge)] - edges[0], depth * step, 1.1F) << edge;
    }
    // The field is above the first row; all that it leaves begins at the left.
    const float left = edges[0] + 2.0F;
    EXPECT_EQ(list(left), "0 ");
    EXPECT_EQ(list(left, [&whole](Hand& hand) { hand.type(right, whole.at("bone 0") - 20.0F, "oNE2"); }),
              "2 20 21 22 23 24 25 26 27 28 29 ");

    run({"bone 25"});
    const std::string there = list(right);
    EXPECT_NE(there.find("24 none 26 "), std::string::npos) << there;
    const std::string scrolled =
        list(right, [&whole](Hand& hand) { hand.turnWheel(right, whole.at("bone 3"), 100.0F); });
    EXPECT_TRUE(scrolled.starts_with("0 1 2 ")) << scrolled;
}

TEST_F(PanelsTest, NamesLieBesideEachOtherAndThePickedOneAboveAll)
{
    const auto count = [this](const std::vector<const char*>& lines, ImU32 color)
    {
        m_viewer.open(TW2_SAMPLE "/sprout.script");
        run({"show names on", "show dark off", "play off"});
        run(lines);
        return Hand(m_viewer, true).countLetters(color);
    };
    constexpr ImU32 ink = IM_COL32(30, 34, 40, 255);
    constexpr ImU32 inkOnDark = IM_COL32(230, 232, 236, 255);
    constexpr ImU32 picked = IM_COL32(215, 85, 0, 255);
    const int all = count({}, ink);
    constexpr int name = 6;  // "stalk1"
    EXPECT_GT(all, 2 * name);
    EXPECT_EQ(all % name, 0);
    EXPECT_EQ(count({"show dark on"}, inkOnDark), all);
    EXPECT_EQ(count({}, picked), 0);
    EXPECT_EQ(count({"zoom 400"}, ink), name) << "the others lie over it";
    for (const char* bone : {"bone 0", "bone 3", "bone 7"})
    {
        EXPECT_EQ(count({bone}, picked), name) << bone;
        EXPECT_EQ(count({bone, "zoom 400"}, picked), name) << bone;
        EXPECT_EQ(count({bone, "zoom 400"}, ink), 0) << bone;
    }
}
