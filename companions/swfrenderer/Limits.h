/// @file Limits.h
/// What one movie may cost. Every reader of the movie's bytes consults these before it takes memory or time.
#pragma once

#include <cstddef>
#include <cstdint>

namespace swf
{
inline constexpr std::size_t kMaxFileBytes = std::size_t{256} << 20;  ///< of the file as it lies on the disk
inline constexpr std::size_t kMaxMovieBytes = std::size_t{128} << 20; ///< unpacked; headers that claim more are refused
inline constexpr std::uint32_t kMaxVersion = 50;                      ///< newest version of the format that is read
inline constexpr std::uint32_t kMaxBitmapSide = 16'384;
inline constexpr std::size_t kMaxBitmapPixels = std::size_t{16} << 20;    ///< of one bitmap
inline constexpr std::size_t kMaxAllBitmapPixels = std::size_t{32} << 20; ///< of all bitmaps of a movie together
inline constexpr std::size_t kMaxShapeEdges = std::size_t{1} << 20;       ///< of one shape
inline constexpr std::size_t kMaxAllEdges = std::size_t{3} << 20;         ///< of all shapes of a movie together
inline constexpr std::size_t kMaxTags = std::size_t{1} << 20;             ///< of a movie, its sprites included
inline constexpr std::size_t kMaxCharacters = 65'536;
inline constexpr std::uint32_t kMaxNesting = 32;          ///< sprites inside sprites
inline constexpr std::uint32_t kMaxInstances = 65'536;    ///< objects on all display lists together
inline constexpr std::uint64_t kMaxTickWork = 20'000'000; ///< display list operations until time stands still
inline constexpr std::uint32_t kMaxFilters = 16;          ///< of one object
inline constexpr std::uint32_t kMaxRenderSide = 16'384;   ///< pixels
inline constexpr std::uint64_t kMaxRenderPixels = std::uint64_t{64} << 20;
inline constexpr std::uint32_t kMaxLayers = 24; ///< pictures beside the canvas in use at one time
inline constexpr std::uint64_t kMaxFrameWork = std::uint64_t{3} << 28;  ///< pixels painted or filtered for one frame
inline constexpr std::uint64_t kMaxFrameEdges = std::uint64_t{6} << 20; ///< straight edges drawn for one frame
/// Pixels that edges pass through: what the rasteriser keeps in memory for one outline, and may do for one frame.
inline constexpr std::uint64_t kMaxOutlineCells = std::uint64_t{2} << 20;
inline constexpr std::uint64_t kMaxFrameCells = std::uint64_t{24} << 20;
} // namespace swf
