#include "tests/pal/DrawingFixture.h"
#include "tests/support/FontReference.h"

#include <cmath>

namespace
{
using test_support::FindInk;
using test_support::HasFont;
using test_support::InkBox;
using test_support::IsHalfThere;
using test_support::IsThere;
using test_support::IsWithinAPixel;
using test_support::MeasuredText;
using test_support::MeasureText;

constexpr int kWidth = 640;
constexpr int kHeight = 200;

class TextDrawing : public pal_test::DrawingTest
{
protected:
    TextDrawing()
    {
        MakeTarget(kWidth, kHeight);
        pWhite = Brush(1, 1, 1, 1);
    }
    void SetUp() override
    {
        if (!HasFont({"DejaVu Sans"}))
            GTEST_SKIP() << "DejaVu Sans is not installed";
    }
    static InkBox Ink(const std::vector<std::uint8_t>& pixels, const test_support::PixelTest& counts = IsHalfThere)
    {
        return FindInk(pixels.data(), std::size_t{kWidth} * 4, kWidth, kHeight, counts);
    }
    static MeasuredText Measure(std::string_view text, double size) { return MeasureText({"DejaVu Sans"}, text, size); }
    static std::uint64_t Sum(const std::vector<std::uint8_t>& pixels)
    {
        std::uint64_t sum = 0;
        for (std::size_t i = 3; i < pixels.size(); i += 4)
            sum += pixels[i];
        return sum;
    }

    ComPtr<ID2D1SolidColorBrush> pWhite;
};

TEST_F(TextDrawing, StandsWhereTheFontSaysWithinAPixel)
{
    const MeasuredText expected = Measure("Hillock", 60);
    const InkBox ink = Ink(Draw(Layout(L"Hillock", L"DejaVu Sans", 60, 600), 37.4F, 20.2F, pWhite));
    EXPECT_TRUE(IsWithinAPixel(ink.left, 37.4 + expected.inkLeft));
    EXPECT_TRUE(IsWithinAPixel(ink.right, 37.4 + expected.inkRight));
    EXPECT_TRUE(IsWithinAPixel(ink.top, 20.2 + expected.ascent + expected.inkTop));
    EXPECT_TRUE(IsWithinAPixel(ink.bottom, 20.2 + expected.ascent + expected.inkBottom));
}

TEST_F(TextDrawing, SecondLinesStandALineLower)
{
    const ComPtr<IDWriteTextLayout> p = Layout(L"\nHillock", L"DejaVu Sans", 60, 600);
    const MeasuredText expected = Measure("Hillock", 60);
    const InkBox ink = Ink(Draw(p, 10, 5, pWhite));
    EXPECT_TRUE(IsWithinAPixel(ink.top, 5 + expected.Height() + expected.ascent + expected.inkTop));
}

TEST_F(TextDrawing, AlignedTextEndsWhereItsBoxDoes)
{
    const MeasuredText expected = Measure("Hillock", 60);
    const ComPtr<IDWriteTextLayout> p = Layout(L"Hillock", L"DejaVu Sans", 60, 600, DWRITE_TEXT_ALIGNMENT_TRAILING);
    const InkBox ink = Ink(Draw(p, 12, 0, pWhite));
    EXPECT_TRUE(IsWithinAPixel(ink.right, 612 - (expected.width - expected.inkRight)));
}

TEST_F(TextDrawing, MovedTextIsTheSamePictureElsewhere)
{
    const ComPtr<IDWriteTextLayout> p = Layout(L"Kerning AV To", L"DejaVu Sans", 43, 600);
    const std::vector<std::uint8_t> first = Draw(p, 20, 30, pWhite);
    const std::vector<std::uint8_t> second = Draw(p, 27.3F, 41.6F, pWhite);
    const InkBox a = Ink(first, IsThere);
    const InkBox b = Ink(second, IsThere);
    ASSERT_EQ(a.Width(), b.Width());
    ASSERT_EQ(a.Height(), b.Height());
    for (int y = 0; y < a.Height(); ++y)
        ASSERT_EQ(std::memcmp(first.data() + ((a.top + y) * kWidth + a.left) * 4,
                              second.data() + ((b.top + y) * kWidth + b.left) * 4,
                              static_cast<std::size_t>(a.Width()) * 4),
                  0);
}

TEST_F(TextDrawing, HasTheBrushsColourAndOpacity)
{
    const ComPtr<ID2D1SolidColorBrush> pBrush = Brush(0x33 / 255.0F, 0x66 / 255.0F, 0x99 / 255.0F, 1);
    const ComPtr<IDWriteTextLayout> p = Layout(L"█", L"DejaVu Sans", 100, 600);
    std::vector<std::uint8_t> pixels = Draw(p, 20, 20, pBrush);
    const InkBox ink = Ink(pixels);
    const std::size_t middle =
        static_cast<std::size_t>((ink.top + ink.Height() / 2) * kWidth + ink.left + ink.Width() / 2) * 4;
    EXPECT_EQ(pixels[middle], 0x99);
    EXPECT_EQ(pixels[middle + 1], 0x66);
    EXPECT_EQ(pixels[middle + 2], 0x33);
    EXPECT_EQ(pixels[middle + 3], 0xFF);
    pBrush->SetOpacity(0.5F);
    pixels = Draw(p, 20, 20, pBrush);
    EXPECT_NEAR(pixels[middle], 0x99 / 2.0, 1);
    EXPECT_NEAR(pixels[middle + 3], 128, 1);
    // The same layout with another brush.
    pixels = Draw(p, 20, 20, Brush(1, 0, 0, 1));
    EXPECT_EQ(pixels[middle], 0);
    EXPECT_EQ(pixels[middle + 2], 0xFF);
}

TEST_F(TextDrawing, OneLayoutInManyColoursHasEachOfThem)
{
    const ComPtr<IDWriteTextLayout> p = Layout(L"█", L"DejaVu Sans", 30, 600);
    // More colours than a layout keeps pictures, twice over.
    pTarget->BeginDraw();
    pTarget->Clear(nullptr);
    for (int i = 0; i < 14; ++i)
    {
        const auto level = static_cast<float>(i % 7 + 1) / 8;
        pTarget->DrawTextLayout({static_cast<float>(40 * i), 20}, p.Get(), Brush(level, 1 - level, 0, 1).Get(),
                                D2D1_DRAW_TEXT_OPTIONS_NONE);
    }
    ASSERT_EQ(pTarget->EndDraw(), S_OK);
    const std::vector<std::uint8_t> pixels = Read();
    for (int i = 0; i < 14; ++i)
    {
        const std::uint8_t* const pPixel = pixels.data() + static_cast<std::ptrdiff_t>(40 * kWidth + 40 * i + 10) * 4;
        EXPECT_NEAR(pPixel[2], 255.0 * (i % 7 + 1) / 8, 1) << i;
        EXPECT_NEAR(pPixel[1], 255.0 * (7 - i % 7) / 8, 1) << i;
    }
}

TEST_F(TextDrawing, UnderlinesTheRangeThatIsAskedFor)
{
    const ComPtr<IDWriteTextLayout> p = Layout(L"HHHH", L"DejaVu Sans", 60, 600);
    const InkBox plain = Ink(Draw(p, 20, 20, pWhite));
    ASSERT_EQ(p->SetUnderline(TRUE, {0, 4}), S_OK);
    const InkBox whole = Ink(Draw(p, 20, 20, pWhite));
    EXPECT_GT(whole.bottom, plain.bottom + 3);
    EXPECT_LE(whole.left, plain.left);
    const MeasuredText expected = Measure("HHHH", 60);
    EXPECT_TRUE(IsWithinAPixel(whole.left, 20));
    EXPECT_TRUE(IsWithinAPixel(whole.right, 20 + expected.width));
    EXPECT_EQ(whole.top, plain.top);
    // Only the second half: the line begins in the middle.
    ASSERT_EQ(p->SetUnderline(FALSE, {0, 2}), S_OK);
    const std::vector<std::uint8_t> pixels = Draw(p, 20, 20, pWhite);
    const InkBox line = FindInk(pixels.data() + static_cast<std::size_t>(plain.bottom + 1) * kWidth * 4,
                                std::size_t{kWidth} * 4, kWidth, kHeight - plain.bottom - 1, IsHalfThere);
    EXPECT_TRUE(IsWithinAPixel(line.left, 20 + expected.width / 2));
    EXPECT_EQ(p->SetUnderline(FALSE, {0, 4}), S_OK);
    EXPECT_EQ(Ink(Draw(p, 20, 20, pWhite)), plain);
}

TEST_F(TextDrawing, EmojiAreInColourAndFadeAsAWhole)
{
    if (!HasFont({"Noto Color Emoji"}))
        GTEST_SKIP() << "Noto Color Emoji is not installed";
    const ComPtr<IDWriteTextLayout> p = Layout(L"Hi 😀", L"DejaVu Sans", 80, 600);
    const auto isYellow = [](const std::uint8_t* pPixel)
    { return pPixel[2] > 180 && pPixel[1] > 130 && pPixel[0] < 90; };
    const std::vector<std::uint8_t> pixels = Draw(p, 20, 20, Brush(0, 0, 1, 1));
    const InkBox face = Ink(pixels, isYellow);
    EXPECT_NEAR(face.Width(), 90, 25);
    EXPECT_NEAR(face.Height(), face.Width(), 8);
    const InkBox letters = Ink(pixels, [](const std::uint8_t* pPixel) { return pPixel[0] > 200 && pPixel[2] < 30; });
    EXPECT_FALSE(letters.IsEmpty());
    EXPECT_LE(letters.right, face.left + 2);
    EXPECT_NEAR(static_cast<double>(Sum(Draw(p, 20, 20, Brush(0, 0, 1, 0.5F)))), static_cast<double>(Sum(pixels)) / 2,
                static_cast<double>(Sum(pixels)) / 200);
}

TEST_F(TextDrawing, RightToLeftTextRunsFromTheRightInsideALeftToRightLine)
{
    // "Ba" and three Hebrew letters: alef is the rightmost of them, lamed with its tall neck the leftmost.
    const ComPtr<IDWriteTextLayout> p = Layout(L"Ba \u05D0\u05D0\u05DC", L"DejaVu Sans", 60, 600);
    const std::vector<std::uint8_t> pixels = Draw(p, 20, 20, pWhite);
    const double latin = Measure("Ba ", 60).width;
    const InkBox all = Ink(pixels);
    // Rows above the other letters' tops belong to the lamed and to the capital.
    const std::size_t rows = static_cast<std::size_t>(all.top + 3);
    const auto isRightHalf = [&](int from)
    {
        return FindInk(pixels.data() + static_cast<std::size_t>(from) * 4, std::size_t{kWidth} * 4, kWidth - from,
                       static_cast<int>(rows), IsHalfThere);
    };
    const int start = static_cast<int>(20 + latin);
    const InkBox neck = isRightHalf(start);
    ASSERT_FALSE(neck.IsEmpty());
    EXPECT_LT(neck.left + start, start + static_cast<int>(Measure("\u05DC", 60).width));
}

TEST_F(TextDrawing, ArabicLettersJoin)
{
    // Joined letters are one piece, so the word is narrower than its letters by themselves.
    const double joined = MetricsOf(Layout(L"\u0645\u0631\u062D\u0628\u0627", L"DejaVu Sans", 60, 600)).width;
    double apart = 0;
    for (const wchar_t c : {L'\u0645', L'\u0631', L'\u062D', L'\u0628', L'\u0627'})
        apart += MetricsOf(Layout(std::wstring(1, c), L"DejaVu Sans", 60, 600)).width;
    EXPECT_LT(joined, apart * 0.9);
}

TEST_F(TextDrawing, CharactersThatTheFontLacksComeFromAnother)
{
    if (!HasFont({"WenQuanYi Micro Hei"}))
        GTEST_SKIP() << "WenQuanYi Micro Hei is not installed";
    const InkBox ink = Ink(Draw(Layout(L"标题", L"DejaVu Sans", 100, 600), 20, 20, pWhite));
    EXPECT_NEAR(ink.Width(), 200, 20); // two full squares
    const InkBox own = Ink(Draw(Layout(L"标题", L"WenQuanYi Micro Hei", 100, 600), 20, 20, pWhite));
    EXPECT_NEAR(ink.Width(), own.Width(), 1);
}

TEST_F(TextDrawing, TextOutsideIsCutOffAndFarOutsideNothing)
{
    const ComPtr<IDWriteTextLayout> p = Layout(L"██████", L"DejaVu Sans", 100, 2000);
    const InkBox ink = Ink(Draw(p, -150, 120, pWhite));
    EXPECT_EQ(ink.left, 0);
    EXPECT_EQ(ink.bottom, kHeight);
    for (const float far : {-5000.0F, 5000.0F, 1e9F, -1e30F, INFINITY, NAN})
    {
        EXPECT_TRUE(Ink(Draw(p, far, 10, pWhite), IsThere).IsEmpty()) << far;
        EXPECT_TRUE(Ink(Draw(p, 10, far, pWhite), IsThere).IsEmpty()) << far;
    }
}

TEST_F(TextDrawing, TextThatIsTooLargeToKeepIsDrawnAllTheSame)
{
    // The letter's stem alone is wider than the target.
    const ComPtr<IDWriteTextLayout> p = Layout(L"I", L"DejaVu Sans", 12'000, 30'000);
    const MeasuredText expected = Measure("I", 12'000);
    ASSERT_GT(expected.inkRight - expected.inkLeft, kWidth);
    const auto x = static_cast<float>(300 - expected.inkLeft);
    const std::vector<std::uint8_t> pixels = Draw(p, x, -3000, Brush(1, 1, 1, 0.5F));
    const InkBox ink = Ink(pixels, IsThere);
    EXPECT_TRUE(IsWithinAPixel(ink.left, 300));
    EXPECT_EQ(ink.right, kWidth);
    EXPECT_EQ(ink.bottom, kHeight);
    EXPECT_NEAR(pixels[(100 * kWidth + 400) * 4 + 3], 128, 1);
}

TEST_F(TextDrawing, ItalicsLean)
{
    const auto lean = [&](DWRITE_FONT_STYLE style)
    {
        const std::vector<std::uint8_t> pixels =
            Draw(Layout(L"I", L"DejaVu Sans", 150, 600, DWRITE_TEXT_ALIGNMENT_LEADING, 400, style), 50, 0, pWhite);
        const InkBox all = Ink(pixels);
        const auto row = [&](int y)
        {
            return FindInk(pixels.data() + static_cast<std::size_t>(y) * kWidth * 4, std::size_t{kWidth} * 4, kWidth, 1,
                           IsHalfThere);
        };
        return row(all.top + 2).left - row(all.bottom - 3).left;
    };
    EXPECT_EQ(lean(DWRITE_FONT_STYLE_NORMAL), 0);
    EXPECT_GT(lean(DWRITE_FONT_STYLE_ITALIC), 10);
}
} // namespace
