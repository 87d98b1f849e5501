#pragma once

#include "render/gl_handle.h"

#include <platform/image/fcolor.h>
#include <platform/math/matrix4.h>
#include <platform/math/matrix4x3.h>
#include <platform/math/vector3.h>

#include <string>
#include <unordered_map>

namespace TW2::render
{
/// A GLSL program and its uniforms by name. Setting a uniform that the program does not use does nothing.
class GLProgram
{
public:
    /// Throws RenderException with the driver's message when the sources do not compile or link.
    GLProgram(const char* vertexSource, const char* fragmentSource);

    void use() const;

    /// @name Uniforms of the program in use
    /// @{
    void set(const char* name, int value);
    void set(const char* name, float value);
    void set(const char* name, const M_Vector3Template<float>& value);
    /// Red, green and blue divided by 255.
    void setColor(const char* name, const G_FColor& value);
    void set(const char* name, const M_Matrix4Template<float>& value);
    void set(const char* name, const M_Matrix4x3Template<float>& value);
    void setInts(const char* name, const int* values, int count);
    void setInt4s(const char* name, const int* values, int count);
    void setFloat4s(const char* name, const float* values, int count);
    void setMatrices(const char* name, const M_Matrix4Template<float>* values, int count);
    /// @}

private:
    GLint find(const char* name);

    GLProgramHandle m_program;
    std::unordered_map<std::string, GLint> m_mapLocations;
};
}  // namespace TW2::render
