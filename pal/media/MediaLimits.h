/// @file MediaLimits.h
/// What one media file may take, whatever its headers claim.
#pragma once

#include <cstddef>
#include <cstdint>

namespace pal
{
/// Pixels of one video picture: 8K UHD with a margin for coded sizes.
inline constexpr std::int64_t kMaxVideoPixels = 36'000'000;
/// Decoded pictures kept behind the reader for backward steps.
inline constexpr std::size_t kMaxWindowBytes = 90'000'000;
inline constexpr std::size_t kMaxWindowPictures = 300;
/// Pictures kept while playing forward. Few, so that the decoder writes into memory that is still in the cache;
/// the first step backward fills the window.
inline constexpr std::size_t kForwardPictures = 3;
/// Packets read ahead on the way to a target, to learn which pictures need not be decoded.
inline constexpr std::size_t kMaxQueueBytes = 32'000'000;
inline constexpr std::size_t kMaxQueuePackets = 5'000;
/// Packets read at open to learn a stream's timing, where the container has no table of them.
inline constexpr std::int64_t kMaxProbeBytes = 64'000'000;
inline constexpr std::size_t kMaxProbePackets = 40'000;
inline constexpr int kMaxDecodeThreads = 8;
/// Samples per second and channels of a sound stream.
inline constexpr int kMaxAudioRate = 1'536'000;
inline constexpr int kMaxAudioChannels = 64;
/// Places kept of a sound stream without a table of its packets; a longer one keeps every second, fourth, ... place.
inline constexpr std::size_t kMaxAudioPlaces = 65'536;
/// Silence that stands for sound which is missing in a stream of unknown length, seconds.
inline constexpr int kMaxSilentGap = 10;
} // namespace pal
