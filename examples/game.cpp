// A small game, the one that docs/tutorial.md ends with: a character that stands, walks, runs and waves, carries a
// sprout in its hand and finds its way through a crowd.
//
//     example_game [folder [pictures]]
//
// The folder is that of the project's sample ("sample" when none is given). Arrow keys walk and turn, shift runs, space
// waves. With a number of pictures it walks by itself, ends after so many and leaves the last one in "game.png".

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
#include <memory>
#include <string>
#include <vector>

namespace
{
using Vector = M_Vector3Template<float>;

/// A window with a context of OpenGL 3.3, current as long as it lives.
struct Window
{
    Window()
    {
        glfwInit();
        glfwWindowHint(GLFW_CONTEXT_VERSION_MAJOR, 3);
        glfwWindowHint(GLFW_CONTEXT_VERSION_MINOR, 3);
        glfwWindowHint(GLFW_OPENGL_PROFILE, GLFW_OPENGL_CORE_PROFILE);
        glfwWindowHint(GLFW_SAMPLES, 4);
        m_pWindow = glfwCreateWindow(960, 600, "TW2", nullptr, nullptr);
        if (m_pWindow)
        {
            glfwMakeContextCurrent(m_pWindow);
        }
    }
    ~Window() { glfwTerminate(); }
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;
    [[nodiscard]] bool isDown(int key) const { return glfwGetKey(m_pWindow, key) == GLFW_PRESS; }
    GLFWwindow* m_pWindow;
};

/// What the player wants.
struct Wish
{
    const char* animation = "idle";
    double turn = 0.0;  // degrees a second, to the left
    bool wave = false;
};

Wish readKeys(const Window& window)
{
    const bool running = window.isDown(GLFW_KEY_LEFT_SHIFT);
    return {window.isDown(GLFW_KEY_UP) ? (running ? "run" : "walk") : "idle",
            (window.isDown(GLFW_KEY_LEFT) ? 90.0 : 0.0) - (window.isDown(GLFW_KEY_RIGHT) ? 90.0 : 0.0),
            window.isDown(GLFW_KEY_SPACE)};
}

/// Stands, walks, waves while it walks, runs: for pictures without a player.
Wish playByItself(double seconds)
{
    return {seconds < 0.5 ? "idle" : (seconds < 3.0 ? "walk" : "run"), 5.0, seconds > 1.0 && seconds < 1.2};
}

/// The character that is played: its animations, where it is, what it holds.
class Player
{
public:
    explicit Player(const TW2::TW_VertexAnimation& original) : m_body(original), m_mixer(m_body)
    {
        const int upperBody = m_mixer.addMask(TW2::TW_BoneMask::below(m_body, "spine", 1));
        m_iArms = m_mixer.addLayer({.mask = upperBody});
        m_mixer.play("idle");
    }

    TW2::TW_VertexAnimation& accessBody() { return m_body; }

    /// What hangs under a bone goes with it.
    void hold(P_BaseObject& thing, float size)
    {
        M_Matrix4x3Template<float> small;
        small *= size;
        thing.setMatrix(small);
        thing.addTo(m_body.getSkeleton()->getMeshByName("hand_right"));
    }

    void update(const Wish& wish, double seconds)
    {
        m_mixer.crossFade(wish.animation, {.fade = 0.25F, .sync = 1});
        if (wish.wave && m_mixer.findPlay("wave", m_iArms) == 0)
        {
            m_mixer.play("wave", {.fade = 0.2F, .loops = 1, .layer = m_iArms, .fadeOut = 0.3F});
        }
        m_mixer.update(seconds);
        const TW2::TW_Travel turned{TW2::TW_Rotation::aboutAxis({0.0, 1.0, 0.0}, wish.turn * seconds), {}};
        m_place = turned * m_mixer.getTravel() * m_place;
        m_body.setMatrix(m_place.toMatrix());
        for (TW2::TW_MixerEvent e; m_mixer.nextEvent(e);)
        {
            std::printf("%s\n", e.event->m_strName.c_str());  // a game plays a sound
        }
    }

private:
    TW2::TW_VertexAnimation m_body;
    TW2::TW_AnimationMixer m_mixer;
    TW2::TW_Travel m_place;
    int m_iArms = 0;
};

/// Copies that stand along the way and look at it, each at its own time.
class Crowd
{
public:
    Crowd(const TW2::TW_VertexAnimation& original, P_Scene& scene) : m_iIdle(original.findAnimation("idle"))
    {
        for (int i = 0; i < 24; ++i)
        {
            m_vecBodies.push_back(std::make_unique<TW2::TW_VertexAnimation>(original));
            const double side = i % 2 == 0 ? 1.0 : -1.0;
            const int place = i / 2;
            m_vecBodies.back()->setMatrix(TW2::TW_Travel{
                TW2::TW_Rotation::aboutAxis({0.0, 1.0, 0.0}, 90.0 * side),
                {side * (1.3 + 0.5 * (place % 2)), 0.0,
                 1.0 - 0.6 * place}}.toMatrix());
            m_vecBodies.back()->addTo(&scene);
        }
    }

    void update(double seconds)
    {
        for (std::size_t i = 0; i < m_vecBodies.size(); ++i)
        {
            m_vecBodies[i]->animateObject(m_iIdle, static_cast<float>(seconds + 0.37 * static_cast<double>(i)));
        }
    }

private:
    std::vector<std::unique_ptr<TW2::TW_VertexAnimation>> m_vecBodies;
    int m_iIdle;
};

void play(const Window& window, const std::string& folder, int pictures)
{
    P_Context context;
    P_Scene scene(&context);
    P_Camera camera;
    camera.setPerspective(45.0F, 1.6F, 0.1F, 100.0F);
    context.setCurrentCamera(&camera);

    const TW2::TW_VertexAnimation original((folder + "/walker.script").c_str(), "skeleton", "skin");
    TW2::TW_VertexAnimation sprout((folder + "/sprout.script").c_str(), "skeleton", "skin");
    Crowd crowd(original, scene);
    Player player(original);
    player.accessBody().addTo(&scene);
    player.hold(sprout, 0.08F);

    camera.lookAt({0.0F, 1.0F, 3.0F}, {0.0F, 1.0F, 0.0F}, {0.0F, 1.0F, 0.0F});
    const TW2::render::StudioLights lights(scene, camera, TW2::render::chooseLightStrength(player.accessBody()));
    TW2::render::SceneRenderer renderer;
    TW2::render::View view;
    const TW2::render::Bounds ground{{-10.0F, 0.0F, -30.0F}, {10.0F, 2.0F, 10.0F}};
    view.m_shadow = {.m_casters = ground};
    TW2::render::addGroundGrid(view, ground);

    double before = pictures > 0 ? 0.0 : glfwGetTime();
    for (int drawn = 1; glfwWindowShouldClose(window.m_pWindow) == GLFW_FALSE; ++drawn)
    {
        const double now = pictures > 0 ? before + 0.1 : glfwGetTime();
        player.update(pictures > 0 ? playByItself(now) : readKeys(window), now - before);
        crowd.update(now);
        sprout.animateObject(1, static_cast<float>(now));
        const Vector at = player.accessBody().getPosition();
        camera.lookAt(at + Vector(1.0F, 1.7F, 3.5F), at + Vector(0.0F, 0.8F, -1.0F), {0.0F, 1.0F, 0.0F});
        scene.executeFrame();
        renderer.draw(scene, camera, view);
        if (drawn == pictures)
        {
            const TW2::render::PictureTarget target(960, 600);
            target.bind();
            renderer.draw(scene, camera, view);
            target.read().writePNG("game.png");
            return;
        }
        glfwSwapBuffers(window.m_pWindow);
        glfwPollEvents();
        before = now;
    }
}
}  // namespace

int main(int argc, char** argv)
{
    const Window window;
    if (!window.m_pWindow)
    {
        std::fprintf(stderr, "no window with OpenGL 3.3 can be opened here\n");
        return 1;
    }
    try
    {
        play(window, argc > 1 ? argv[1] : "sample", argc > 2 ? std::atoi(argv[2]) : 0);
        return 0;
    }
    catch (const S_Exception& exception)
    {
        std::fprintf(stderr, "%s\n", exception.getErrorMessage());
        return 1;
    }
}
