/// @file OutlineTest.cpp
/// Chords in place of curves.
#include "companions/swfrenderer/Outline.h"
#include "tests/companions/TestSeed.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace
{
swf::Point At(swf::Point a, swf::Point b, swf::Point c, double t)
{
    const double s = 1 - t;
    return {s * s * a.x + 2 * s * t * b.x + t * t * c.x, s * s * a.y + 2 * s * t * b.y + t * t * c.y};
}

double DistanceToSegment(swf::Point p, swf::Point a, swf::Point b)
{
    const double dx = b.x - a.x, dy = b.y - a.y, length2 = dx * dx + dy * dy;
    const double t = length2 > 0 ? std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / length2, 0.0, 1.0) : 0;
    return std::hypot(p.x - a.x - t * dx, p.y - a.y - t * dy);
}
} // namespace

TEST(CurveCuts, StayAsNearToTheCurveAsTheyShould)
{
    TestRandom random;
    const auto place = [&random] { return random.Between(0, 8'000) - 4'000.0; };
    for (int n = 0; n < 2'000; ++n)
    {
        const swf::Point a{place(), place()}, b{place(), place()}, c{place(), place()};
        const double wanted = random.Between(1, 40) / 2.0;
        std::vector<swf::Point> ends{a};
        swf::FlattenCurve(a, b, c, wanted, [&](swf::Point p) { ends.push_back(p); });
        ASSERT_EQ(ends.back(), c);
        for (int i = 0; i <= 400; ++i)
        {
            const swf::Point p = At(a, b, c, i / 400.0);
            double nearest = 1e9;
            for (std::size_t k = 0; k + 1 < ends.size(); ++k)
                nearest = std::min(nearest, DistanceToSegment(p, ends[k], ends[k + 1]));
            ASSERT_LE(nearest, wanted * 1.6) << ends.size() - 1 << " chords"; // 1 where the curve does not turn sharply
        }
        const double bend = std::hypot(a.x - 2 * b.x + c.x, a.y - 2 * b.y + c.y);
        EXPECT_LE(static_cast<double>(ends.size() - 1), std::ceil(std::sqrt(bend / (4 * wanted))) + 1)
            << "no more than of equal steps";
    }
}

TEST(CurveCuts, ReachTheTurningPointOfACurveOnALine)
{
    std::vector<swf::Point> ends;
    swf::FlattenCurve({0, 0}, {100, 0}, {0, 0}, 2, [&](swf::Point p) { ends.push_back(p); });
    ASSERT_EQ(ends.size(), 2U);
    EXPECT_EQ(ends[0], (swf::Point{50, 0}));
    ends.clear();
    swf::FlattenCurve({0, 0}, {50, 50}, {100, 100}, 2, [&](swf::Point p) { ends.push_back(p); });
    EXPECT_EQ(ends, std::vector<swf::Point>(1, {100, 100}));
    ends.clear();
    swf::FlattenCurve({5, 5}, {5, 5}, {5, 5}, 2, [&](swf::Point p) { ends.push_back(p); });
    EXPECT_EQ(ends.back(), (swf::Point{5, 5}));
}

TEST(CurveCuts, GetFinerWhereTheShapeIsDrawnLarger)
{
    EXPECT_EQ(swf::FlatnessAt(0.05), swf::kFlatness);
    EXPECT_EQ(swf::FlatnessAt(0.01), swf::kFlatness);
    EXPECT_DOUBLE_EQ(swf::FlatnessAt(0.5) * 0.5, swf::kFlatnessOnScreen);
}
