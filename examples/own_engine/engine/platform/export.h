#pragma once

/// An engine of one's own, linked into the program: nothing is exported.
#define TW2_PLATFORM_API
