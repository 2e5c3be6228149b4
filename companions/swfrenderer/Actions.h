/// @file Actions.h
/// Actions of frames: those that move a timeline or set a property by constant values.
#pragma once

#include "companions/swfrenderer/Movie.h"

#include <cstdint>
#include <span>
#include <vector>

namespace swf
{
/// What the action bytes of a frame do, in order. Everything that needs a value from elsewhere is passed over; from a
/// branch on nothing counts, since nobody knows which way it goes.
std::vector<TimelineAction> ReadActions(std::span<const std::uint8_t> bytes);
} // namespace swf
