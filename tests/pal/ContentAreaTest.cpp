#include "pal/graphics/ContentArea.h"

#include "tests/pal/DrawingFixture.h"

#include <random>

namespace
{
using pal::ContentArea;
using pal::PixelRect;

std::size_t CountOf(const ContentArea& area)
{
    return static_cast<std::size_t>(area.end() - area.begin());
}

TEST(ContentArea, KeepsRectanglesApartThatLieApart)
{
    ContentArea area;
    area.Add(PixelRect{0, 0, 10, 10});
    area.Add(PixelRect{50, 50, 60, 60});
    area.Add(PixelRect{5, 5, 5, 90}); // without pixels
    EXPECT_EQ(CountOf(area), 2U);
}

TEST(ContentArea, JoinsRectanglesThatOverlapOrTouch)
{
    ContentArea area;
    area.Add(PixelRect{0, 0, 100, 10});
    area.Add(PixelRect{8, 0, 108, 10});
    ASSERT_EQ(CountOf(area), 1U);
    EXPECT_EQ(area.begin()->right, 108);
    area.Add(PixelRect{0, 20, 108, 30});
    EXPECT_EQ(CountOf(area), 2U);
    area.Add(PixelRect{0, 10, 108, 20}); // closes the gap
    ASSERT_EQ(CountOf(area), 1U);
    EXPECT_EQ(area.begin()->bottom, 30);
}

TEST(ContentArea, HoldsEveryRectangleHoweverManyThereAre)
{
    constexpr unsigned kSeed = 20240229;
    std::mt19937 random(kSeed);
    for (int round = 0; round < 200; ++round)
    {
        ContentArea area;
        std::vector<PixelRect> all;
        for (int i = 0; i < 40; ++i)
        {
            const int x = static_cast<int>(random() % 500);
            const int y = static_cast<int>(random() % 500);
            all.push_back({x, y, x + static_cast<int>(random() % 60), y + static_cast<int>(random() % 60)});
            area.Add(all.back());
            ASSERT_LE(CountOf(area), ContentArea::kMaxRects) << "seed " << kSeed;
            for (const PixelRect& rect : all)
            {
                const bool held =
                    rect.IsEmpty() || std::any_of(area.begin(), area.end(),
                                                  [&](const PixelRect& outer)
                                                  {
                                                      return outer.left <= rect.left && outer.top <= rect.top &&
                                                             outer.right >= rect.right && outer.bottom >= rect.bottom;
                                                  });
                ASSERT_TRUE(held) << "seed " << kSeed << ", round " << round;
            }
        }
    }
}

class ManyRectangles : public pal_test::DrawingTest
{
};

TEST_F(ManyRectangles, LeaveNothingBehindWhenTheyAreClearedAndCopied)
{
    // What is on the staging texture is always what a fresh pair of textures would have.
    constexpr unsigned kSeed = 77;
    std::mt19937 random(kSeed);
    MakeTarget(64, 64);
    for (int round = 0; round < 60; ++round)
    {
        std::vector<std::uint8_t> expected(64 * 64 * 4, 0);
        pTarget->BeginDraw();
        pTarget->Clear(nullptr);
        const ComPtr<ID2D1SolidColorBrush> pBrush = Brush(1, 1, 1, 1);
        for (unsigned i = 0; i < random() % 14; ++i)
        {
            const int x = static_cast<int>(random() % 60);
            const int y = static_cast<int>(random() % 60);
            const D2D1_RECT_F rect{static_cast<float>(x), static_cast<float>(y), static_cast<float>(x + 4),
                                   static_cast<float>(y + 4)};
            pTarget->FillRectangle(&rect, pBrush.Get());
            for (int row = y; row < y + 4; ++row)
                std::memset(expected.data() + (row * 64 + x) * 4, 0xFF, 16);
        }
        ASSERT_EQ(pTarget->EndDraw(), S_OK);
        ASSERT_EQ(Read(), expected) << "seed " << kSeed << ", round " << round;
    }
}
} // namespace
