#pragma once

namespace TW2::viewer
{
class Viewer;
struct Requests;

/// What a game does with the object: the mixer with its layers, events and travel, a bone that looks or reaches,
/// and feet on the ground.
class MotionPanel
{
public:
    void draw(Viewer& viewer, Requests& requests);

private:
    void drawMixer(Viewer& viewer, Requests& requests);
    void drawLayers(Viewer& viewer, Requests& requests);
    void drawReach(Viewer& viewer, Requests& requests);

    int m_iFalloff = 0;  ///< of the next layer
    bool m_bMixing = false;
    bool m_bReaching = false;
    bool m_bPlanting = false;
};
}  // namespace TW2::viewer
