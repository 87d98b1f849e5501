#pragma once

#include "convert/model.h"
#include "convert/pictures.h"
#include "convert/warnings.h"

#include <string>

namespace TW2::convert
{
/// What the alpha of a surface means, for formats that do not say it: decided by its opacity and its pictures. `part`
/// stands before the warnings.
void decideAlpha(const std::string& part, const PictureCollector& pictures, Surface& surface, Warnings& warnings);
}  // namespace TW2::convert
