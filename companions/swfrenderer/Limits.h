/// @file Limits.h
/// What one movie may cost. Every reader of the movie's bytes consults these before it takes memory or time.
#pragma once

#include <cstddef>
#include <cstdint>

namespace swf
{
inline constexpr std::size_t kMaxFileBytes = std::size_t{64} << 20;  ///< of the file as it lies on the disk
inline constexpr std::size_t kMaxMovieBytes = std::size_t{64} << 20; ///< unpacked; headers that claim more are refused
inline constexpr std::uint32_t kMaxVersion = 50;                     ///< newest version of the format that is read
inline constexpr std::uint32_t kMaxBitmapSide = 16'384;
inline constexpr std::size_t kMaxBitmapPixels = std::size_t{12} << 20;        ///< of one bitmap
inline constexpr std::size_t kMaxJpegBytes = std::size_t{16} << 20;           ///< of one picture, packed
inline constexpr std::uint64_t kMaxJpegScanPixels = std::uint64_t{160} << 20; ///< scans of a picture times its pixels
inline constexpr std::size_t kMaxShapeEdges = std::size_t{1} << 20;           ///< of one shape
inline constexpr std::size_t kMaxOutlineEdges = std::size_t{1} << 21;         ///< straight ones, in place of curves too
inline constexpr std::size_t kMaxTags = std::size_t{1} << 20;                 ///< of a movie, its sprites included
inline constexpr std::uint32_t kMaxNesting = 32;                              ///< sprites inside sprites
inline constexpr std::uint32_t kMaxInstances = 65'536;                        ///< objects on all display lists together
inline constexpr std::uint32_t kMaxFilters = 16;                              ///< of one object
inline constexpr std::uint32_t kMaxRenderSide = 16'384;                       ///< pixels
inline constexpr std::uint64_t kMaxRenderPixels = std::uint64_t{64} << 20;
inline constexpr std::size_t kMaxVideoFrames = 65'536;                    ///< of one stream
inline constexpr std::size_t kMaxVideoPacketBytes = std::size_t{4} << 20; ///< of one frame of a stream
inline constexpr std::size_t kMaxVideosAtOnce = 8;                        ///< streams decoded for one frame
inline constexpr std::uint32_t kMaxLayers = 24; ///< pictures beside the canvas in use at one time

/// What one movie may take of memory and time. Time is counted in operations, never by a clock: the same movie always
/// stops at the same place. What no longer fits is left out: a definition is not there, an object is not drawn, and
/// where tickWork is used up the movie stands still. A video whose frame is too far from an entry for videoWork shows
/// the picture that could be reached.
struct Budget
{
    std::size_t bytes = std::size_t{160} << 20;        ///< memory of the file unpacked, its definitions and its bitmaps
    std::size_t readSteps = std::size_t{16} << 20;     ///< records and actions read
    std::uint64_t tickWork = 200'000'000;              ///< of playing from the first frame, a unit taking some 4 ns
    std::uint64_t frameWork = std::uint64_t{3} << 28;  ///< pixels painted in a solid colour or filtered for one frame
    std::uint64_t frameEdges = std::uint64_t{6} << 20; ///< straight edges drawn for one frame
    std::uint64_t frameCells = std::uint64_t{64} << 20; ///< pixels that edges pass through in one frame
    std::uint64_t videoWork = std::uint64_t{5} << 26;   ///< pixels of videos decoded for one frame, each some 3 ns
    std::uint64_t layerPixels = std::uint64_t{8} << 20; ///< of pictures beside the canvas, or eight canvases if more
};
} // namespace swf
