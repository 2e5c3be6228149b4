// Texts that are made, drawn and let go on several threads at once, as decoders do.
#include "tests/pal/DrawingFixture.h"

#include <thread>

namespace
{
class TextThreads : public pal_test::DrawingTest
{
public:
    void TestBody() override {}
    std::vector<std::uint8_t> DrawOne(int n)
    {
        if (!pTarget)
            MakeTarget(320, 120);
        const std::wstring text = L"Thread \u0645\u0631 标 😀 " + std::to_wstring(n);
        const ComPtr<IDWriteTextLayout> pLayout = Layout(text, n % 2 == 0 ? L"DejaVu Sans" : L"Open Sans", 30, 300);
        return Draw(pLayout, 5, 5, Brush(1, 1, 1, 1));
    }
};

TEST(TextOnSeveralThreads, ComesOutAsOnOne)
{
    constexpr int kTexts = 12;
    std::vector<std::vector<std::uint8_t>> expected;
    TextThreads alone;
    expected.reserve(kTexts);
    for (int n = 0; n < kTexts; ++n)
        expected.push_back(alone.DrawOne(n));
    std::vector<std::thread> threads;
    std::vector<int> same(4, 0);
    std::vector<TextThreads> drawers(same.size()); // made here: GoogleTest's fixtures touch its settings
    for (std::size_t t = 0; t < same.size(); ++t)
    {
        threads.emplace_back(
            [&, t]
            {
                TextThreads& own = drawers[t];
                for (int n = 0; n < kTexts; ++n)
                    same[t] += own.DrawOne((n + static_cast<int>(t)) % kTexts) ==
                               expected[(static_cast<std::size_t>(n) + t) % kTexts];
            });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(same, std::vector<int>(4, kTexts));
}

TEST(TextOnSeveralThreads, MayEndOnAnotherThanItBeganOn)
{
    ComPtr<IDWriteTextLayout> pLayout;
    std::thread maker(
        [&]
        {
            ComPtr<IDWriteFactory4> pText;
            ASSERT_EQ(DWriteCreateFactory(DWRITE_FACTORY_TYPE_SHARED, IID_IDWriteFactory4,
                                          reinterpret_cast<IUnknown**>(pText.Put())),
                      S_OK);
            ComPtr<IDWriteTextFormat> pFormat;
            ASSERT_EQ(pText->CreateTextFormat(L"DejaVu Sans", nullptr, DWRITE_FONT_WEIGHT_NORMAL,
                                              DWRITE_FONT_STYLE_NORMAL, DWRITE_FONT_STRETCH_NORMAL, 20, L"en-US",
                                              pFormat.Put()),
                      S_OK);
            ASSERT_EQ(pText->CreateTextLayout(L"text", 4, pFormat.Get(), 100, 100, pLayout.Put()), S_OK);
        });
    maker.join();
    ASSERT_TRUE(pLayout);
    DWRITE_TEXT_METRICS metrics{};
    EXPECT_EQ(pLayout->GetMetrics(&metrics), S_OK); // the fonts live as long as the layout does
    EXPECT_GT(metrics.width, 10);
}
} // namespace
