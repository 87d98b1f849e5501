#pragma once

namespace TW2::render
{
/// An OpenGL 3.3 core context, or one of OpenGL ES 3.0, without a window, current on the calling thread as long as it
/// lives.
///
/// Uses EGL without a surface: it needs no display, and Mesa's software driver serves where there is no GPU. One at a
/// time per thread; everything of this room that was made under it goes before it.
class OffscreenContext
{
public:
    /// Which dialect of OpenGL is asked for.
    enum class Kind
    {
        Desktop,  ///< OpenGL 3.3 core
        Embedded  ///< OpenGL ES 3.0: what phones have, and browsers as WebGL 2
    };

    /// Throws RenderException when the machine has no driver that gives such a context.
    explicit OffscreenContext(Kind kind = Kind::Desktop);
    ~OffscreenContext();
    OffscreenContext(const OffscreenContext&) = delete;
    OffscreenContext& operator=(const OffscreenContext&) = delete;

    /// Name of the driver that draws.
    [[nodiscard]] const char* getDriverName() const;

private:
    void* m_pDisplay;
    void* m_pContext;
};
}  // namespace TW2::render
