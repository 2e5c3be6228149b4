#include "host/output/PngFile.h"

#include "host/HostError.h"
#include "tests/support/Picture.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstring>

namespace qmx::host
{
namespace
{
TEST(WritePng, EveryPixelComesBack)
{
    const test_support::TemporaryFolder folder;
    const std::filesystem::path file = folder.Path() / "a.png";
    Canvas canvas(67, 5);
    for (std::uint32_t y = 0; y < 5; ++y)
    {
        for (std::uint32_t x = 0; x < 67; ++x)
        {
            const std::uint32_t pixel = 0xFF000000U | x << 16 | (x * y) << 8 | y;
            std::memcpy(canvas.Row(y) + std::size_t{x} * 4, &pixel, 4);
        }
    }
    WritePng(canvas, file);
    const std::optional<test_support::Picture> picture = test_support::ReadPng(file);
    ASSERT_TRUE(picture);
    ASSERT_EQ(picture->width, 67U);
    ASSERT_EQ(picture->height, 5U);
    for (std::uint32_t y = 0; y < 5; ++y)
    {
        for (std::uint32_t x = 0; x < 67; ++x)
        {
            const std::uint32_t pixel = 0xFF000000U | x << 16 | (x * y) << 8 | y;
            ASSERT_EQ(std::memcmp(picture->At(x, y), &pixel, 4), 0) << x << ", " << y;
        }
    }
    EXPECT_EQ(folder.FileCount(), 1U);
}

TEST(WritePng, AFolderThatIsNotThereIsAnOutputError)
{
    const test_support::TemporaryFolder folder;
    const Canvas canvas(2, 2);
    try
    {
        WritePng(canvas, folder.Path() / "none" / "a.png");
        FAIL();
    }
    catch (const HostError& error)
    {
        EXPECT_EQ(error.Code(), ExitCode::Output);
    }
}
} // namespace
} // namespace qmx::host
