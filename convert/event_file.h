#pragma once

#include "convert/model.h"

#include <string>

namespace TW2::convert
{
/// Adds the events that a file beside the model tells, named as the model but ending in ".events", to the model's
/// clips; without such a file nothing. Each of its lines is CLIP SECONDS NAME; the file becomes a source of the model.
/// Throws ConvertException with file and line for a clip that the model does not have and for a time outside of the
/// clip.
void addEventsBeside(Model& model, const std::string& modelFile);
}  // namespace TW2::convert
