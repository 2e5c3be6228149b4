/// @file VideoMovie.h
/// Movies that show a video, whose packets are made bit by bit: Sorenson's kind of H.263.
#pragma once

#include "tests/companions/swfrenderer/MovieBuilder.h"

/// The kind of picture, its size and its other settings, up to the first macroblock.
inline ByteWriter VideoPacketHead(int width, int height, bool isInter)
{
    ByteWriter w; // start code, version, time, size in 16 bits each, type, no deblocking, quantiser, nothing more
    w.Bits(1, 17).Bits(0, 5).Bits(0, 8).Bits(1, 3).Bits(width, 16).Bits(height, 16).Bits(isInter ? 1 : 0, 2);
    return w.Bits(0, 1).Bits(8, 5).Bits(0, 1);
}

/// A macroblock in grey. @param luma  1 to 254, but not 128
inline void GreyMacroblock(ByteWriter& w, int luma, bool isInter)
{
    if (isInter)
        w.Bits(0, 1).Bits(0b00011, 5); // coded, by itself, without chroma coefficients
    else
        w.Bits(1, 1);
    w.Bits(0b0011, 4); // no luma coefficients
    for (int block = 0; block < 4; ++block)
        w.Bits(luma, 8);
    w.Bits(255, 8).Bits(255, 8); // this stands for 128
}

inline int MacroblocksOf(int width, int height)
{
    return (width + 15) / 16 * ((height + 15) / 16);
}

/// A whole picture in one grey.
inline Bytes GreyPacket(int width, int height, int luma)
{
    ByteWriter w = VideoPacketHead(width, height, false);
    for (int i = 0; i < MacroblocksOf(width, height); ++i)
        GreyMacroblock(w, luma, false);
    return w.bytes;
}

/// The picture before, in which one macroblock is grey now; -1 for none.
inline Bytes ChangePacket(int width, int height, int changed, int luma)
{
    ByteWriter w = VideoPacketHead(width, height, true);
    for (int i = 0; i < MacroblocksOf(width, height); ++i)
        if (i == changed)
            GreyMacroblock(w, luma, true);
        else
            w.Bits(1, 1);
    return w.bytes;
}

inline MovieBuilder& AddVideo(MovieBuilder& m, std::uint32_t id, int width, int height, std::uint32_t codec = 2)
{
    return m.Tag(60, ByteWriter()
                         .U16(id)
                         .U16(1)
                         .U16(static_cast<std::uint32_t>(width))
                         .U16(static_cast<std::uint32_t>(height))
                         .U8(0)
                         .U8(codec)
                         .bytes);
}
inline MovieBuilder& AddVideoFrame(MovieBuilder& m, std::uint32_t id, std::uint32_t number, const Bytes& packet)
{
    return m.Tag(61, ByteWriter().U16(id).U16(number).Raw(packet).bytes);
}
/// A video at its frame @p number.
inline MovieBuilder& PlaceVideo(MovieBuilder& m, std::uint32_t id, std::uint32_t depth, std::uint32_t number, int x = 0,
                                int y = 0)
{
    return m.Tag(26, ByteWriter().U8(0x16).U16(depth).U16(id).Translation(x * 20, y * 20).U16(number).bytes);
}
/// Goes on to frame @p number.
inline MovieBuilder& TurnVideo(MovieBuilder& m, std::uint32_t depth, std::uint32_t number)
{
    return m.Tag(26, ByteWriter().U8(0x11).U16(depth).U16(number).bytes);
}
