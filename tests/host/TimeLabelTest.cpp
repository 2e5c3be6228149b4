#include "host/output/TimeLabel.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <vector>

namespace qmx::host
{
namespace
{
/// The dots of a text, drawn by itself.
std::vector<std::uint8_t> Drawn(std::string_view text)
{
    Canvas canvas(static_cast<std::uint32_t>(LabelWidth(text)), static_cast<std::uint32_t>(kLabelHeight));
    std::memset(canvas.Row(0), 0, canvas.ByteCount());
    DrawLabel(canvas, text, 0, 0);
    return {canvas.Row(0), canvas.Row(0) + canvas.ByteCount()};
}

TEST(LabelText, ShowsMinutesSecondsAndMilliseconds)
{
    EXPECT_EQ(LabelText(0), "0:00.000");
    EXPECT_EQ(LabelText(615'000'000), "1:01.500");
    EXPECT_EQ(LabelText(9'999), "0:00.000");
    EXPECT_EQ(LabelText(36'000'000'000), "60:00.000");
}

TEST(DrawLabel, EveryCharacterHasAShapeOfItsOwn)
{
    std::set<std::vector<std::uint8_t>> shapes;
    for (const char c : std::string_view("0123456789:. "))
        shapes.insert(Drawn(std::string_view(&c, 1)));
    EXPECT_EQ(shapes.size(), 13U);
}

TEST(DrawLabel, WhatLiesOutsideIsLeftOut)
{
    const auto drawn = [](std::string_view text, std::int32_t left, std::int32_t top)
    {
        Canvas canvas(12, 14);
        std::memset(canvas.Row(0), 0, canvas.ByteCount());
        DrawLabel(canvas, text, left, top);
        return std::vector<std::uint8_t>(canvas.Row(0), canvas.Row(0) + canvas.ByteCount());
    };
    EXPECT_EQ(drawn("1874", -12, 0), drawn("8", 0, 0)); // before and behind the canvas
    const std::vector<std::uint8_t> empty = drawn(" ", 0, 0);
    for (const std::int32_t far : {-1000, 1000})
    {
        EXPECT_EQ(drawn("8888", far, 0), empty);
        EXPECT_EQ(drawn("8888", 0, far), empty);
    }
    EXPECT_NE(drawn("8", 0, 7), empty);
    EXPECT_NE(drawn("8", 0, -7), empty);
}
} // namespace
} // namespace qmx::host
