#pragma once

#include "convert/model.h"

#include <string>
#include <vector>

namespace TW2::convert
{
/// The names of clips between quotation marks, "none" without any.
[[nodiscard]] std::string listNames(const std::vector<Clip>& clips);

/// The clips that `choices` name, in their order: "NAME", "NAME=NEW" (under another name), either with ":FROM-TO"
/// behind it (only those frames, both included, at `frameRate` or, when that is 0, at the rate of the clip's keys). A
/// clip may be chosen more than once. Throws ConvertException with `fileName` for a clip that is not there and for
/// frames it has not.
[[nodiscard]] std::vector<Clip> chooseClips(const std::vector<Clip>& clips, const std::vector<std::string>& choices,
                                            int frameRate, const std::string& fileName);

/// Whether every clip moves nodes that no other one moves: one motion that an importer has taken apart.
[[nodiscard]] bool areParts(const std::vector<Clip>& clips);

/// One clip, called `name`, of all: they begin together and run side by side, the events of all in it. Of a node that
/// several move the first one's motion is kept, which is told in `warnings`.
[[nodiscard]] Clip mergeClips(const Model& model, std::vector<Clip> clips, const std::string& name,
                              std::vector<std::string>& warnings);
}  // namespace TW2::convert
