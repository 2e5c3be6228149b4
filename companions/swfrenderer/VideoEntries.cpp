#include "companions/swfrenderer/VideoEntries.h"

#include "companions/swfrenderer/ByteReader.h"

#include <cstddef>

namespace swf
{
namespace
{
bool IsWholeH263(CByteReader packet)
{
    (void)packet.UB(17); // start code
    (void)packet.UB(5);  // version
    (void)packet.UB(8);  // time
    switch (packet.UB(3))
    {
    case 0: // own size in two bytes
        (void)packet.UB(16);
        break;
    case 1: // own size in two words
        (void)packet.UB(32);
        break;
    default:
        break;
    }
    return packet.UB(2) == 0 && !packet.Failed();
}

/// A picture is whole where no block is left as it was: each has data. In the second version none of them may lean on
/// other blocks either.
bool IsWholeScreen(CByteReader packet, bool isSecondVersion)
{
    constexpr std::uint8_t kLeans = 7; ///< rows that stay, data of this picture's blocks, data of the last key frame's
    const auto blocksAlong = [&packet]
    {
        const std::uint32_t block = 16 * (packet.UB(4) + 1);
        return (packet.UB(12) + block - 1) / block;
    };
    const std::uint32_t columns = blocksAlong(), rows = blocksAlong();
    if (isSecondVersion && packet.U8() != 0) // a palette, or a picture of another kind
        return false;
    for (std::uint32_t left = columns * rows; left > 0 && !packet.Failed(); --left)
    {
        const std::span<const std::uint8_t> block = packet.Take(packet.UB(16));
        if (block.empty() || (isSecondVersion && (block[0] & kLeans) != 0))
            return false;
    }
    return columns > 0 && rows > 0 && !packet.Failed();
}

bool IsWholeVp6(std::span<const std::uint8_t> picture)
{
    return !picture.empty() && (picture[0] & 0x80) == 0;
}

/// Colours, with their length before them, and then the alpha channel.
bool IsWholeVp6WithAlpha(CByteReader packet)
{
    const std::span<const std::uint8_t> colours = packet.Take(packet.UB(24));
    return IsWholeVp6(colours) && IsWholeVp6(packet.Rest());
}
} // namespace

bool IsKeyFrame(std::uint32_t codec, std::span<const std::uint8_t> packet)
{
    switch (codec)
    {
    case 2:
        return IsWholeH263(CByteReader(packet));
    case 3:
    case 6:
        return IsWholeScreen(CByteReader(packet), codec == 6);
    case 4:
        return IsWholeVp6(packet);
    case 5:
        return IsWholeVp6WithAlpha(CByteReader(packet));
    default:
        return false;
    }
}

std::vector<std::uint32_t> EntriesOf(const VideoStream& stream)
{
    std::vector<std::uint32_t> entries{0};
    for (std::size_t frame = kEntryDistance; frame < stream.frames.size(); ++frame)
        if (frame - entries.back() >= kEntryDistance && IsKeyFrame(stream.codec, stream.frames[frame]))
            entries.push_back(static_cast<std::uint32_t>(frame));
    return entries;
}
} // namespace swf
