#include "host/compose/Compositor.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <vector>

namespace qmx::host
{
namespace
{
constexpr std::uint32_t kBlack = 0xFF000000U;

/// A picture of one colour with what a layer needs.
struct Picture
{
    Picture(std::uint32_t color, PixelBox box, AlphaMode mode = AlphaMode::Opaque, std::size_t padding = 0)
    {
        const std::size_t stride = static_cast<std::size_t>(box.Width()) + padding;
        pixels.assign(stride * static_cast<std::size_t>(box.Height()), color);
        layer.pPixels = reinterpret_cast<const std::uint8_t*>(pixels.data());
        layer.stride = stride * 4;
        layer.place = box;
        layer.alpha = mode;
    }
    std::vector<std::uint32_t> pixels;
    Layer layer;
};

Canvas Spoiled(std::uint32_t width, std::uint32_t height)
{
    Canvas canvas(width, height);
    std::memset(canvas.Row(0), 0x5A, canvas.ByteCount());
    return canvas;
}

std::uint32_t PixelOf(const Canvas& canvas, std::uint32_t x, std::uint32_t y)
{
    std::uint32_t pixel;
    std::memcpy(&pixel, canvas.Row(y) + std::size_t{x} * 4, 4);
    return pixel;
}

TEST(Compose, WithoutLayersIsBlack)
{
    Canvas canvas = Spoiled(5, 3);
    Compose(canvas, {});
    for (std::uint32_t y = 0; y < 3; ++y)
    {
        for (std::uint32_t x = 0; x < 5; ++x)
            EXPECT_EQ(PixelOf(canvas, x, y), kBlack);
    }
}

TEST(Compose, LaterLayersLieOnEarlierOnesAndTheRestIsBlack)
{
    const Picture below(0xFF0000FFU, {1, 1, 4, 4});
    const Picture above(0xFF00FF00U, {2, 2, 6, 3}, AlphaMode::Opaque, 3);
    Canvas canvas = Spoiled(6, 5);
    Compose(canvas, std::array{below.layer, above.layer});
    for (std::uint32_t y = 0; y < 5; ++y)
    {
        for (std::uint32_t x = 0; x < 6; ++x)
        {
            const bool inAbove = x >= 2 && y == 2;
            const bool inBelow = x >= 1 && x < 4 && y >= 1 && y < 4;
            EXPECT_EQ(PixelOf(canvas, x, y), inAbove ? 0xFF00FF00U : inBelow ? 0xFF0000FFU : kBlack) << x << ", " << y;
        }
    }
}

TEST(Compose, PicturesThatReachOutsideAreCutAtTheirOwnPixels)
{
    // Rows and columns are numbered in the picture's colour, so that a wrong cut shows.
    Picture picture(0, {-2, -1, 3, 4});
    for (std::uint32_t y = 0; y < 5; ++y)
    {
        for (std::uint32_t x = 0; x < 5; ++x)
            picture.pixels[y * 5 + x] = 0xFF000000U | y << 8 | x;
    }
    Canvas canvas = Spoiled(4, 3);
    Compose(canvas, std::array{picture.layer});
    for (std::uint32_t y = 0; y < 3; ++y)
    {
        for (std::uint32_t x = 0; x < 4; ++x)
            EXPECT_EQ(PixelOf(canvas, x, y), x < 3 ? (0xFF000000U | (y + 1) << 8 | (x + 2)) : kBlack);
    }
}

TEST(Compose, PicturesOutsideTheCanvasChangeNothing)
{
    const Picture left(~0U, {-5, 0, 0, 3});
    const Picture below(~0U, {0, 3, 4, 9});
    Canvas canvas = Spoiled(4, 3);
    Compose(canvas, std::array{left.layer, below.layer});
    for (std::uint32_t y = 0; y < 3; ++y)
    {
        for (std::uint32_t x = 0; x < 4; ++x)
            EXPECT_EQ(PixelOf(canvas, x, y), kBlack);
    }
}

TEST(Compose, TransparencyShowsWhatIsBeneathAndBlackAtTheBottom)
{
    const Picture bottom(0x80FFFFFFU, {0, 0, 2, 1}, AlphaMode::Straight);    // over black: 128
    const Picture glow(0x00200000U, {1, 0, 2, 1}, AlphaMode::Premultiplied); // adds light only
    Canvas canvas = Spoiled(2, 1);
    Compose(canvas, std::array{bottom.layer, glow.layer});
    EXPECT_EQ(PixelOf(canvas, 0, 0), 0xFF808080U);
    EXPECT_EQ(PixelOf(canvas, 1, 0), 0xFFA08080U);
}

TEST(Compose, AnOpaqueLayerHidesWhatItsAlphaSays)
{
    const Picture flagged(0x00112233U, {0, 0, 1, 1}, AlphaMode::Opaque);
    Canvas canvas = Spoiled(1, 1);
    Compose(canvas, std::array{flagged.layer});
    EXPECT_EQ(PixelOf(canvas, 0, 0), 0xFF112233U);
}

TEST(Layer, HidesWhatIsBeneathOnlyWhenOpaqueAndEverywhere)
{
    const PixelBox bounds{0, 0, 4, 3};
    EXPECT_TRUE(Picture(0, {0, 0, 4, 3}).layer.Hides(bounds));
    EXPECT_TRUE(Picture(0, {-1, -1, 5, 5}).layer.Hides(bounds));
    EXPECT_FALSE(Picture(0, {0, 0, 4, 2}).layer.Hides(bounds));
    EXPECT_FALSE(Picture(0, {1, 0, 4, 3}).layer.Hides(bounds));
    EXPECT_FALSE(Picture(0, {0, 0, 4, 3}, AlphaMode::Straight).layer.Hides(bounds));
}
} // namespace
} // namespace qmx::host
