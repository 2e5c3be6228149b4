#include "effects/Effects.h"
#include "tests/support/MediaFolder.h"
#include "tests/support/Picture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <utility>
#include <vector>

namespace qmx::effects
{
namespace
{
using Pixels = std::vector<std::uint32_t>;

constexpr std::uint32_t kFrom = 0xFF204060;
constexpr std::uint32_t kTo = 0xFFC08040;

/// Two pictures, and what an effect makes of them.
struct Scene
{
    Scene(std::uint32_t w, std::uint32_t h, std::uint32_t fromColor = kFrom, std::uint32_t toColor = kTo)
        : width(w), height(h), from(std::size_t{w} * h, fromColor), to(std::size_t{w} * h, toColor)
    {
    }
    void FillRandomly()
    {
        std::uint32_t seed = 7;
        for (Pixels* const pPixels : {&from, &to})
        {
            for (std::uint32_t& pixel : *pPixels)
            {
                pixel = seed = seed * 1664525U + 1013904223U;
                if (seed >> 31 != 0)
                    pixel |= 0xFF000000U; // half of them opaque
            }
        }
    }

    Pixels Apply(EffectType type, float progress, std::uint32_t before = 0xDEADBEEF) const
    {
        constexpr std::size_t kGuard = 64;
        Pixels output(from.size() + 2 * kGuard, before);
        const auto bytes = [](const Pixels& pixels) { return reinterpret_cast<const std::uint8_t*>(pixels.data()); };
        const EffectPictures pictures{reinterpret_cast<std::uint8_t*>(output.data() + kGuard), bytes(from), bytes(to),
                                      width, height};
        ApplyEffect(type, pictures, progress);
        for (std::size_t i = 0; i < kGuard; ++i)
        {
            EXPECT_EQ(output[i], before);
            EXPECT_EQ(output[output.size() - 1 - i], before);
        }
        return Pixels(output.begin() + kGuard, output.end() - kGuard);
    }
    /// Effects of pictures of one colour: which of the two shows at a place given in 0..1, roughly.
    std::uint32_t At(const Pixels& pixels, double x, double y) const
    {
        return pixels[static_cast<std::size_t>(y * height) * width + static_cast<std::size_t>(x * width)];
    }

    std::uint32_t width;
    std::uint32_t height;
    Pixels from;
    Pixels to;
};

class EveryEffect : public testing::TestWithParam<std::uint32_t>
{
protected:
    static EffectType Type() { return static_cast<EffectType>(GetParam()); }
    static constexpr std::pair<std::uint32_t, std::uint32_t> kSizes[] = {{1, 1}, {1, 9}, {9, 1}, {2, 2}, {67, 41}};
    static constexpr float kProgresses[] = {1e-6F, 0.01F, 0.25F, 0.5F, 0.75F, 0.99F, 0.999999F};
};
INSTANTIATE_TEST_SUITE_P(Types, EveryEffect, testing::Range(0U, kEffectCount + 2));

TEST_P(EveryEffect, BeginsWithTheFromAndEndsWithTheToPicture)
{
    for (const auto& [width, height] : kSizes)
    {
        Scene scene(width, height);
        scene.FillRandomly();
        for (const float progress : {0.0F, -1.0F, NAN, -INFINITY})
            EXPECT_EQ(scene.Apply(Type(), progress), scene.from);
        for (const float progress : {1.0F, 2.0F, INFINITY})
            EXPECT_EQ(scene.Apply(Type(), progress), scene.to);
    }
}

TEST_P(EveryEffect, WritesEveryPixelAndNothingElse)
{
    for (const auto& [width, height] : kSizes)
    {
        Scene scene(width, height);
        scene.FillRandomly();
        const Scene untouched = scene;
        for (const float progress : kProgresses)
            EXPECT_EQ(scene.Apply(Type(), progress, 0x00000000), scene.Apply(Type(), progress, 0xFFFFFFFF))
                << width << " x " << height << ", " << progress;
        EXPECT_EQ(scene.from, untouched.from);
        EXPECT_EQ(scene.to, untouched.to);
    }
}

TEST_P(EveryEffect, OpaquePicturesStayOpaqueAndTransparentOnesTransparent)
{
    const Scene opaque(67, 41);
    const Scene nothing(67, 41, 0, 0);
    const bool isFade = Type() == EffectType::FadeThroughBlack || Type() == EffectType::FadeThroughWhite;
    for (const float progress : kProgresses)
    {
        for (const std::uint32_t pixel : opaque.Apply(Type(), progress))
            ASSERT_EQ(pixel >> 24, 255U) << progress;
        if (!isFade) // its colour covers everything
        {
            EXPECT_EQ(nothing.Apply(Type(), progress), nothing.from) << progress;
        }
    }
}

TEST_P(EveryEffect, ChangesLittleNearItsEnds)
{
    // The mean difference from the picture at the end stays below a fifth of the whole.
    const Scene scene(96, 54, 0xFF000000, 0xFFFFFFFF);
    const auto mean = [&](const Pixels& pixels)
    {
        double sum = 0;
        for (const std::uint32_t pixel : pixels)
            sum += pixel & 0xFF;
        return sum / static_cast<double>(pixels.size()) / 255;
    };
    EXPECT_LT(mean(scene.Apply(Type(), 0.02F)), 0.2);
    EXPECT_GT(mean(scene.Apply(Type(), 0.98F)), 0.8);
}

TEST_P(EveryEffect, GivesTheSameOnSeveralThreads)
{
    Scene scene(67, 41);
    scene.FillRandomly();
    const Pixels alone = scene.Apply(Type(), 0.4F);
    Pixels together[4];
    std::vector<std::thread> threads;
    for (Pixels& pixels : together)
        threads.emplace_back([&] { pixels = scene.Apply(Type(), 0.4F); });
    for (std::thread& thread : threads)
        thread.join();
    for (const Pixels& pixels : together)
        EXPECT_EQ(pixels, alone);
}

TEST(Effects, ADissolveMixesEveryPixelAlike)
{
    const Scene scene(3, 2, 0xFF000000, 0xFFFFFFFF);
    for (const std::uint32_t pixel : scene.Apply(EffectType::Dissolve, 0.25F))
        EXPECT_EQ(pixel, 0xFF404040U); // 255 / 4, rounded
}

TEST(Effects, FadesAreTheColourInTheMiddle)
{
    const Scene scene(3, 2);
    for (const std::uint32_t pixel : scene.Apply(EffectType::FadeThroughBlack, 0.5F))
        EXPECT_EQ(pixel, 0xFF000000U);
    for (const std::uint32_t pixel : scene.Apply(EffectType::FadeThroughWhite, 0.5F))
        EXPECT_EQ(pixel, 0xFFFFFFFFU);
    EXPECT_EQ(scene.Apply(EffectType::FadeThroughBlack, 0.25F)[0], 0xFF102030U); // half of the from picture
}

TEST(Effects, EdgesRunTheWayTheirNamesSay)
{
    const Scene scene(200, 100);
    const std::pair<EffectType, std::pair<double, double>> cases[] = {
        {EffectType::WipeRight, {0.1, 0.5}}, {EffectType::WipeLeft, {0.9, 0.5}},  {EffectType::WipeDown, {0.5, 0.1}},
        {EffectType::WipeUp, {0.5, 0.9}},    {EffectType::PushRight, {0.1, 0.5}}, {EffectType::PushLeft, {0.9, 0.5}},
        {EffectType::PushDown, {0.5, 0.1}},  {EffectType::PushUp, {0.5, 0.9}},    {EffectType::SlideOver, {0.9, 0.5}},
        {EffectType::Iris, {0.5, 0.5}},      {EffectType::ClockWipe, {0.9, 0.5}}, {EffectType::PageTurn, {0.95, 0.5}}};
    for (const auto& [type, place] : cases)
    {
        const Pixels pixels = scene.Apply(type, 0.5F);
        const bool isIris = type == EffectType::Iris;
        EXPECT_EQ(scene.At(pixels, place.first, place.second), kTo) << static_cast<int>(type);
        EXPECT_EQ(scene.At(pixels, isIris ? 0.01 : 1 - place.first, isIris ? 0.01 : 1 - place.second), kFrom)
            << static_cast<int>(type);
    }
}

TEST(Effects, APushMovesBothPictures)
{
    Scene scene(4, 1);
    scene.from = {1, 2, 3, 4};
    scene.to = {5, 6, 7, 8};
    EXPECT_EQ(scene.Apply(EffectType::PushRight, 0.25F), (Pixels{8, 1, 2, 3}));
    EXPECT_EQ(scene.Apply(EffectType::PushLeft, 0.25F), (Pixels{2, 3, 4, 5}));
    std::swap(scene.width, scene.height);
    EXPECT_EQ(scene.Apply(EffectType::PushDown, 0.75F), (Pixels{6, 7, 8, 1}));
    EXPECT_EQ(scene.Apply(EffectType::PushUp, 0.75F), (Pixels{4, 5, 6, 7}));
}

TEST(Effects, TheClockRunsRoundTheMiddle)
{
    const Scene scene(100, 100);
    const std::pair<double, double> quarters[] = {{0.7, 0.3}, {0.7, 0.7}, {0.3, 0.7}, {0.3, 0.3}};
    for (int done = 0; done < 4; ++done)
    {
        const Pixels pixels = scene.Apply(EffectType::ClockWipe, static_cast<float>(done) * 0.25F + 0.001F);
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(scene.At(pixels, quarters[i].first, quarters[i].second), i < done ? kTo : kFrom) << done << i;
    }
}

TEST(Effects, AnIrisIsRound)
{
    const Scene scene(401, 401);
    const Pixels pixels = scene.Apply(EffectType::Iris, 0.4F);
    // Every pixel lies where the distance from the middle says; the edge is a sixteenth of the way to a corner wide.
    const double corner = std::hypot(200.5, 200.5);
    for (std::uint32_t y = 0; y < 401; ++y)
    {
        for (std::uint32_t x = 0; x < 401; ++x)
        {
            const double distance = std::hypot(x - 200.0, y - 200.0) / corner;
            const std::uint32_t pixel = pixels[std::size_t{y} * 401 + x];
            const bool isInside = distance < 0.4 * (1 + 1.0 / 16) - 1.0 / 16 - 0.001;
            const bool isOutside = distance > 0.4 * (1 + 1.0 / 16) + 0.001;
            if (isInside || isOutside)
            {
                ASSERT_EQ(pixel, isInside ? kTo : kFrom) << x << ", " << y;
            }
        }
    }
}

TEST(Effects, AZoomOfOneColourIsThatColour)
{
    const Scene scene(50, 30, kFrom, kFrom);
    for (const float progress : {0.1F, 0.5F, 0.9F})
        EXPECT_EQ(scene.Apply(EffectType::ZoomCross, progress), scene.from);
}

/// One row an effect, at five moments; for the eye, and written only where QMX_TEST_OUTPUT asks for pictures.
TEST(Effects, CanBeLookedAt)
{
    const char* const pFolder = std::getenv("QMX_TEST_OUTPUT");
    if (pFolder == nullptr || *pFolder == '\0')
        GTEST_SKIP() << "no QMX_TEST_OUTPUT: no picture is wanted";
    constexpr std::uint32_t kWidth = 160;
    constexpr std::uint32_t kHeight = 90;
    constexpr std::uint32_t kGap = 6;
    constexpr float kMoments[] = {0, 0.25F, 0.5F, 0.75F, 1};
    Scene scene(kWidth, kHeight);
    for (std::uint32_t i = 0; i < kWidth * kHeight; ++i)
    {
        const std::uint32_t x = i % kWidth;
        const std::uint32_t y = i / kWidth;
        const bool square = (x / 20 + y / 15) % 2 == 0;
        scene.from[i] = 0xFF000000U | ((square ? 0x305080U : 0x203040U) + (x << 16));
        const double ring = std::hypot(x - 80.0, y - 45.0);
        scene.to[i] = 0xFF000000U | ((static_cast<int>(ring / 12) % 2 == 0 ? 0xF0B040U : 0xA04020U) + y);
    }
    test_support::Picture sheet{5 * (kWidth + kGap) + kGap, kEffectCount * (kHeight + kGap) + kGap, {}};
    sheet.bgra.assign(std::size_t{sheet.width} * sheet.height * 4, 255);
    for (std::uint32_t effect = 0; effect < kEffectCount; ++effect)
    {
        for (std::uint32_t moment = 0; moment < 5; ++moment)
        {
            const Pixels pixels = scene.Apply(static_cast<EffectType>(effect), kMoments[moment]);
            for (std::uint32_t y = 0; y < kHeight; ++y)
            {
                const std::size_t row = std::size_t{effect} * (kHeight + kGap) + kGap + y;
                const std::size_t column = std::size_t{moment} * (kWidth + kGap) + kGap;
                std::memcpy(&sheet.bgra[(row * sheet.width + column) * 4], &pixels[std::size_t{y} * kWidth],
                            kWidth * 4);
            }
        }
    }
    EXPECT_TRUE(test_support::WritePng(std::filesystem::path(pFolder) / "effects.png", sheet));
}
} // namespace
} // namespace qmx::effects
