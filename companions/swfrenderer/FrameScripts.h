/// @file FrameScripts.h
/// Compiled scripts of timelines: what moves a timeline or sets a property by constant values.
#pragma once

#include "companions/swfrenderer/Movie.h"
#include "companions/swfrenderer/ShapeReader.h"

#include <map>
#include <span>
#include <string>
#include <vector>

namespace swf
{
/// What a class does to the timelines of its objects.
struct ClassActions
{
    std::vector<TimelineAction> onMade;                                ///< by the constructor
    std::map<std::uint32_t, std::vector<TimelineAction>> frameActions; ///< by frame, counted from 0
};

/// The classes of the script file in @p bytes that do anything, by full name. A constructor also says which method
/// belongs to which frame. Of constructors and methods counts what comes before the first branch and needs no value
/// from elsewhere. Every instruction is a step of @p budget.
std::map<std::string, ClassActions> ReadClassActions(std::span<const std::uint8_t> bytes, ReadBudget& budget);

/// Puts @p actions behind what the frames of @p timeline do already.
void AddClassActions(Timeline& timeline, ClassActions&& actions);
} // namespace swf
