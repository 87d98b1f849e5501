#include "render/gl.h"

#include <string_view>

namespace TW2::render
{
namespace
{
std::string_view view(const GLubyte* text)
{
    return text ? reinterpret_cast<const char*>(text) : "";
}
}  // namespace

bool isEmbeddedContext()
{
    return view(glGetString(GL_VERSION)).starts_with("OpenGL ES");
}

bool hasExtension(const char* name)
{
    GLint count = 0;
    glGetIntegerv(GL_NUM_EXTENSIONS, &count);
    for (GLuint i = 0; i < static_cast<GLuint>(count); ++i)
    {
        if (view(glGetStringi(GL_EXTENSIONS, i)) == name)
        {
            return true;
        }
    }
    return false;
}
}  // namespace TW2::render
