#pragma once

#include <platform/math/math_init.h>
#include <platform/runtime/solace_init.h>

/// Starts the runtime and the math layer for the source unit that includes this: before the unit's static data come
/// into being and until they are gone.
namespace
{
const S_SolaceInit s_solaceInit;
const M_MathInit s_mathInit;
}  // namespace
