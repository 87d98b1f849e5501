#pragma once

#include "viewer/key_curves.h"

#include <array>

namespace TW2::viewer
{
class Viewer;
struct Rectangle;
struct Requests;

/// The tree of bones, and the picked one with the curves and keys of what it plays.
class BonePanel
{
public:
    void draw(Viewer& viewer, Requests& requests);

private:
    void drawTree(Viewer& viewer, Requests& requests);
    void drawPicked(Viewer& viewer, Requests& requests);

    std::array<char, 64> m_acFilter{};
    int m_iSeenBone = -1;  ///< that the tree has scrolled to
    /// @name Whose curves they are
    /// @{
    int m_iCurvesBone = -1;
    int m_iCurvesAnimation = -1;
    unsigned int m_uiCurvesLoad = 0;
    /// @}
    KeyCurves m_curves;
};

/// Writes the names of the bones into the picture, which lies at `place`.
void drawBoneNames(const Viewer& viewer, const Rectangle& place);
}  // namespace TW2::viewer
