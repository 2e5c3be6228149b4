/// @file FormatFeaturesTest.cpp
/// What movies may say about lines, bitmaps, text and objects, each by a movie of a few bytes.
#include "companions/swfrenderer/SystemFont.h"
#include "tests/companions/swfrenderer/MovieBuilder.h"
#include "tests/companions/swfrenderer/MoviePlayer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>

#include <png.h>

namespace
{
constexpr std::uint32_t kRed = 0xFFFF0000U, kGreen = 0xFF00FF00U, kBlue = 0xFF0000FFU, kWhite = 0xFFFFFFFFU,
                        kBlack = 0xFF000000U;
constexpr std::uint32_t kNoX = 0x0400, kNoY = 0x0200, kHinted = 0x0100, kNoCaps = 0x4000 | 0x0001;

/// Rows of column @p x that are not white.
std::size_t Thickness(const std::vector<std::uint32_t>& pixels, std::size_t width, std::size_t x)
{
    std::size_t n = 0;
    for (std::size_t i = x; i < pixels.size(); i += width)
        n += pixels[i] != kWhite ? 1 : 0;
    return n;
}

/// A line across, two pixels thick, drawn three times as high.
std::size_t ThicknessWhenStretched(std::uint32_t flags)
{
    MovieBuilder m;
    m.Stroke(1, 0, 0, 400, 0, 40, flags | kNoCaps);
    m.Tag(26, ByteWriter().U8(6).U16(1).U16(1).Scaling(65'536, 3 * 65'536, 0, 200).bytes).ShowFrame();
    MoviePlayer player(m.File(20, 20));
    return Thickness(player.Frame(0), 20, 10);
}

/// The picture of a movie of one bitmap, in the place of JPEG data.
std::vector<std::uint32_t> BitmapMovie(const Bytes& picture, int width, int height)
{
    MovieBuilder m;
    m.Tag(21, ByteWriter().U16(1).Raw(picture).bytes);
    ByteWriter w;
    w.U16(2).Rect(0, width * 20, 0, height * 20).U8(1).U8(0x43).U16(1).Scaling(20 * 65'536, 20 * 65'536).U8(0);
    w.Bits(2, 4).Bits(0, 4).Style(0, 0, 0, 1).Line(width * 20, 0).Line(0, height * 20).Line(-width * 20, 0);
    w.Line(0, -height * 20).Bits(0, 6).Align();
    m.Tag(2, w.bytes).Place(2, 1).ShowFrame();
    return MoviePlayer(m.File(width, height)).Frame(0);
}

Bytes PushNumbers(std::initializer_list<std::uint32_t> numbers)
{
    ByteWriter w;
    for (const std::uint32_t n : numbers)
        w.U8(7).U32(n);
    return ByteWriter().U8(0x96).U16(static_cast<std::uint32_t>(w.bytes.size())).Raw(w.bytes).bytes;
}

/// Actions that set property @p index of the object itself.
Bytes SetOwn(std::uint32_t index, std::uint32_t value)
{
    ByteWriter w;
    w.U8(0x96).U16(2).U8(0).U8(0);
    return w.Raw(PushNumbers({index, value})).U8(0x23).U8(0).bytes;
}

std::size_t Count(const std::vector<std::uint32_t>& pixels, std::uint32_t colour)
{
    return static_cast<std::size_t>(std::count(pixels.begin(), pixels.end(), colour));
}
std::size_t FirstOf(const std::vector<std::uint32_t>& pixels, std::uint32_t colour)
{
    return static_cast<std::size_t>(std::find(pixels.begin(), pixels.end(), colour) - pixels.begin());
}

/// A sprite of one red pixel, number 2.
MovieBuilder WithSprite()
{
    MovieBuilder m;
    m.Box(1, 1, 1, 0xFF0000).Sprite(2, 1, MovieBuilder().Place(1, 1).ShowFrame().tags.bytes);
    return m;
}
} // namespace

TEST(LinesOfMovies, GrowWithTheirObjectButForTheAxesTheyExcept)
{
    EXPECT_EQ(ThicknessWhenStretched(0), 6U);
    EXPECT_EQ(ThicknessWhenStretched(kNoX), 6U);
    EXPECT_EQ(ThicknessWhenStretched(kNoY), 2U);
    EXPECT_EQ(ThicknessWhenStretched(kNoX | kNoY), 2U);
}

TEST(LinesOfMovies, AreNeverThinnerThanAPixel)
{
    MovieBuilder m;
    m.Stroke(1, 0, 100, 400, 0, 1, kNoCaps).Place(1, 1).ShowFrame();
    EXPECT_EQ(Thickness(MoviePlayer(m.File(20, 20)).Frame(0), 20, 10), 2U) << "half of two rows";
}

TEST(LinesOfMovies, FillWholePixelsWhenTheyAreHinted)
{
    for (const int width : {20, 40, 50})
    {
        MovieBuilder m;
        m.Stroke(1, 3, 107, 400, 0, width, kHinted | kNoCaps).Place(1, 1).ShowFrame();
        const auto pixels = MoviePlayer(m.File(20, 20)).Frame(0);
        const std::size_t thick = static_cast<std::size_t>(width + 10) / 20;
        EXPECT_EQ(Thickness(pixels, 20, 10), thick) << width;
        for (std::size_t y = 0; y < 20; ++y)
            EXPECT_TRUE(pixels[y * 20 + 10] == kRed || pixels[y * 20 + 10] == kWhite) << width;
    }
}

TEST(BitmapsOfMovies, MayBePngFiles)
{
    const std::array<std::uint8_t, 8> rgba{255, 0, 0, 255, 0, 255, 0, 128};
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = 2;
    image.height = 1;
    image.format = PNG_FORMAT_RGBA;
    Bytes file(1024);
    png_alloc_size_t cb = file.size();
    ASSERT_NE(png_image_write_to_memory(&image, file.data(), &cb, 0, rgba.data(), 0, nullptr), 0);
    file.resize(cb);
    const auto pixels = BitmapMovie(file, 2, 1);
    ASSERT_EQ(pixels.size(), 2U);
    EXPECT_EQ(pixels[0], kRed);
    EXPECT_EQ(pixels[1], 0xFF7FFF7FU) << "half of it lets the stage through";
    for (std::size_t n = 0; n < file.size(); n += 3)
        EXPECT_EQ(BitmapMovie(Bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(n)), 2, 1).size(), 2U);
}

TEST(BitmapsOfMovies, MayBeGifFiles)
{
    // Three pixels: red, green, and one that is transparent. Codes of three bits: clear, 0, 1, 2, end.
    ByteWriter w;
    w.Raw({'G', 'I', 'F', '8', '9', 'a'}).U16(3).U16(1).U8(0x81).U8(0).U8(0);
    w.Raw({255, 0, 0, 0, 255, 0, 0, 0, 255, 9, 9, 9});
    w.Raw({'!', 0xF9, 4, 1, 0, 0, 2, 0}).U8(',').U16(0).U16(0).U16(3).U16(1).U8(0).U8(2);
    const std::uint32_t codes = 4U | 0U << 3 | 1U << 6 | 2U << 9 | 5U << 12;
    w.U8(2).U16(codes).U8(0).U8(';');
    const auto pixels = BitmapMovie(w.bytes, 3, 1);
    EXPECT_EQ(pixels, (std::vector<std::uint32_t>{kRed, kGreen, kWhite}));
    for (std::size_t n = 0; n < w.bytes.size(); ++n)
    {
        Bytes part(w.bytes.begin(), w.bytes.begin() + static_cast<std::ptrdiff_t>(n));
        EXPECT_EQ(BitmapMovie(part, 3, 1).size(), 3U);
        part = w.bytes;
        part[n] ^= 0x55; // nothing comes of it but another picture, or none
        EXPECT_EQ(BitmapMovie(part, 3, 1).size(), 3U);
    }
}

TEST(TextOfMovies, IsUnderlinedWhereItsMarkupSaysSo)
{
    MovieBuilder m;
    m.SquareFont(1, "Squares").Field(2, 1, 240, "a<u>aa</u>a").Place(2, 1).ShowFrame();
    const auto pixels = MoviePlayer(m.File(60, 20)).Frame(0);
    ASSERT_EQ(pixels.size(), 1200U);
    // Squares of 12 pixels stand on row 12; the bar is a pixel thick, a twelfth of the height below.
    const auto rowHas = [&](std::size_t x, std::size_t y) { return pixels[y * 60 + x] == kBlack; };
    for (const std::size_t x : {6U, 18U, 30U, 42U})
        EXPECT_TRUE(rowHas(x, 5)) << x;
    EXPECT_FALSE(rowHas(6, 13));
    EXPECT_TRUE(rowHas(18, 13));
    EXPECT_TRUE(rowHas(24, 13));
    EXPECT_TRUE(rowHas(30, 13));
    EXPECT_FALSE(rowHas(42, 13));
    EXPECT_FALSE(rowHas(18, 12));
    EXPECT_FALSE(rowHas(18, 14));
}

TEST(TextOfMovies, IsSetInTheSystemsFontsWhereTheMovieHasNoOutlines)
{
    if (!swf::CSystemFont::Open("_sans", false, false))
        GTEST_SKIP() << "the system has no fonts";
    const auto ink = [](const MovieBuilder& fonts, const std::string& html)
    {
        MovieBuilder m = fonts;
        const auto pixels = MoviePlayer(m.Field(9, 1, 400, html).Place(9, 1).ShowFrame().File(60, 30)).Frame(0);
        std::size_t sum = 0;
        for (const std::uint32_t p : pixels)
            sum += 255 - (p & 255);
        return sum;
    };
    // A font with a name alone.
    MovieBuilder named;
    named.Tag(48, ByteWriter().U16(1).U8(0).U8(0).U8(5).Raw({'_', 's', 'a', 'n', 's'}).U16(0).U16(2).bytes);
    const std::size_t one = ink(named, "m");
    EXPECT_GT(one, 255U * 20);
    EXPECT_LT(one, 255U * 400) << "less than the square of an em";
    EXPECT_NEAR(static_cast<double>(ink(named, "mm")), 2.0 * static_cast<double>(one), 255.0 * 8);
    EXPECT_EQ(ink(named, " "), 0U);
    EXPECT_GT(ink(named, "<b>m</b>"), one);
    // No font at all, and one that only the markup names.
    EXPECT_GT(ink({}, "m"), 255U * 20);
    EXPECT_EQ(ink({}, "<font face=\"_sans\">m</font>"), one);
    // A font with outlines stays as it is: its letter fills the em.
    EXPECT_NEAR(static_cast<double>(ink(MovieBuilder().SquareFont(1, "Squares"), "a")), 255.0 * 400, 255.0);
}

TEST(TextOfMovies, IsSetInTheFontFilesThatMoviesCarry)
{
    std::ifstream file("/usr/share/fonts/truetype/dejavu/DejaVuSansMono-Bold.ttf", std::ios::binary);
    const Bytes font{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (font.empty() || !swf::CSystemFont::OpenFile(font))
        GTEST_SKIP() << "needs DejaVu Sans Mono, and a system that opens files in memory";
    const auto picture = [](const Bytes& data)
    {
        MovieBuilder m;
        m.Tag(91, ByteWriter().U16(1).U8(data.empty() ? 1 : 5).Text("DejaVu Sans Mono").Raw(data).bytes);
        return MoviePlayer(m.Field(9, 1, 400, "Qm").Place(9, 1).ShowFrame().File(60, 30, 10)).Frame(0);
    };
    const auto carried = picture(font);
    EXPECT_LT(Count(carried, kWhite), 1700U);
    EXPECT_EQ(carried, picture({})) << "the system's font is the same one";
    for (std::size_t cb = 1; cb < font.size(); cb *= 3) // a file that breaks off is a font of the system
        EXPECT_EQ(picture(Bytes(font.begin(), font.begin() + static_cast<std::ptrdiff_t>(cb))).size(), 1800U);
}

TEST(ActionsOfMovies, SetTheSizeOfWhatIsThere)
{
    MovieBuilder m = WithSprite();
    ByteWriter placed;
    placed.U8(0x26).U16(1).U16(2).Translation(0, 0).Text("a");
    m.Tag(26, placed.bytes);
    ByteWriter actions;
    for (const auto& [index, value] : {std::pair{8U, 5U}, {9U, 3U}})
        actions.U8(0x96).U16(3).U8(0).Text("a").Raw(PushNumbers({index, value})).U8(0x23);
    m.Tag(12, actions.U8(0).bytes).ShowFrame();
    const auto pixels = MoviePlayer(m.File(8, 8)).Frame(0);
    EXPECT_EQ(Count(pixels, kRed), 15U);
    EXPECT_EQ(pixels[2 * 8 + 4], kRed);
}

TEST(ActionsOfMovies, ComeWithTheEventsOfClips)
{
    // On load the clip goes to 2, 0; with every frame after that to 3, 0.
    MovieBuilder m = WithSprite();
    const Bytes load = SetOwn(0, 2), frame = SetOwn(0, 3);
    ByteWriter placed;
    placed.U8(0x86).U16(1).U16(2).Translation(0, 0).U16(0).U32(3);
    placed.U32(1).U32(static_cast<std::uint32_t>(load.size())).Raw(load);
    placed.U32(2).U32(static_cast<std::uint32_t>(frame.size())).Raw(frame).U32(0);
    m.Tag(26, placed.bytes).ShowFrame().ShowFrame().ShowFrame();
    MoviePlayer player(m.File(6, 1));
    EXPECT_EQ(FirstOf(player.Frame(0), kRed), 2U);
    EXPECT_EQ(FirstOf(player.Frame(1), kRed), 3U);
    EXPECT_EQ(FirstOf(player.Frame(0), kRed), 2U);
    EXPECT_EQ(FirstOf(player.Frame(2), kRed), 3U);
}

TEST(ActionsOfMovies, ComeWithTheFrameScriptsOfClasses)
{
    // The class M: its constructor gives frame 1 of its timeline the script "frame1", which stops and sets x to 2.
    const auto file = [](const Bytes& constructor, const Bytes& script)
    {
        ByteWriter w;
        w.U16(16).U16(46).U8(0).U8(0).U8(0); // versions, numbers
        w.U8(7);
        for (const std::string text : {"M", "addFrameScript", "frame1", "stop", "x", "gotoAndPlay"})
            w.U8(static_cast<std::uint32_t>(text.size())).Raw(Bytes(text.begin(), text.end()));
        w.U8(2).U8(0x16).U8(0).U8(0); // one namespace without a name, no sets
        w.U8(7);
        for (std::uint32_t n = 1; n < 7; ++n)
            w.U8(7).U8(1).U8(n);
        w.U8(4).Raw(Bytes(16, 0)).U8(0);                                                 // methods, no metadata
        w.U8(1).U8(1).U8(0).U8(0).U8(0).U8(0).U8(1).U8(3).U8(1).U8(0).U8(1).U8(2).U8(0); // the class
        w.U8(1).U8(3).U8(0).U8(2);                                                       // a script; two bodies
        std::uint32_t method = 0;
        for (const Bytes& code : {constructor, script})
            w.U8(method++).Raw(Bytes(4, 0)).U8(static_cast<std::uint32_t>(code.size())).Raw(code).U8(0).U8(0);
        return w.bytes;
    };
    const auto movie = [](const Bytes& script)
    {
        MovieBuilder inner;
        inner.Place(1, 1).ShowFrame().Move(1, 1, 0).ShowFrame().Move(1, 2, 0).ShowFrame();
        MovieBuilder m;
        m.Box(1, 1, 1, 0xFF0000).Sprite(2, 3, inner.tags.bytes).Place(2, 1);
        m.Tag(82, ByteWriter().U32(1).U8(0).Raw(script).bytes);
        return m.Tag(76, ByteWriter().U16(1).U16(2).Text("M").bytes).ShowFrame().File(6, 1, 9);
    };
    const Bytes constructor{0xD0, 0x30, 0xD0, 0x49, 0, 0x5D, 2, 0x24, 1, 0x60, 3, 0x4F, 2, 2, 0x47};
    const Bytes whole = file(constructor, {0xD0, 0x30, 0x5D, 4, 0x4F, 4, 0, 0xD0, 0x24, 2, 0x61, 5, 0x47});
    MoviePlayer player(movie(whole));
    const std::size_t expected[] = {0, 3, 3, 3};
    for (std::uint32_t index = 0; index < 4; ++index)
        EXPECT_EQ(FirstOf(player.Frame(index), kRed), expected[index]) << index;
    // A constructor acts when its object is made, and not when the timeline begins again.
    const Bytes script{0xD0, 0x30, 0x5D, 4, 0x4F, 4, 0, 0x47};
    MoviePlayer stopped(movie(file({0xD0, 0x30, 0xD0, 0x49, 0, 0x5D, 4, 0x4F, 4, 0, 0x47}, script)));
    MoviePlayer moved(movie(file({0xD0, 0x30, 0xD0, 0x49, 0, 0xD0, 0x24, 3, 0x61, 5, 0x47}, script)));
    MoviePlayer jumped(movie(file({0xD0, 0x30, 0xD0, 0x49, 0, 0x5D, 6, 0x24, 2, 0x4F, 6, 1, 0x47}, script)));
    for (std::uint32_t index = 0; index < 7; ++index)
    {
        EXPECT_EQ(FirstOf(stopped.Frame(index), kRed), 0U) << index;
        EXPECT_EQ(FirstOf(moved.Frame(index), kRed), 3 + index % 3) << index;
        EXPECT_EQ(FirstOf(jumped.Frame(index), kRed), (index + 1) % 3) << index;
    }
    // From a branch on nothing counts.
    MoviePlayer branching(movie(file(constructor, {0xD0, 0x30, 0x10, 0, 0, 0, 0x5D, 4, 0x4F, 4, 0, 0x47})));
    EXPECT_EQ(FirstOf(branching.Frame(2), kRed), 2U);
    for (std::size_t n = 0; n < whole.size(); ++n)
    {
        Bytes part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(n));
        EXPECT_EQ(MoviePlayer(movie(part)).Frame(1).size(), 6U);
        part = whole;
        part[n] = 0xFF;
        EXPECT_EQ(MoviePlayer(movie(part)).Frame(1).size(), 6U);
    }
}

TEST(ObjectsOfMovies, MayBeNamedByTheirClass)
{
    MovieBuilder m = WithSprite();
    ByteWriter placed;
    placed.U8(4).U8(8).U16(1).Text("Red").Translation(20, 0);
    m.Tag(70, placed.bytes).Tag(76, ByteWriter().U16(1).U16(2).Text("Red").bytes).ShowFrame();
    EXPECT_EQ(FirstOf(MoviePlayer(m.File(4, 1, 9)).Frame(0), kRed), 1U);

    MovieBuilder unknown = WithSprite();
    unknown.Tag(70, placed.bytes).ShowFrame();
    EXPECT_EQ(Count(MoviePlayer(unknown.File(4, 1, 9)).Frame(0), kRed), 0U);
}

TEST(ObjectsOfMovies, KeepTheirCornersWhenTheyAreScaledInNineParts)
{
    // Nine by nine pixels in parts of three; a blue corner and a green upper side.
    const auto movie = [](int scaleX, int scaleY, bool nested)
    {
        MovieBuilder inner;
        inner.Place(1, 1).Place(2, 2).Place(3, 3, 3, 0).ShowFrame();
        MovieBuilder m;
        m.Box(1, 9, 9, 0xFF0000).Box(2, 3, 3, 0x0000FF).Box(3, 3, 3, 0x00FF00).Sprite(4, 1, inner.tags.bytes);
        m.Sprite(5, 1, MovieBuilder().Place(4, 1).ShowFrame().tags.bytes);
        m.Tag(78, ByteWriter().U16(nested ? 5 : 4).Rect(60, 120, 60, 120).bytes);
        const Bytes place =
            ByteWriter().U8(6).U16(1).U16(nested ? 5 : 4).Scaling(scaleX * 32'768, scaleY * 32'768, 20, 20).bytes;
        return MoviePlayer(m.Tag(26, place).ShowFrame().File(30, 30)).Frame(0);
    };
    const auto large = movie(6, 4, false); // three times as wide, twice as high
    EXPECT_EQ(Count(large, kBlue), 9U);
    EXPECT_EQ(Count(large, kGreen), 21U * 3);
    EXPECT_EQ(Count(large, kRed), 27U * 18 - 9 - 63);
    EXPECT_EQ(large[1 * 30 + 3], kBlue);
    EXPECT_EQ(large[1 * 30 + 4], kGreen);
    const auto small = movie(1, 2, false); // corners of three pixels share four and a half
    EXPECT_EQ(Count(small, kBlue), 2U * 3);
    EXPECT_EQ(Count(small, kGreen), 0U);
    const auto nested = movie(6, 4, true); // sprites inside grow as ever
    EXPECT_EQ(Count(nested, kBlue), 9U * 6);
}

TEST(PicturesOfMovies, HaveFilteredObjectsOnWholePixels)
{
    // A box 0.4 pixels to the right, through a matrix that changes nothing: no pixel is mixed.
    MovieBuilder m;
    m.Box(1, 2, 2, 0xFF0000);
    ByteWriter placed;
    placed.U8(6).U8(1).U16(1).U16(1).Translation(28, 20).U8(1).U8(6);
    for (int i = 0; i < 20; ++i)
        placed.U32(i % 6 == 0 ? 0x3F80'0000U : 0U);
    m.Tag(70, placed.bytes).ShowFrame();
    const auto pixels = MoviePlayer(m.File(5, 5)).Frame(0);
    EXPECT_EQ(Count(pixels, kRed), 4U);
    EXPECT_EQ(Count(pixels, kWhite), 21U);
    EXPECT_EQ(pixels[6], kRed);
}

TEST(PicturesOfMovies, AreMaskedBySixteenSamplesOfAPixel)
{
    // A mask that leaves a twentieth of the third column out covers it; one that has half of it has half.
    for (const auto& [twips, blue] : {std::pair{59, 255}, {50, 128}, {41, 0}})
    {
        MovieBuilder m;
        ByteWriter w;
        w.U16(1).Rect(0, twips, 0, 100).U8(1).U8(0).U8(0).U8(0).U8(0).U8(0).Bits(2, 4).Bits(0, 4);
        w.Style(0, 0, 0, 1).Line(twips, 0).Line(0, 100).Line(-twips, 0).Line(0, -100).Bits(0, 6).Align();
        m.Background(0).Tag(2, w.bytes).Box(2, 5, 5, 0x0000FF);
        m.Tag(26, ByteWriter().U8(0x46).U16(1).U16(1).Translation(0, 0).U16(2).bytes).Place(2, 2).ShowFrame();
        const auto pixels = MoviePlayer(m.File(5, 5)).Frame(0);
        EXPECT_EQ(pixels[11], kBlue) << twips;
        EXPECT_NEAR(static_cast<int>(pixels[12] & 255), blue, 1) << twips;
        EXPECT_EQ(pixels[13], kBlack) << twips;
    }
}
