#include <tw2/tw2.h>

#include <cstdio>

namespace
{
struct Player final : TW2::TW_KeyframeAnimationCallback
{
    void operator()(TW2::KeyframeAnimationChunk& chunk) override
    {
        const TW2::TW_KeyframeAnimation animation(chunk, false);
        M_Matrix4x3Template<float> matrix;
        animation.animate(matrix, 0.5F);
        const auto place = matrix.getTranslation();
        std::printf("%s %.3f %.3f %.3f\n", chunk.header.targetName.c_str(), static_cast<double>(place.x),
                    static_cast<double>(place.y), static_cast<double>(place.z));
        ++m_iPlayed;
    }
    int m_iPlayed = 0;
};
}  // namespace

// Plays the animations of a file where nothing of the scene layer but its declarations is there: what a program does
// not use of the library asks nothing of its engine.
int main(int, char** arguments)
{
    try
    {
        Player player;
        TW2::TW_Loader::setKeyframeAnimationCallback(&player);
        TW2::TW_Loader::load(arguments[1], true);
        if (player.m_iPlayed == 0)
        {
            return 1;
        }
        TW2::TW_Loader::load("nowhere.tw", true);
        return 1;
    }
    catch (const S_FileException&)
    {
        return 0;
    }
    catch (const S_Exception& exception)
    {
        std::fprintf(stderr, "%s\n", exception.getErrorMessage());
        return 1;
    }
}
