/// @file StrokeFont.h
/// A small single-stroke font, so that pictures look the same on every machine.
#pragma once

#include <string_view>

/// Strokes of the character @p c on a grid 4 wide and 8 high: capitals reach from 0 to the baseline at 6, descenders to
/// 8. Each point is two digits, x and y; points of one stroke are parted by a blank, strokes by a semicolon. A stroke
/// of two equal points is a dot. Empty for a blank and for characters that the font lacks.
std::string_view StrokesOf(char c);

inline constexpr double kStrokeFontAdvance = 5.5; ///< from one character to the next, in grid units
inline constexpr double kStrokeFontBaseline = 6.0;
