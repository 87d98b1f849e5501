// Walks the sample's walker along a path over a slope: by root motion, first at a walk, then at a run in step with it,
// waving with the upper body, its eyes on a target and its feet on the ground. Prints its steps.

#include <tw2/tw2.h>

#include <platform/runtime/exception.h>

#include <cstdio>

int main(int argc, char** argv)
{
    try
    {
        TW2::TW_VertexAnimation walker(argc > 1 ? argv[1] : "sample/walker.script", "skeleton", "skin");
        TW2::TW_AnimationMixer mixer(walker);
        const int upper = mixer.addLayer({.mask = mixer.addMask(TW2::TW_BoneMask::below(walker, "spine", 2))});
        TW2::TW_BoneChain neck(walker, "chest", "head");
        TW2::TW_FootPlanter feet(walker, "hips",
                                 {{"thigh_left", "foot_left", 0.075F}, {"thigh_right", "foot_right", 0.075F}});
        const auto ground = [](const auto& p) {
            return TW2::TW_GroundPoint{0.15F * static_cast<float>(p.x), {-0.1483F, 0.9889F, 0.0F}};
        };
        const M_Vector3Template<double> path[] = {{0.0, 0.0, -4.0}, {5.0, 0.75, -7.0}, {11.0, 1.65, -7.0}};

        TW2::TW_Travel place;
        mixer.play("walk", {.sync = 1});
        for (int frame = 0, next = 0; next < 3; ++frame)
        {
            if (frame == 120)
            {
                mixer.play("wave", {.fade = 0.3F, .loops = 2, .layer = upper, .fadeOut = 0.3F});
            }
            if (frame == 330)
            {
                mixer.play("run", {.fade = 0.5F, .sync = 1});
            }
            mixer.update(1.0 / 60.0);
            place = (mixer.getTravel() * place).turnedTowards(path[next], 2.0);
            place.m_vTranslation.y = static_cast<double>(ground(place.m_vTranslation).height);
            next += (path[next] - place.m_vTranslation).length() < 0.3 ? 1 : 0;
            walker.setMatrix(place.toMatrix());
            const float astray = neck.aim({.target = {4.0F, 2.0F, -10.0F}, .limit = 30.0F});
            feet.plant(ground);
            for (TW2::TW_MixerEvent e; mixer.nextEvent(e);)
            {
                std::printf("%5.2f s  %-10s  %-4s %3.0f %%  at %5.2f %5.2f %6.2f  looks past it by %2.0f degrees\n",
                            frame / 60.0, e.event->m_strName.c_str(), walker.getAnimationName(e.animation),
                            100.0 * static_cast<double>(e.weight), place.m_vTranslation.x, place.m_vTranslation.y,
                            place.m_vTranslation.z, static_cast<double>(astray));
            }
        }
    }
    catch (const S_Exception& exception)
    {
        std::fprintf(stderr, "%s\n", exception.getErrorMessage());
        return 1;
    }
}
