#pragma once

/// What a game asks of a character, on top of the playing operations of TW_VirtualObject.
///
/// | header | what it is for |
/// |---|---|
/// | animation_mixer.h | plays several animations at a time: fades, layers, events and travel in one |
/// | reaching.h | arms, necks and tails that reach, and look at, points of the world |
/// | foot_planter.h | feet on uneven ground |
/// | animation_clock.h | a clock of one animation, its loops and its end; events, each once per crossing |
/// | root_motion.h | how far an animation carries the object, over any number of loops |
/// | bone_mask.h | how much of a motion each bone takes |
/// | rotation.h | turns and rigid travels in double precision |
///
/// Units are those of the library: seconds, frames, degrees, the model's own lengths. Nothing here allocates while it
/// plays, and one object is on one thread at a time.

#include <tw2/motion/animation_clock.h>
#include <tw2/motion/animation_mixer.h>
#include <tw2/motion/bone_mask.h>
#include <tw2/motion/foot_planter.h>
#include <tw2/motion/reaching.h>
#include <tw2/motion/root_motion.h>
#include <tw2/motion/rotation.h>
