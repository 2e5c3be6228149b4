#include "host/output/ContactSheet.h"

#include <gtest/gtest.h>

#include <cstring>

namespace qmx::host
{
namespace
{
std::uint32_t PixelOf(const Canvas& canvas, std::uint32_t x, std::uint32_t y)
{
    std::uint32_t pixel;
    std::memcpy(&pixel, canvas.Row(y) + std::size_t{x} * 4, 4);
    return pixel;
}

void Fill(Canvas& canvas, std::uint32_t pixel)
{
    for (std::uint32_t y = 0; y < canvas.Height(); ++y)
    {
        for (std::uint32_t x = 0; x < canvas.Width(); ++x)
            std::memcpy(canvas.Row(y) + std::size_t{x} * 4, &pixel, 4);
    }
}

TEST(Shrink, EveryPixelIsTheMeanOfThoseItStandsFor)
{
    Canvas source(4, 2);
    const std::uint32_t rows[2][4] = {{0xFF000000U, 0xFF000004U, 0xFFFF0000U, 0xFF010000U},
                                      {0xFF000008U, 0xFF00000CU, 0xFF000000U, 0xFF000000U}};
    std::memcpy(source.Row(0), rows, sizeof rows);
    Canvas target(4, 3);
    Fill(target, 0xFF777777U);
    Shrink(source, target, {1, 1, 3, 2});
    EXPECT_EQ(PixelOf(target, 1, 1), 0xFF000006U);
    EXPECT_EQ(PixelOf(target, 2, 1), 0xFF400000U);
    EXPECT_EQ(PixelOf(target, 0, 1), 0xFF777777U);
    EXPECT_EQ(PixelOf(target, 3, 1), 0xFF777777U);
    EXPECT_EQ(PixelOf(target, 1, 0), 0xFF777777U);
    EXPECT_EQ(PixelOf(target, 1, 2), 0xFF777777U);
}

TEST(Shrink, ToTheSameSizeIsACopy)
{
    Canvas source(3, 2);
    for (std::uint32_t i = 0; i < 6; ++i)
    {
        const std::uint32_t pixel = 0xFF000000U | i * 37;
        std::memcpy(source.Row(0) + std::size_t{i} * 4, &pixel, 4);
    }
    Canvas target(3, 2);
    Shrink(source, target, target.Bounds());
    EXPECT_EQ(std::memcmp(source.Row(0), target.Row(0), source.ByteCount()), 0);
}

TEST(ContactSheet, CellsAreFilledRowByRow)
{
    Canvas picture(640, 360);
    ContactSheet sheet(3, 2, 640, 360);
    EXPECT_EQ(sheet.CellCount(), 6U);
    const Canvas& page = sheet.Page();
    EXPECT_EQ(page.Width(), 3 * (320 + 12) + 12U);
    EXPECT_EQ(page.Height(), 2 * (180 + 4 + 14 + 12) + 12U);
    for (std::uint32_t cell = 0; cell < 6; ++cell)
    {
        Fill(picture, 0xFF000000U | (cell + 1) * 40);
        sheet.SetCell(cell, picture, cell * std::uint64_t{10'000'000});
    }
    for (std::uint32_t cell = 0; cell < 6; ++cell)
    {
        const std::uint32_t left = 12 + cell % 3 * 332;
        const std::uint32_t top = 12 + cell / 3 * 210;
        EXPECT_EQ(PixelOf(page, left, top), 0xFF000000U | (cell + 1) * 40);
        EXPECT_EQ(PixelOf(page, left + 319, top + 179), 0xFF000000U | (cell + 1) * 40);
        EXPECT_EQ(PixelOf(page, left - 1, top), 0xFF202020U);
        EXPECT_EQ(PixelOf(page, left, top + 180), 0xFF202020U);
    }
}

TEST(ContactSheet, EveryCellCarriesItsOwnLabel)
{
    Canvas picture(320, 180);
    Fill(picture, 0xFF000000U);
    ContactSheet sheet(2, 1, 320, 180);
    sheet.SetCell(0, picture, 0);
    sheet.SetCell(1, picture, 75'000'000);
    const auto ink = [&](std::uint32_t left)
    {
        std::uint32_t count = 0;
        for (std::uint32_t y = 12 + 180 + 4; y < 12 + 180 + 4 + 14; ++y)
        {
            for (std::uint32_t x = left; x < left + 320; ++x)
                count += PixelOf(sheet.Page(), x, y) != 0xFF202020U;
        }
        return count;
    };
    EXPECT_GT(ink(12), 100U);
    EXPECT_GT(ink(344), 100U);
    EXPECT_NE(ink(12), ink(344)); // "0:00.000" has other dots than "0:07.500"
}

TEST(ContactSheet, SmallPicturesAreNotEnlargedAndThinOnesKeepAPixel)
{
    Canvas small(16, 10);
    Fill(small, 0xFF0000FFU);
    ContactSheet sheet(1, 1, 16, 10);
    sheet.SetCell(0, small, 0);
    EXPECT_EQ(sheet.Page().Height(), 10 + 4 + 14 + 24U);
    Canvas thin(1, 16384);
    Fill(thin, 0xFF00FF00U);
    ContactSheet other(1, 1, 1, 16384);
    other.SetCell(0, thin, 0);
    EXPECT_EQ(PixelOf(other.Page(), 12 + 47, 12), 0xFF00FF00U);
}
} // namespace
} // namespace qmx::host
