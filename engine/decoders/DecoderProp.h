/// @file DecoderProp.h
/// The decoder property record: what a clip asks of a decoder.
#pragma once

#include "engine/platform/Export.h"

#include <cstdint>
#include <limits>
#include <string>
#include <utility>

inline constexpr std::uint64_t kTimePerSecond = 10'000'000; ///< times are counts of 100 ns
inline constexpr std::uint64_t kTimeUnlimited = std::numeric_limits<std::uint64_t>::max(); ///< "to the end"

/// Request flags, as tagRenderProp and tagDecProp carry them.
inline constexpr std::uint64_t kRequestUseCache = 1;     ///< obtain the decoder through the cache
inline constexpr std::uint64_t kRequestNoAttachment = 2; ///< an attached clip's decoder does not count as ours
inline constexpr std::uint64_t kRequestSeekBack = 4;     ///< a seek that finds nothing may start one second earlier
inline constexpr std::uint64_t kRequestNoTimeTable = 8;  ///< a GIF's times are not read: its first frame is enough
inline constexpr std::uint64_t kRequestOpenOnly = 16;    ///< GetFrame() opens the clip and returns no frame

/// Decoder classes for files that are neither GIF nor Flash.
inline constexpr std::uint32_t kDecoderVideo = 0;     ///< CVideoDecoder
inline constexpr std::uint32_t kDecoderTitle = 1;     ///< CTitleDecoder
inline constexpr std::uint32_t kDecoderKeystroke = 2; ///< CKeystrokeDecoder
inline constexpr std::uint32_t kDecoderCamera = 3;    ///< CCameraClipDecoder
inline constexpr std::uint32_t kDecoderImage = 4;     ///< CImageDecoder

/// What a clip asks of a decoder. A plain value; part of the exported interface.
struct tagDecProp
{
    /// @param path  media file, empty for generated content.
    /// @param time  100 ns; goes into both inPoint and currentTime.
    tagDecProp(std::wstring path, std::uint64_t time) : filePath(std::move(path)), inPoint(time), currentTime(time) {}

    bool operator==(const tagDecProp&) const = default; ///< every field

    std::uint64_t flags = kRequestUseCache;    ///< request flags of the clip request that opened the decoder
    std::wstring filePath;                     ///< media file; empty for generated content
    std::uint64_t inPoint;                     ///< 100 ns: source time at which the clip's content starts
    std::uint64_t outPoint = kTimeUnlimited;   ///< 100 ns: source time at which it ends; all ones: end of the source
    std::uint64_t currentTime;                 ///< 100 ns: source time of the frame that is wanted next
    double frameRate = 30.0;                   ///< frames per second
    std::uint64_t frameDuration = 333'333;     ///< 100 ns: 10,000,000 / frameRate, truncated
    std::uint32_t rotation = 0;                ///< degrees clockwise: 0, 90, 180 or 270
    std::uint32_t decoderType = kDecoderVideo; ///< class to make unless the extension is "gif" or "swf"
    std::uint32_t width = 0;                   ///< pixels: width of the output frame that the renderer asks for
    std::uint32_t height = 0;                  ///< pixels: its height
};

/// Duration of one frame: 10,000,000 / @p frameRate in 100 ns, truncated toward zero.
/// What an unsigned 64-bit number cannot hold (a rate of 0 gives infinity, or not a number) is all ones; a negative
/// quotient wraps around as unsigned arithmetic does.
QMX_API std::uint64_t FrameDurationFromRate(double frameRate);
