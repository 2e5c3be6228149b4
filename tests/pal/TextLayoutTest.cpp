#include "tests/pal/DrawingFixture.h"
#include "tests/support/FontReference.h"

#include <cmath>
#include <limits>
#include <ostream>

namespace
{
using test_support::FontName;
using test_support::HasFont;
using test_support::MeasuredText;
using test_support::MeasureText;

constexpr float kWide = 100'000;

class TextLayout : public pal_test::DrawingTest
{
protected:
    HRESULT TryFormat(const wchar_t* family, int weight, int style, int stretch, float size)
    {
        auto* pFormat = reinterpret_cast<IDWriteTextFormat*>(0x10);
        const HRESULT hr = pText->CreateTextFormat(family, nullptr, static_cast<DWRITE_FONT_WEIGHT>(weight),
                                                   static_cast<DWRITE_FONT_STYLE>(style),
                                                   static_cast<DWRITE_FONT_STRETCH>(stretch), size, L"en-US", &pFormat);
        EXPECT_EQ(SUCCEEDED(hr), pFormat != nullptr);
        if (pFormat != nullptr)
            pFormat->Release();
        return hr;
    }
};

struct Specimen
{
    const char* family;
    int weight;
    bool italic;
    const char* utf8;
    float size;
};
void PrintTo(const Specimen& specimen, std::ostream* pStream)
{
    *pStream << specimen.family << ' ' << specimen.weight << ", size " << specimen.size;
}

class TextLayoutAgainstHarfBuzz : public pal_test::DrawingTest, public testing::WithParamInterface<Specimen>
{
};

std::wstring Wide(const std::string& utf8)
{
    std::wstring wide;
    for (std::size_t i = 0; i < utf8.size();)
    {
        const auto lead = static_cast<unsigned char>(utf8[i]);
        const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        unsigned c = length == 1 ? lead : lead & (0xFFU >> (length + 1));
        for (std::size_t k = 1; k < length; ++k)
            c = c << 6 | (static_cast<unsigned char>(utf8[i + k]) & 0x3F);
        wide.push_back(static_cast<wchar_t>(c));
        i += length;
    }
    return wide;
}

TEST_P(TextLayoutAgainstHarfBuzz, IsAsWideAndHighWithinTwoPercent)
{
    const Specimen& specimen = GetParam();
    const FontName font{specimen.family, specimen.weight, specimen.italic};
    if (!HasFont(font))
        GTEST_SKIP() << specimen.family << " is not installed";
    const MeasuredText expected = MeasureText(font, specimen.utf8, specimen.size);
    ASSERT_GT(expected.width, 0);
    const DWRITE_TEXT_METRICS metrics = MetricsOf(
        Layout(Wide(specimen.utf8), Wide(specimen.family).c_str(), specimen.size, kWide, DWRITE_TEXT_ALIGNMENT_LEADING,
               specimen.weight, specimen.italic ? DWRITE_FONT_STYLE_ITALIC : DWRITE_FONT_STYLE_NORMAL));
    EXPECT_NEAR(metrics.width, expected.width, 0.02 * expected.width);
    EXPECT_NEAR(metrics.height, expected.Height(), 0.02 * expected.Height());
    EXPECT_EQ(metrics.lineCount, 1U);
    EXPECT_EQ(metrics.left, 0);
    EXPECT_EQ(metrics.top, 0);
    EXPECT_EQ(metrics.layoutWidth, kWide);
    EXPECT_EQ(metrics.layoutHeight, 1000);
}

INSTANTIATE_TEST_SUITE_P(
    Fonts, TextLayoutAgainstHarfBuzz,
    testing::Values(Specimen{"DejaVu Sans", 400, false, "Affluent waves AVATAR Tofu, 0123456789", 12},
                    Specimen{"DejaVu Sans", 400, false, "Affluent waves AVATAR Tofu, 0123456789", 270},
                    Specimen{"DejaVu Sans", 700, false, "Ctrl + Shift + Esc", 33.75F},
                    Specimen{"DejaVu Sans", 400, false, "مرحبا بالعالم", 60},
                    Specimen{"Open Sans", 300, false, "A light title", 48},
                    Specimen{"Open Sans", 400, true, "An italic title, for a change", 48},
                    Specimen{"Open Sans", 800, false, "HEAVY WEATHER", 90},
                    Specimen{"Open Sans", 400, false, "W", 7.5F},
                    Specimen{"WenQuanYi Micro Hei", 400, false, "标题文字，渲染", 54},
                    Specimen{"DejaVu Sans Mono", 400, false, "if (x < y) return;", 20}));

TEST_F(TextLayout, FormatsRefuseWhatTheyCannotBe)
{
    constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(TryFormat(L"DejaVu Sans", 400, 0, 5, 20), S_OK);
    EXPECT_EQ(TryFormat(L"", 1, 2, 1, 0.01F), S_OK);
    EXPECT_EQ(TryFormat(L"no such family", 999, 1, 9, 20), S_OK);
    EXPECT_EQ(TryFormat(nullptr, 400, 0, 5, 20), E_INVALIDARG);
    EXPECT_EQ(TryFormat(L"x", 0, 0, 5, 20), E_INVALIDARG);
    EXPECT_EQ(TryFormat(L"x", 1000, 0, 5, 20), E_INVALIDARG);
    EXPECT_EQ(TryFormat(L"x", 400, 3, 5, 20), E_INVALIDARG);
    EXPECT_EQ(TryFormat(L"x", 400, 0, 0, 20), E_INVALIDARG);
    EXPECT_EQ(TryFormat(L"x", 400, 0, 5, 0), E_INVALIDARG);
    EXPECT_EQ(TryFormat(L"x", 400, 0, 5, -1), E_INVALIDARG);
    EXPECT_EQ(TryFormat(L"x", 400, 0, 5, kNone), E_INVALIDARG);
    EXPECT_EQ(TryFormat(L"x", 400, 0, 5, 1e9F), E_INVALIDARG);
}

TEST_F(TextLayout, RefusesSizesAndTextsThatItCannotSet)
{
    ComPtr<IDWriteTextFormat> pFormat;
    ASSERT_EQ(pText->CreateTextFormat(L"DejaVu Sans", nullptr, DWRITE_FONT_WEIGHT_NORMAL, DWRITE_FONT_STYLE_NORMAL,
                                      DWRITE_FONT_STRETCH_NORMAL, 20, L"en-US", pFormat.Put()),
              S_OK);
    ComPtr<IDWriteTextLayout> p;
    EXPECT_EQ(pText->CreateTextLayout(L"a", 1, pFormat.Get(), -1, 10, p.Put()), E_INVALIDARG);
    EXPECT_EQ(pText->CreateTextLayout(L"a", 1, pFormat.Get(), 10, INFINITY, p.Put()), E_INVALIDARG);
    EXPECT_EQ(pText->CreateTextLayout(nullptr, 1, pFormat.Get(), 10, 10, p.Put()), E_INVALIDARG);
    EXPECT_EQ(pText->CreateTextLayout(L"a", 1, nullptr, 10, 10, p.Put()), E_INVALIDARG);
    const std::wstring tooLong(200'000, L'm');
    EXPECT_EQ(pText->CreateTextLayout(tooLong.data(), 200'000, pFormat.Get(), 10, 10, p.Put()), E_INVALIDARG);
    EXPECT_FALSE(p);
    EXPECT_EQ(pText->CreateTextLayout(nullptr, 0, pFormat.Get(), 0, 0, p.Put()), S_OK);
    EXPECT_EQ(pFormat->SetTextAlignment(static_cast<DWRITE_TEXT_ALIGNMENT>(4)), E_INVALIDARG);
    EXPECT_EQ(p->SetTextAlignment(static_cast<DWRITE_TEXT_ALIGNMENT>(-1)), E_INVALIDARG);
    EXPECT_EQ(p->GetMetrics(nullptr), E_POINTER);
}

TEST_F(TextLayout, WithoutTextIsOneLineHighAndNothingWide)
{
    const DWRITE_TEXT_METRICS empty = MetricsOf(Layout(L"", L"DejaVu Sans", 50, 400));
    const DWRITE_TEXT_METRICS full = MetricsOf(Layout(L"x", L"DejaVu Sans", 50, 400));
    EXPECT_EQ(empty.width, 0);
    EXPECT_NEAR(empty.height, full.height, 0.01);
    EXPECT_EQ(empty.lineCount, 1U);
}

TEST_F(TextLayout, BreaksAtTheTextsOwnLineEnds)
{
    const DWRITE_TEXT_METRICS one = MetricsOf(Layout(L"first", L"DejaVu Sans", 40, 4000));
    const DWRITE_TEXT_METRICS two = MetricsOf(Layout(L"first\r\nand second", L"DejaVu Sans", 40, 4000));
    EXPECT_EQ(two.lineCount, 2U);
    EXPECT_NEAR(two.height, 2 * one.height, 0.01);
    EXPECT_GT(two.width, one.width);
    EXPECT_EQ(MetricsOf(Layout(L"a\nb\n\nc", L"DejaVu Sans", 40, 4000)).lineCount, 4U);
}

TEST_F(TextLayout, WrapsBetweenWordsAtTheBoxsWidth)
{
    const float width = MetricsOf(Layout(L"one two", L"DejaVu Sans", 40, kWide)).width;
    EXPECT_EQ(MetricsOf(Layout(L"one two", L"DejaVu Sans", 40, width + 1)).lineCount, 1U);
    const DWRITE_TEXT_METRICS wrapped = MetricsOf(Layout(L"one two", L"DejaVu Sans", 40, width - 1));
    EXPECT_EQ(wrapped.lineCount, 2U);
    EXPECT_LT(wrapped.width, width / 1.5F);
}

TEST_F(TextLayout, BreaksAWordThatIsWiderThanTheBox)
{
    const DWRITE_TEXT_METRICS metrics = MetricsOf(Layout(L"unbreakable", L"DejaVu Sans", 40, 100));
    EXPECT_GT(metrics.lineCount, 2U);
    EXPECT_LE(metrics.width, 100);
}

TEST_F(TextLayout, LeftTellsWhereAlignedTextBegins)
{
    const float width = MetricsOf(Layout(L"Align", L"DejaVu Sans", 40, 1000)).width;
    const auto metrics = [&](DWRITE_TEXT_ALIGNMENT alignment)
    { return MetricsOf(Layout(L"Align", L"DejaVu Sans", 40, 1000, alignment)); };
    EXPECT_EQ(metrics(DWRITE_TEXT_ALIGNMENT_LEADING).left, 0);
    EXPECT_NEAR(metrics(DWRITE_TEXT_ALIGNMENT_TRAILING).left, 1000 - width, 0.01);
    EXPECT_NEAR(metrics(DWRITE_TEXT_ALIGNMENT_CENTER).left, (1000 - width) / 2, 0.01);
    EXPECT_EQ(metrics(DWRITE_TEXT_ALIGNMENT_JUSTIFIED).left, 0);
    EXPECT_NEAR(metrics(DWRITE_TEXT_ALIGNMENT_TRAILING).width, width, 0.01);
}

TEST_F(TextLayout, SpacesAtTheEndsOfLinesCountForTheFullWidthOnly)
{
    const float width = MetricsOf(Layout(L"Align", L"DejaVu Sans", 40, 1000)).width;
    const DWRITE_TEXT_METRICS spaced =
        MetricsOf(Layout(L"Align  ", L"DejaVu Sans", 40, 1000, DWRITE_TEXT_ALIGNMENT_TRAILING));
    EXPECT_NEAR(spaced.width, width, 0.01);
    EXPECT_GT(spaced.widthIncludingTrailingWhitespace, width + 20);
    EXPECT_NEAR(spaced.left, 1000 - width, 0.01);
    EXPECT_EQ(MetricsOf(Layout(L"   ", L"DejaVu Sans", 40, 1000)).width, 0);
}

TEST_F(TextLayout, JustifiedLinesFillTheBoxButTheLastDoesNot)
{
    const std::wstring text = L"a few words that take more than one line of this box and end in the middle";
    const DWRITE_TEXT_METRICS ragged = MetricsOf(Layout(text, L"DejaVu Sans", 20, 300));
    const DWRITE_TEXT_METRICS even = MetricsOf(Layout(text, L"DejaVu Sans", 20, 300, DWRITE_TEXT_ALIGNMENT_JUSTIFIED));
    EXPECT_EQ(even.lineCount, ragged.lineCount);
    EXPECT_NEAR(even.width, 300, 1);
    EXPECT_LT(MetricsOf(Layout(L"end", L"DejaVu Sans", 20, 300, DWRITE_TEXT_ALIGNMENT_JUSTIFIED)).width, 100);
}

TEST_F(TextLayout, AlignmentCanBeChangedAfterwards)
{
    const ComPtr<IDWriteTextLayout> p = Layout(L"Align", L"DejaVu Sans", 40, 1000);
    EXPECT_EQ(MetricsOf(p).left, 0);
    EXPECT_EQ(p->SetTextAlignment(DWRITE_TEXT_ALIGNMENT_TRAILING), S_OK);
    EXPECT_GT(MetricsOf(p).left, 800);
}

TEST_F(TextLayout, TextsOfUnitsThatAreNoCharactersAreSet)
{
    std::wstring text = L"a";
    for (const std::uint32_t c : {0U, 0xD800U, 0xDFFFU, 0x110000U, 0xFFFFFFFFU, 0x80000000U})
        text.push_back(static_cast<wchar_t>(c));
    const ComPtr<IDWriteTextLayout> p = Layout(text, L"DejaVu Sans", 40, 1000);
    EXPECT_GT(MetricsOf(p).width, 100);
    EXPECT_EQ(p->SetUnderline(TRUE, {3, 100}), S_OK);
    EXPECT_EQ(p->SetUnderline(TRUE, {0xFFFFFFFFU, 0xFFFFFFFFU}), S_OK);
}

TEST_F(TextLayout, WeightsDiffer)
{
    if (!HasFont({"Open Sans", 300}) || !HasFont({"Open Sans", 800}))
        GTEST_SKIP() << "Open Sans is not installed";
    const auto width = [&](int weight)
    { return MetricsOf(Layout(L"Weight", L"Open Sans", 100, kWide, DWRITE_TEXT_ALIGNMENT_LEADING, weight)).width; };
    EXPECT_LT(width(300), width(400));
    EXPECT_LT(width(400), width(700));
    EXPECT_LT(width(700), width(800));
}
} // namespace
