/// @file FrameScripts.h
/// Frame scripts of compiled scripts: those that move a timeline or set a property by constant values.
#pragma once

#include "companions/swfrenderer/Movie.h"
#include "companions/swfrenderer/ShapeReader.h"

#include <map>
#include <span>
#include <string>
#include <vector>

namespace swf
{
/// Actions by frame, counted from 0.
using FrameActions = std::map<std::uint32_t, std::vector<TimelineAction>>;

/// What the classes of the script file in @p bytes do in the frames of their timelines, by full name. A constructor
/// says which method belongs to which frame; of the method counts what comes before its first branch and needs no
/// value from elsewhere. Every instruction is a step of @p budget.
std::map<std::string, FrameActions> ReadFrameScripts(std::span<const std::uint8_t> bytes, ReadBudget& budget);

/// Puts @p actions behind what the frames of @p timeline do already.
void AddFrameActions(Timeline& timeline, FrameActions&& actions);
} // namespace swf
