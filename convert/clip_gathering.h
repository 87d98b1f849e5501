#pragma once

#include "convert/converter.h"
#include "convert/model.h"

#include <string>
#include <vector>

namespace TW2::convert
{
/// How much of the work reading is: sampling and reducing clips is most of it.
constexpr double partOfReading = 0.3;

/// Models with the events beside them; tells each. Throws as `readModel` and `addEventsBeside` do.
[[nodiscard]] std::vector<Model> readModels(const std::vector<std::string>& files, const Options& options);

/// Gives `body` (one of the models or another one) the clips of all models, as the options choose and merge them. What
/// other models' nodes had no counterpart is told in the body's warnings, what was done in `sources`; their files
/// become sources of the body. Throws ConvertException for choices that are not there, in `fileName`.
void gatherClips(Model& body, std::vector<Model>& models, const std::string& fileName, const Options& options,
                 std::vector<MotionSource>& sources);
}  // namespace TW2::convert
