// Builds a skinned character, fades from one animation into another, lets an arm do something else meanwhile, and
// prints where its hand and the skin on it are.
//
//     example_skinned_character [script]      without one, in the project's folder: the walker of its sample

#include <tw2/tw2.h>

#include <cstdio>

int main(int argc, char** argv)
{
    try
    {
        TW2::TW_VertexAnimation walker(argc > 1 ? argv[1] : "sample/walker.script", "skeleton", "skin");
        P_Scene scene;
        walker.addTo(&scene);
        const int walk = walker.findAnimation("walk");
        const int run = walker.findAnimation("run");
        const int wave = walker.findAnimation("wave");

        // The right arm waves, whatever the legs do.
        const TW2::TW_BoneHandle handles[] = {walker.getBoneHandle("upper_arm_right"),
                                              walker.getBoneHandle("forearm_right"),
                                              walker.getBoneHandle("hand_right")};
        TW2::TW_BoneGroupHandle arm(3, handles);
        arm.attach(&walker);

        for (int step = 0; step <= 10; ++step)
        {
            const float time = 0.1F * static_cast<float>(step);
            const float faded = 0.1F * static_cast<float>(step);
            walker.crossAnimateObject(walk, time, 1.0F - faded, run, time);  // the weight of the first
            walker.animateObject(wave, time, &arm);
            scene.executeFrame();  // writes the bone matrices; drawing the scene would show the skin

            const auto hand = arm.getHandle(2).getWorldMatrix().getTranslation();
            const auto vertex = walker.getSkin()->getMesh(0)->getVertexPosition(0, 0);
            std::printf("%.1F s  %3.0F %% run  hand (%.3F, %.3F, %.3F)  first vertex (%.3F, %.3F, %.3F)\n",
                        static_cast<double>(time), 100.0 * static_cast<double>(faded), static_cast<double>(hand.x),
                        static_cast<double>(hand.y), static_cast<double>(hand.z), static_cast<double>(vertex.x),
                        static_cast<double>(vertex.y), static_cast<double>(vertex.z));
        }
        return 0;
    }
    catch (const S_Exception& exception)
    {
        std::fprintf(stderr, "%s\n", exception.getErrorMessage());
        return 1;
    }
}
