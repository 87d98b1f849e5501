#pragma once

namespace TW2::viewer
{
class Viewer;
struct Requests;

/// What is shown, and how.
void drawShown(Viewer& viewer, Requests& requests);
/// The materials with their set-ups.
void drawMaterials(Viewer& viewer);

/// How many copies there are, and what everybody costs.
class CrowdPanel
{
public:
    void draw(Viewer& viewer, Requests& requests);

private:
    int m_iCopies = 0;  ///< while the slider is held: a crowd is built when it is let go
};
}  // namespace TW2::viewer
