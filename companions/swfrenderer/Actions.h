/// @file Actions.h
/// Actions of frames: those that move a timeline or set a property by constant values.
#pragma once

#include "companions/swfrenderer/Movie.h"
#include "companions/swfrenderer/ShapeReader.h"

#include <cstdint>
#include <span>
#include <vector>

namespace swf
{
/// What the action bytes of a frame do, in order. Everything that needs a value from elsewhere is passed over; from a
/// branch on nothing counts, since nobody knows which way it goes. The memory of the actions is
/// taken from @p budget; every action byte and every constant is a step.
std::vector<TimelineAction> ReadActions(std::span<const std::uint8_t> bytes, ReadBudget& budget);
} // namespace swf
