/// @file VideoEntries.h
/// Where a video can be entered: frames that are decoded without those before them.
#pragma once

#include "companions/swfrenderer/Movie.h"

#include <cstdint>
#include <span>
#include <vector>

namespace swf
{
/// Whether a packet says of itself that it holds a whole picture. What does not tell (codecs without such a word,
/// packets that are broken off) is none.
/// @param codec  of the stream, as the movie numbers them: 2 Sorenson H.263, 3 and 6 screen video, 4 VP6, 5 VP6 with
///               alpha
bool IsKeyFrame(std::uint32_t codec, std::span<const std::uint8_t> packet);

/// Numbers of frames, ascending; the first is 0, even where that is no whole picture. To enter costs a decoder, so that
/// there are at least kEntryDistance frames from one to the next. Throws std::bad_alloc.
std::vector<std::uint32_t> EntriesOf(const VideoStream& stream);
inline constexpr std::uint32_t kEntryDistance = 16;
} // namespace swf
