#include "tests/companions/swfrenderer/HostileMovies.h"

#include "tests/companions/swfrenderer/PackedMovie.h"
#include "tests/companions/swfrenderer/VideoMovie.h"

#include <turbojpeg.h>

#include <algorithm>
#include <string>

namespace
{
constexpr int kWidth = 1280, kHeight = 720;
constexpr std::size_t kLongest = (std::size_t{64} << 20) - 8; ///< body of the longest movie that is read

/// Head of a DefineShape with one solid red fill and no line: number, bounds, styles, widths of style numbers.
ByteWriter ShapeHead(std::uint32_t id, int width, int height)
{
    ByteWriter w;
    w.U16(id).Rect(0, width * 20, 0, height * 20).U8(1).U8(0).U8(255).U8(0).U8(0).U8(0).Bits(2, 4).Bits(0, 4);
    return w;
}
ByteWriter& EndShape(ByteWriter& w)
{
    return w.Bits(0, 6).Align();
}
Bytes File(const MovieBuilder& m)
{
    return m.File(kWidth, kHeight);
}
/// A sprite of one frame.
Bytes OneFrame(const MovieBuilder& inner)
{
    return MovieBuilder(inner).ShowFrame().tags.bytes;
}
std::uint32_t Fixed16(double v)
{
    return static_cast<std::uint32_t>(static_cast<std::int32_t>(v * 65'536));
}
/// A full blur of fifteen passes.
Bytes WidestBlur()
{
    return ByteWriter().U8(1).U32(Fixed16(255)).U32(Fixed16(255)).U8(15 << 3).bytes;
}
Bytes FarShadow()
{
    return ByteWriter()
        .U8(0)
        .U32(0xFF0000FF)
        .U32(Fixed16(255))
        .U32(Fixed16(255))
        .U32(Fixed16(0.7))
        .U32(Fixed16(8'000))
        .U16(0x7FFF)
        .U8(0x20 | 15)
        .bytes;
}
Bytes LargeConvolution()
{
    ByteWriter w;
    w.U8(5).U8(15).U8(15).U32(0x3F800000).U32(0);
    for (int i = 0; i < 225; ++i)
        w.U32(0x3C000000);
    return w.U32(0xFF000000).U8(3).bytes;
}
Bytes Filters(const Bytes& filter, int count)
{
    ByteWriter w;
    w.U8(static_cast<std::uint32_t>(count));
    for (int i = 0; i < count; ++i)
        w.Raw(filter);
    return w.bytes;
}

Bytes SpritesInThemselves()
{
    MovieBuilder m, inner;
    m.Box(1, 4, 4, 0xFF0000);
    for (std::uint32_t depth = 1; depth <= 8; ++depth)
        inner.Place(2, depth);
    inner.Place(1, 9);
    m.Sprite(2, 2, MovieBuilder(inner).ShowFrame().ShowFrame().tags.bytes);
    return File(m.Place(2, 1).ShowFrame());
}
Bytes TenThousandDeep()
{
    MovieBuilder m;
    m.Box(1, 4, 4, 0xFF0000);
    for (std::uint32_t id = 2; id < 10'002; ++id)
        m.Sprite(id, 1, OneFrame(MovieBuilder().Place(id - 1, 1)));
    return File(m.Place(10'001, 1).ShowFrame());
}
/// Every sprite shows the one before it twice: 2^32 squares.
Bytes DoublingSprites()
{
    MovieBuilder m;
    m.Box(1, kWidth, kHeight, 0xFF0000);
    for (std::uint32_t id = 2; id < 34; ++id)
        m.Sprite(id, 1, OneFrame(MovieBuilder().Place(id - 1, 1).Place(id - 1, 2)));
    return File(m.Place(33, 1).ShowFrame());
}
Bytes FramesThatSendEachOtherOn()
{
    MovieBuilder m, inner;
    m.Box(1, 1, 1, 0xFF0000);
    for (int frame = 0; frame < 2'000; ++frame)
    {
        inner.Place(1, 1 + static_cast<std::uint32_t>(frame % 7));
        ByteWriter actions; // to the end and back, again and again
        for (int i = 0; i < 30; ++i)
            actions.U8(0x81).U16(2).U16(1'999).U8(0x81).U16(2).U16(0).U8(0x06);
        inner.Tag(12, actions.U8(0).bytes).ShowFrame();
    }
    m.Sprite(2, 2'000, inner.tags.bytes);
    for (std::uint32_t depth = 1; depth <= 1'000; ++depth)
        m.Place(2, depth);
    return File(m.ShowFrame().ShowFrame());
}
/// As many objects as there may be, every tick anew.
Bytes ObjectsMadeAnew()
{
    MovieBuilder m, inner;
    m.Box(1, 2, 2, 0xFF0000);
    for (std::uint32_t depth = 1; depth <= 255; ++depth)
        inner.Place(1, depth);
    for (std::uint32_t depth = 1; depth <= 255; ++depth)
        inner.Tag(28, ByteWriter().U16(depth).bytes);
    m.Sprite(2, 2, MovieBuilder(inner).ShowFrame().tags.bytes);
    MovieBuilder outer;
    for (std::uint32_t depth = 1; depth <= 255; ++depth)
        outer.Place(2, depth);
    m.Sprite(3, 2, MovieBuilder(outer).ShowFrame().ShowFrame().tags.bytes);
    return File(m.Place(3, 1).ShowFrame().Place(3, 1).ShowFrame());
}
Bytes BitmapsAsLargeAsAllowed()
{
    MovieBuilder m;
    const Bytes packed = Zlib(Bytes(std::size_t{1} << 20, 0x5A)); // breaks off
    for (std::uint32_t id = 1; id <= 20; ++id)
        m.Tag(36, ByteWriter().U16(id).U8(5).U16(4'000).U16(3'000).Raw(packed).bytes).Place(id, id);
    return File(m.ShowFrame());
}
/// The last scan of a progressive picture ten thousand times.
Bytes PictureOfManyScans()
{
    constexpr int kSide = 2'048;
    const Bytes pixels(std::size_t{kSide} * kSide * 3, 0x33);
    const tjhandle turbo = tjInitCompress();
    unsigned char* pJpeg = nullptr;
    unsigned long cb = 0;
    (void)tjCompress2(turbo, pixels.data(), kSide, 0, kSide, TJPF_RGB, &pJpeg, &cb, TJSAMP_444, 50, TJFLAG_PROGRESSIVE);
    Bytes jpeg(pJpeg, pJpeg + cb);
    tjFree(pJpeg);
    tjDestroy(turbo);
    const std::uint8_t start[] = {0xFF, 0xDA};
    const auto scan = std::find_end(jpeg.begin(), jpeg.end(), std::begin(start), std::end(start));
    const Bytes last(scan, jpeg.end() - 2);
    ByteWriter tag;
    tag.U16(1).Raw(Bytes(jpeg.begin(), jpeg.end() - 2));
    for (int i = 0; i < 10'000; ++i)
        tag.Raw(last);
    tag.U8(0xFF).U8(0xD9);
    return File(MovieBuilder().Tag(21, tag.bytes).Place(1, 1).ShowFrame());
}
Bytes WidestFilters()
{
    MovieBuilder m;
    m.Box(1, kWidth, kHeight, 0xFF0000).Sprite(2, 1, OneFrame(MovieBuilder().Place(1, 1)));
    for (std::uint32_t depth = 1; depth <= 16; ++depth)
        m.PlaceStyled(2, depth, 0, Filters(depth % 2 != 0 ? WidestBlur() : FarShadow(), 16));
    return File(m.ShowFrame());
}
/// As many as fit.
Bytes ManyBlurs()
{
    MovieBuilder m;
    m.Box(1, kWidth, kHeight, 0xFF0000).Sprite(2, 1, OneFrame(MovieBuilder().Place(1, 1)));
    const Bytes blur = ByteWriter().U8(1).U32(Fixed16(40)).U32(Fixed16(40)).U8(3 << 3).bytes;
    for (std::uint32_t depth = 1; depth <= 200; ++depth)
        m.PlaceStyled(2, depth, 0, Filters(blur, 1));
    return File(m.ShowFrame());
}
Bytes Blends()
{
    MovieBuilder m;
    m.Box(1, kWidth, kHeight, 0x336699).Sprite(2, 1, OneFrame(MovieBuilder().Place(1, 1)));
    for (std::uint32_t depth = 1; depth <= 2'000; ++depth)
        m.PlaceStyled(2, depth, 3 + depth % 12);
    return File(m.ShowFrame());
}
Bytes Convolutions()
{
    MovieBuilder m;
    m.Box(1, kWidth, kHeight, 0xFF0000).Sprite(2, 1, OneFrame(MovieBuilder().Place(1, 1)));
    for (std::uint32_t depth = 1; depth <= 64; ++depth)
        m.PlaceStyled(2, depth, 0, Filters(LargeConvolution(), 1));
    return File(m.ShowFrame());
}
/// A line of 3,276 pixels' width with 100,000 round corners.
Bytes WidestLine()
{
    ByteWriter w;
    w.U16(1).Rect(0, kWidth * 20, 0, kHeight * 20).U8(0).U8(1).U16(65'535).U8(0).U8(0).U8(255).Bits(0, 4).Bits(1, 4);
    w.Bits(0b001001, 6).Bits(20, 5).Bits(0, 20).Bits(0, 20).Bits(1, 1);
    for (int i = 0; i < 100'000; ++i)
        w.Line(i % 2 == 0 ? kWidth * 20 : -kWidth * 20, i % 3 == 0 ? kHeight * 10 : -kHeight * 5);
    return File(MovieBuilder().Tag(2, EndShape(w).bytes).Place(1, 1).ShowFrame());
}
Bytes LayersInLayers()
{
    MovieBuilder m;
    m.Box(1, kWidth, kHeight, 0x336699);
    for (std::uint32_t id = 2; id < 32; ++id)
    {
        MovieBuilder inner;
        inner.PlaceStyled(id - 1, 1, 3 + id % 12).PlaceStyled(id - 1, 2, 3 + (id + 5) % 12);
        m.Sprite(id, 1, OneFrame(inner));
    }
    return File(m.PlaceStyled(31, 1, 2).ShowFrame());
}
Bytes MasksInMasks()
{
    MovieBuilder m;
    m.Box(1, kWidth, kHeight, 0x336699);
    for (std::uint32_t depth = 1; depth < 20'000; ++depth)
        m.PlaceClipper(1, depth, 20'000);
    return File(m.Place(1, 20'000).ShowFrame());
}
/// Fills that lie on each other everywhere, and an edge that ends every run of pixels.
Bytes FillsOnEachOther()
{
    constexpr int kFills = 20'000;
    ByteWriter w;
    w.U16(1).Rect(0, kWidth * 20, 0, kHeight * 20).U8(255).U16(kFills);
    for (int i = 0; i < kFills; ++i)
        w.U8(0).U8(255).U8(static_cast<std::uint32_t>(i & 255)).U8(0);
    w.U8(0).Bits(15, 4).Bits(0, 4);
    for (int i = 1; i <= kFills; ++i)
    {
        w.Bits(0b000101, 6).Bits(20, 5).Bits(i % 20, 20).Bits(0, 20).Bits(i, 15); // moves; fill1
        w.Line(0, kHeight * 20);
    }
    for (int x = 0; x < kWidth; ++x)
    {
        w.Bits(0b000101, 6).Bits(20, 5).Bits(x * 20 + 10, 20).Bits(0, 20).Bits(1, 15);
        w.Line(0, kHeight * 20);
    }
    return File(MovieBuilder().Tag(22, EndShape(w).bytes).Place(1, 1).ShowFrame());
}
Bytes GradientsWithoutEnd()
{
    constexpr int kFills = 60'000;
    ByteWriter w;
    w.U16(1).Rect(0, kWidth * 20, 0, kHeight * 20).U8(255).U16(kFills);
    for (int i = 0; i < kFills; ++i)
    {
        w.U8(0x12).Bits(0, 2).Bits(0, 5).Align().U8(0x12).U8(0).U8(255).U8(0).U8(0);
        w.U8(255).U8(0).U8(static_cast<std::uint32_t>(i & 255)).U8(0);
    }
    w.U8(0).Bits(15, 4).Bits(0, 4);
    for (int i = 1; i <= kFills; i += 60)
    {
        w.Bits(0b000101, 6).Bits(20, 5).Bits(0, 20).Bits(0, 20).Bits(i, 15);
        w.Line(kWidth * 20, 0).Line(0, kHeight * 20).Line(-kWidth * 20, 0).Line(0, -kHeight * 20);
    }
    MovieBuilder m;
    m.Tag(22, EndShape(w).bytes);
    for (std::uint32_t depth = 1; depth < 20; ++depth)
        m.Place(1, depth);
    return File(m.ShowFrame());
}
/// One morph at ever other ratios.
Bytes MorphsAtManyRatios()
{
    ByteWriter start, end;
    start.U8(1).U8(0).U32(0xFF0000FF).U32(0xFFFF0000).U8(0).Bits(1, 4).Bits(0, 4);
    start.Bits(0b000010, 6).Bits(1, 1);
    end.Bits(0, 8);
    for (int i = 0; i < 50'000; ++i)
    {
        start.ShortLine(i % 2 == 0 ? 400 : -400, i % 5 - 2, 11);
        end.ShortLine(i % 2 == 0 ? -300 : 300, i % 7 - 3, 11);
    }
    start.Bits(0, 6).Align();
    end.Bits(0, 6).Align();
    ByteWriter w;
    w.U16(1).Rect(0, 400, 0, 400).Rect(0, 400, 0, 400).U32(static_cast<std::uint32_t>(start.bytes.size()));
    w.Raw(start.bytes).Raw(end.bytes);
    MovieBuilder m;
    m.Tag(46, w.bytes);
    for (std::uint32_t depth = 1; depth < 5'000; ++depth)
        m.Tag(26, ByteWriter().U8(0x16).U16(depth).U16(1).Translation(4'000, 4'000).U16(depth * 13).bytes);
    return File(m.ShowFrame());
}
/// Empty glyphs by the million.
Bytes TextsOfEmptyGlyphs()
{
    MovieBuilder m;
    ByteWriter text;
    text.U16(1).Rect(0, 400, 0, 400).Bits(0, 2).Bits(0, 5).Align().U8(0).U8(0);
    text.U8(0x88).U16(9).U16(240).U8(255);
    for (int i = 0; i < 200; ++i)
        text.U8(0x80).U8(255);
    m.Tag(11, text.U8(0).bytes);
    for (std::uint32_t depth = 1; depth < 30'000; ++depth)
        m.Place(1, depth);
    return File(m.ShowFrame());
}
/// Fields whose letters each have another font.
Bytes FieldsOfManyFonts()
{
    MovieBuilder m;
    for (std::uint32_t id = 1'000; id < 20'000; ++id)
        m.Tag(48, ByteWriter().U16(id).U8(0).U8(0).U8(1).U8('a').U16(1).U16(4).U16(6).U16(0x1000).U8('b').bytes);
    std::string text;
    for (int i = 0; i < 20'000; ++i)
        text += "<font face='a" + std::string(1, static_cast<char>('a' + i % 26)) + "'><b>b</b>&";
    for (std::uint32_t id = 1; id <= 20; ++id)
    {
        ByteWriter w;
        w.U16(id).Rect(0, kWidth * 20, 0, kHeight * 20).U8(0x81 | 0x60).U8(0x02).U16(1'000).U16(240).U8(0);
        w.Raw(Bytes(text.begin(), text.end())).U8(0);
        m.Tag(37, w.bytes).Place(id, id);
    }
    return File(m.ShowFrame());
}
Bytes PlacementsWithoutEnd()
{
    return TagsWithoutEnd(MovieBuilder().Place(1, 1).tags.bytes);
}
Bytes FramesWithoutEnd()
{
    return TagsWithoutEnd(ByteWriter().U16(1 << 6).bytes);
}
Bytes ActionsWithoutEnd()
{
    ByteWriter actions;
    actions.U8(0x88).U16(1'003).U16(1).Raw(Bytes(1'000, 'a')).U8(0);
    for (int i = 0; i < 200; ++i) // a long constant, and a jump to where it says
        actions.U8(0x96).U16(2).U8(8).U8(0).U8(0x9F).U16(1).U8(1);
    return TagsWithoutEnd(MovieBuilder().Tag(12, actions.U8(0).bytes).ShowFrame().tags.bytes);
}
Bytes GlyphsWithoutEnd()
{
    ByteWriter font; // 20,000 glyphs of one byte
    font.U16(1).U8(8).U8(0).U8(0).U16(20'000);
    for (std::uint32_t i = 0; i <= 20'000; ++i)
        font.U32(80'004 + i);
    font.Raw(Bytes(20'000, 0x10));
    Bytes tags;
    for (std::uint32_t id = 1; id < 500; ++id)
    {
        font.bytes[0] = static_cast<std::uint8_t>(id);
        font.bytes[1] = static_cast<std::uint8_t>(id >> 8);
        const Bytes tag = MovieBuilder::TagBytes(48, font.bytes);
        tags.insert(tags.end(), tag.begin(), tag.end());
    }
    return TagsWithoutEnd(tags);
}
Bytes StylesWithoutEnd()
{
    ByteWriter shape; // changes of style that draw nothing
    shape.U16(1).Rect(0, 20, 0, 20).U8(1).U8(0).U8(0).U8(0).U8(0).U8(0).Bits(1, 4).Bits(0, 4);
    for (int i = 0; i < 60'000; ++i)
        shape.Bits(0b000010, 6).Bits(i & 1, 1).Bits(0b11, 2).Bits(0, 4).Bits(1, 1).Bits(i & 1 ? -1 : 1, 2).Bits(0, 2);
    Bytes tags;
    for (std::uint32_t id = 1; id < 400; ++id)
    {
        shape.bytes[0] = static_cast<std::uint8_t>(id);
        shape.bytes[1] = static_cast<std::uint8_t>(id >> 8);
        const Bytes tag = MovieBuilder::TagBytes(2, shape.bytes);
        tags.insert(tags.end(), tag.begin(), tag.end());
    }
    return TagsWithoutEnd(tags);
}
/// As large as a picture may be, with thousands of frames of next to nothing, and objects that each show another one.
Bytes VideoOfTinyFrames()
{
    constexpr int kSide = 2'600;
    MovieBuilder m;
    AddVideo(m, 1, kSide, kSide);
    AddVideoFrame(m, 1, 0, GreyPacket(kSide, kSide, 90));
    const Bytes unchanged = ChangePacket(kSide, kSide, -1, 0);
    const Bytes brokenOff(unchanged.begin(), unchanged.begin() + 16);
    for (std::uint32_t i = 1; i < 40'000; ++i)
        AddVideoFrame(m, 1, i, i % 8 == 0 && i < 40'000 / 8 ? unchanged : brokenOff);
    for (std::uint32_t depth = 1; depth < 5'000; ++depth)
        PlaceVideo(m, 1, depth, depth * 37'123 % 65'536);
    return File(m.ShowFrame().ShowFrame());
}
/// Late frames of a video, all of whose pictures are whole.
Bytes VideoOfWholePictures()
{
    MovieBuilder m;
    AddVideo(m, 1, 320, 240);
    const Bytes dark = GreyPacket(320, 240, 30), bright = GreyPacket(320, 240, 200);
    for (std::uint32_t i = 0; i < 20'000; ++i)
        AddVideoFrame(m, 1, i, i % 2 == 0 ? dark : bright);
    PlaceVideo(m, 1, 1, 19'999).ShowFrame();
    TurnVideo(m, 1, 19'998).ShowFrame();
    return File(m);
}
/// Two frames of a small video by turns.
Bytes VideoToAndFro()
{
    MovieBuilder m;
    AddVideo(m, 1, 16, 16);
    for (std::uint32_t i = 0; i < 60'000; ++i)
        AddVideoFrame(m, 1, i, GreyPacket(16, 16, 90));
    for (std::uint32_t depth = 1; depth < 60'000; ++depth)
        PlaceVideo(m, 1, depth, depth % 2 != 0 ? 59'999 : 0);
    for (std::uint32_t depth = 1; depth < 1'000; ++depth)
        m.Tag(28, ByteWriter().U16(depth).bytes);
    return File(m.ShowFrame().ShowFrame());
}
/// Thousands of streams that each need a decoder.
Bytes VideosByTheThousand()
{
    MovieBuilder m;
    for (std::uint32_t id = 1; id < 10'000; ++id)
    {
        AddVideo(m, id, 48, 48, 2 + id % 5);
        AddVideoFrame(m, id, 0, GreyPacket(48, 48, 90));
        PlaceVideo(m, id, id, 0);
    }
    m.ShowFrame();
    for (std::uint32_t depth = 1; depth < 5'000; ++depth)
        m.Tag(28, ByteWriter().U16(depth).bytes);
    return File(m.ShowFrame());
}
/// Packets that are mostly noise: with every frame of the movie those of another kind.
Bytes VideosOfNoise()
{
    MovieBuilder m;
    std::uint32_t noise = 12'345;
    const Bytes whole = GreyPacket(640, 480, 90);
    for (std::uint32_t id = 1; id <= 5; ++id)
    {
        AddVideo(m, id, 640, 480, 1 + id);
        for (std::uint32_t i = 0; i < 3'000; ++i)
        {
            Bytes packet(whole.begin(), whole.begin() + (i % 2 != 0 ? 400 : 40));
            for (std::size_t at = i % 3 == 0 ? 9 : 12; at < packet.size(); ++at)
                packet[at] = static_cast<std::uint8_t>((noise = noise * 1'664'525 + 1'013'904'223) >> 24);
            AddVideoFrame(m, id, i, packet);
        }
        for (std::uint32_t depth = 1; depth < 500; ++depth)
        {
            m.Tag(28, ByteWriter().U16(depth).bytes);
            PlaceVideo(m, id, depth, depth * 7'919 % 3'000);
        }
        m.ShowFrame();
    }
    return File(m);
}
} // namespace

Bytes TagsWithoutEnd(const Bytes& tag)
{
    MovieBuilder m;
    m.ShowFrame();
    Bytes body = m.Body(kWidth, kHeight);
    body.pop_back(); // the end tag
    body.pop_back();
    body.reserve(kLongest + tag.size());
    while (body.size() + tag.size() <= kLongest)
        body.insert(body.end(), tag.begin(), tag.end());
    return ZlibMovie(body, static_cast<std::uint32_t>(body.size() + 8));
}

Bytes SquareOfAMillionEdges(int side)
{
    ByteWriter w = ShapeHead(1, side, side);
    constexpr int kEdges = 1 << 20, kZigzag = kEdges - 4; // the other four close the square
    w.Style(0, 0, 0, 1).Line(side * 20, 0).Line(0, side * 20).Line(-side * 20, 0);
    int y = side * 20;
    for (int i = 0; i < kZigzag; ++i) // upwards in steps of a twip, at even distances
    {
        const int to = side * 20 - static_cast<int>(std::int64_t{side} * 20 * (i + 1) / kZigzag);
        w.ShortLine(i % 2 == 0 ? 20 : -20, to - y, 6);
        y = to;
    }
    w.Line(0, 0);
    return MovieBuilder().Tag(2, EndShape(w).bytes).Place(1, 1).ShowFrame().File(side, side);
}

Bytes EdgesAcross(int count)
{
    ByteWriter w = ShapeHead(1, 20, 20);
    w.Style(0, 0, 0, 1);
    constexpr int kX[] = {400, -100, -290, -10}, kY[] = {100, 290, -110, -280};
    for (int i = 0; i < count; ++i)
        w.ShortLine(kX[i % 4], kY[i % 4], 10);
    return MovieBuilder().Tag(2, EndShape(w).bytes).Place(1, 1).ShowFrame().File(20, 20);
}

const std::vector<HostileMovie>& HostileMovies()
{
    static const std::vector<HostileMovie> kMovies = {
        {"spritesInThemselves", SpritesInThemselves, {0, 3}},
        {"tenThousandDeep", TenThousandDeep, {0, 5}},
        {"doublingSprites", DoublingSprites, {0}},
        {"framesThatSendEachOtherOn", FramesThatSendEachOtherOn, {0, 1'000'000}},
        {"objectsMadeAnew", ObjectsMadeAnew, {0, 100'000}},
        {"bitmapsAsLargeAsAllowed", BitmapsAsLargeAsAllowed, {0}},
        {"pictureOfManyScans", PictureOfManyScans, {0}},
        {"widestFilters", WidestFilters, {0}},
        {"manyBlurs", ManyBlurs, {0}},
        {"blends", Blends, {0}},
        {"convolutions", Convolutions, {0}},
        {"widestLine", WidestLine, {0}},
        {"layersInLayers", LayersInLayers, {0}},
        {"masksInMasks", MasksInMasks, {0}},
        {"fillsOnEachOther", FillsOnEachOther, {0}},
        {"gradientsWithoutEnd", GradientsWithoutEnd, {0}},
        {"morphsAtManyRatios", MorphsAtManyRatios, {0}},
        {"textsOfEmptyGlyphs", TextsOfEmptyGlyphs, {0}},
        {"fieldsOfManyFonts", FieldsOfManyFonts, {0}},
        {"placementsWithoutEnd", PlacementsWithoutEnd, {0, 4}},
        {"framesWithoutEnd", FramesWithoutEnd, {0, 1'000'000}},
        {"actionsWithoutEnd", ActionsWithoutEnd, {0, 10'000}},
        {"glyphsWithoutEnd", GlyphsWithoutEnd, {0}},
        {"stylesWithoutEnd", StylesWithoutEnd, {0}},
        {"videoOfTinyFrames", VideoOfTinyFrames, {0, 1}},
        {"videoOfWholePictures", VideoOfWholePictures, {0, 1}},
        {"videoToAndFro", VideoToAndFro, {0, 1}},
        {"videosByTheThousand", VideosByTheThousand, {0, 1}},
        {"videosOfNoise", VideosOfNoise, {0, 1, 2, 3, 4}},
        {"aMillionEdges", [] { return SquareOfAMillionEdges(720); }, {0}},
        {"aMillionEdgesAcross", [] { return EdgesAcross(1 << 20); }, {0}},
    };
    return kMovies;
}
