/// @file RotateBgra.h
/// Turning pictures by quarter turns.
#pragma once

#include "companions/pixelutility/BgraPicture.h"

#include <cstdint>

/// Whether @p angle is one of 0, 90, 180 and 270.
bool IsQuarterTurn(std::uint32_t angle);

/// Turns @p source clockwise into @p target, which must have the size of the turned picture, with all threads.
void TurnPicture(const BgraPicture& source, const BgraPicture& target, std::uint32_t angle);

/// Turns a band of rows into its place in the turned picture.
/// @param band    the rows, as a picture of their own
/// @param first   number of the band's first row in the whole picture
/// @param height  rows of the whole picture
void TurnBand(const BgraPicture& band, std::uint32_t first, std::uint32_t height, const BgraPicture& target,
              std::uint32_t angle);
