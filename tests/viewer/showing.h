#pragma once

#include "viewer/commands.h"
#include "viewer/viewer.h"

#include <string>
#include <vector>

namespace support
{
inline const std::string s_sprout = TW2_SAMPLE "/sprout.script";

/// A viewer of the sample that stands still, after some commands.
struct Showing : TW2::viewer::Viewer
{
    explicit Showing(const std::vector<std::string>& lines = {}, const std::string& script = s_sprout,
                     const std::string& choice = {})
    {
        open(script, choice);
        getPlayback().setPlaying(false);
        run(lines);
    }
    void run(const std::vector<std::string>& lines)
    {
        for (const std::string& line : lines)
        {
            TW2::viewer::execute(*this, line);
        }
        update(0.0);
    }
};
}  // namespace support
