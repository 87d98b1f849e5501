#pragma once

#include <platform/image/image.h>

#include <string>
#include <vector>

namespace TW2::viewer
{
/// Writes how the window looks, panels included: once, when it closes, or as a .gif all along.
class WindowRecorder
{
public:
    /// `file`: empty for nothing. `secondsPerPicture`: how long each picture of a GIF stands; 0: as usual.
    WindowRecorder(std::string file, double secondsPerPicture);

    /// Between drawing and showing a picture of that size. `begun`: something is loaded, a GIF begins with that;
    /// `last`: the window closes, the file is written. Throws when it cannot be.
    void take(unsigned int width, unsigned int height, bool begun, bool last);

private:
    std::string m_strFile;
    double m_dSecondsPerPicture;
    std::vector<G_Image> m_vecPictures;
};
}  // namespace TW2::viewer
