/// @file VideoEntriesTest.cpp
/// Which frames of a video need none before them.
#include "companions/swfrenderer/VideoEntries.h"
#include "tests/companions/swfrenderer/VideoMovie.h"

#include <gtest/gtest.h>

#include <optional>

using swf::EntriesOf;
using swf::IsKeyFrame;
using swf::VideoStream;

namespace
{
constexpr std::uint32_t kH263 = 2, kScreen = 3, kVp6 = 4, kVp6Alpha = 5, kScreen2 = 6;

/// A head of H.263. @param size  0 and 1: in figures; up to 6: one of those that the format has a number for
Bytes H263Head(int size, int type)
{
    ByteWriter w;
    w.Bits(1, 17).Bits(1, 5).Bits(200, 8).Bits(size, 3);
    if (size < 2)
        w.Bits(-1, size == 0 ? 16 : 32);
    return w.Bits(type, 2).Bits(-1, 9).bytes;
}

/// A picture of 40 by 20 in blocks of 16 by 16: three columns, two rows. @param sizes  bytes of each block
/// @param flags  of the second version's picture, where it is one  @param format  the first byte of each block
Bytes ScreenPacket(const std::vector<int>& sizes, std::optional<std::uint32_t> flags = {}, std::uint8_t format = 0)
{
    ByteWriter w;
    w.Bits(0, 4).Bits(40, 12).Bits(0, 4).Bits(20, 12);
    if (flags)
        w.U8(*flags);
    for (const int cb : sizes)
        w.Bits(cb, 16).Raw(Bytes(static_cast<std::size_t>(cb), format));
    return w.bytes;
}

/// A packet of Sorenson H.263 that is whole, or not.
Bytes Packet(bool isWhole)
{
    return VideoPacketHead(16, 16, !isWhole).bytes;
}
} // namespace

TEST(VideoEntries, KnowWholePicturesOfH263)
{
    for (int size = 0; size <= 6; ++size)
        for (int type = 0; type < 4; ++type)
        {
            Bytes packet = H263Head(size, type);
            EXPECT_EQ(IsKeyFrame(kH263, packet), type == 0) << size << ' ' << type;
            packet.resize(size == 1 ? 8 : size == 0 ? 6 : 4); // broken off before the type, or within
            EXPECT_FALSE(IsKeyFrame(kH263, packet)) << size << ' ' << type;
        }
    EXPECT_FALSE(IsKeyFrame(kH263, {}));
}

TEST(VideoEntries, KnowWholePicturesOfScreenVideo)
{
    EXPECT_TRUE(IsKeyFrame(kScreen, ScreenPacket({1, 2, 300, 4, 5, 6})));
    EXPECT_FALSE(IsKeyFrame(kScreen, ScreenPacket({1, 2, 3, 4, 5, 0}))) << "a block stays";
    EXPECT_FALSE(IsKeyFrame(kScreen, ScreenPacket({1, 2, 3, 4, 5}))) << "a block is missing";
    Bytes packet = ScreenPacket({1, 2, 3, 4, 5, 6});
    packet.pop_back();
    EXPECT_FALSE(IsKeyFrame(kScreen, packet)) << "broken off";
    EXPECT_FALSE(IsKeyFrame(kScreen, {}));
    EXPECT_FALSE(IsKeyFrame(kScreen, ByteWriter().U32(0).bytes)) << "no picture at all";
}

TEST(VideoEntries, KnowWholePicturesOfTheSecondScreenVideo)
{
    const std::vector<int> sizes{1, 2, 300, 4, 5, 6};
    EXPECT_TRUE(IsKeyFrame(kScreen2, ScreenPacket(sizes, 0)));
    EXPECT_TRUE(IsKeyFrame(kScreen2, ScreenPacket(sizes, 0, 0x10))) << "another depth of colour";
    for (const std::uint8_t format : Bytes{1, 2, 4})
        EXPECT_FALSE(IsKeyFrame(kScreen2, ScreenPacket(sizes, 0, format))) << "leans on others: " << int{format};
    EXPECT_FALSE(IsKeyFrame(kScreen2, ScreenPacket(sizes, 1))) << "a palette";
    EXPECT_FALSE(IsKeyFrame(kScreen2, ScreenPacket(sizes, 2))) << "a picture of another kind";
    EXPECT_FALSE(IsKeyFrame(kScreen2, ScreenPacket({1, 2, 3, 4, 5, 0}, 0))) << "a block stays";
    EXPECT_FALSE(IsKeyFrame(kScreen2, ScreenPacket({1, 2, 3, 4, 5}, 0))) << "a block is missing";
    EXPECT_FALSE(IsKeyFrame(kScreen2, {}));
}

TEST(VideoEntries, KnowWholePicturesOfVp6)
{
    EXPECT_TRUE(IsKeyFrame(kVp6, Bytes{0x7F}));
    EXPECT_FALSE(IsKeyFrame(kVp6, Bytes{0x80}));
    EXPECT_FALSE(IsKeyFrame(kVp6, {}));
    EXPECT_TRUE(IsKeyFrame(kVp6Alpha, Bytes{0, 0, 2, 0, 0xFF, 0}));
    EXPECT_FALSE(IsKeyFrame(kVp6Alpha, Bytes{0, 0, 2, 0x80, 0, 0})) << "colours of a picture before";
    EXPECT_FALSE(IsKeyFrame(kVp6Alpha, Bytes{0, 0, 2, 0, 0, 0x80})) << "alpha of a picture before";
    EXPECT_FALSE(IsKeyFrame(kVp6Alpha, Bytes{0, 0, 2, 0, 0})) << "no alpha";
    EXPECT_FALSE(IsKeyFrame(kVp6Alpha, Bytes{0, 0, 0, 0})) << "no colours";
    EXPECT_FALSE(IsKeyFrame(kVp6Alpha, Bytes{0, 1, 0, 0, 0})) << "broken off";
    EXPECT_FALSE(IsKeyFrame(kVp6Alpha, Bytes{0, 0}));
}

TEST(VideoEntries, LieApartByWhatADecoderCosts)
{
    const Bytes whole = Packet(true), change = Packet(false);
    VideoStream stream;
    EXPECT_EQ(EntriesOf(stream), (std::vector<std::uint32_t>{0}));
    stream.codec = kH263;
    stream.frames.assign(50, whole);
    EXPECT_EQ(EntriesOf(stream), (std::vector<std::uint32_t>{0, 16, 32, 48}));
    stream.frames.assign(50, change);
    EXPECT_EQ(EntriesOf(stream), (std::vector<std::uint32_t>{0}));
    for (const std::size_t frame : {15U, 20U, 35U, 36U, 49U})
        stream.frames[frame] = whole;
    stream.frames[16] = {};
    EXPECT_EQ(EntriesOf(stream), (std::vector<std::uint32_t>{0, 20, 36}));
}
