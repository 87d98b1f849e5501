#include <tw2/core/exceptions.h>

#include <platform/math/matrix4x3.h>

#include <cstdio>
#include <cstring>

// Uses both libraries through their installed headers: an exception of the library is caught as the platform's class.
int main()
{
    const auto there = M_Matrix4x3Template<float>::translation({1.0F, 2.0F, 3.0F});
    if ((there * there).getTranslation().z != 6.0F)
    {
        return 1;
    }
    try
    {
        throw TW2::TW_Exception_TextureNotFound("wood.png");
    }
    catch (const S_Exception& exception)
    {
        std::puts(exception.getErrorMessage());
        return std::strstr(exception.getErrorMessage(), "wood.png") != nullptr ? 0 : 1;
    }
}
