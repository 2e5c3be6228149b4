#include "bench/PairedFigures.h"
#include "bench/RawText.h"
#include "engine/decoders/still/KeystrokeDecoder.h"
#include "engine/decoders/still/TitleDecoder.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace
{
using qmx::bench::RawText;
using qmx::bench::RunPaired;

constexpr std::uint32_t kWidth = 1920;
constexpr std::uint32_t kHeight = 1080;
constexpr int kFrames = 60;
constexpr std::uint64_t kFrameTime = 333'333;    // 100 ns
constexpr std::uint64_t kFirstTime = 60'000'000; // the texts cross the picture around the middle of their pass
constexpr double kScale = kHeight / 288.0;       // pixels for one of the reference height
constexpr const char* kFamily = "DejaVu Sans";

template <class T> RefPtr<T> MakeDecoder()
{
    RefPtr<T> decoder = RefPtr<T>::Adopt(new T);
    tagDecProp prop(std::wstring(), 0);
    prop.width = kWidth;
    prop.height = kHeight;
    decoder->Initialize(prop);
    return decoder;
}

/// Sum of all alphas: pictures of the same texts in the same places differ in their smoothing only.
double AlphaOf(const std::uint8_t* pPixels)
{
    double sum = 0;
    for (std::size_t i = 3; i < std::size_t{kWidth} * kHeight * 4; i += 4)
        sum += pPixels[i];
    return sum;
}

bool LooksAlike(ISampleBuffer* pFrame, const std::vector<std::uint8_t>& raw)
{
    std::uint8_t* pPixels = nullptr;
    if (pFrame == nullptr || !pFrame->GetBuffer(&pPixels, nullptr))
        return false;
    const double ours = AlphaOf(pPixels);
    const double theirs = AlphaOf(raw.data());
    return theirs > 0 && std::abs(ours - theirs) < 0.02 * theirs;
}

// ---- titles ------------------------------------------------------------------------------------------------------

struct Text
{
    const char* pText;
    const wchar_t* pWide;
    float size;
    bool bold;
    std::uint32_t color;
    float opacity;
    double x, y;
    std::uint32_t animation;
};
constexpr Text kTexts[] = {
    {"A headline that crosses", L"A headline that crosses", 32, true, 0xFFD166, 1, 0.2, 0.1, 1},
    {"a second line below it, going the other way", L"a second line below it, going the other way", 18, false, 0xFFFFFF,
     0.8F, 0.25, 0.4, 3},
    {"and credits that rise, 2001 to 2024", L"and credits that rise, 2001 to 2024", 14, false, 0x8ECAE6, 1, 0.4, 0.6,
     4},
};

/// 60 frames of three texts, beside the same by Pango and Cairo. @param moving  otherwise nothing changes, and the raw
/// loop only copies what it has drawn once
void BM_Titles(benchmark::State& state, bool moving)
{
    std::vector<tagQMXTitleTextInfo> items(std::size(kTexts));
    std::vector<tagQMXTitleTextInfo*> pointers;
    RawText raw(kWidth, kHeight);
    for (std::size_t i = 0; i < items.size(); ++i)
    {
        const Text& text = kTexts[i];
        tagQMXTitleTextInfo& item = items[i];
        item.text = text.pWide;
        item.textLength = static_cast<std::uint32_t>(item.text.size());
        item.fontName = L"DejaVu Sans";
        item.fontSize = text.size;
        item.fontWeight = text.bold ? 700 : 400;
        item.color = text.color;
        item.opacity = text.opacity;
        item.x = text.x;
        item.y = text.y;
        item.animation = moving ? text.animation : 0;
        pointers.push_back(&item);
        raw.AddLayout(text.pText, kFamily, text.size * kScale, text.bold);
    }
    const RefPtr<CTitleDecoder> decoder = MakeDecoder<CTitleDecoder>();
    decoder->InitializeTitleText(pointers, 0);
    const auto drawRaw = [&](std::uint64_t time)
    {
        raw.Clear();
        const double k = moving ? 2 * (static_cast<double>(time) / 150'000'000.0 - 0.5) : 0;
        for (std::size_t i = 0; i < std::size(kTexts); ++i)
        {
            const Text& text = kTexts[i];
            const double dx = text.animation == 1 ? k : text.animation == 3 ? -k : 0;
            const double dy = text.animation == 4 ? -k : 0;
            raw.Draw(i, kWidth * (text.x + dx), kHeight * (text.y + dy), text.color, text.opacity);
        }
    };
    bool flag = false;
    drawRaw(kFirstTime);
    if (!LooksAlike(SampleBufferPtr::Adopt(decoder->GetClipVideoFrame(kFirstTime, flag)).Get(), raw.Copy()))
        return state.SkipWithError("the pictures differ");
    RunPaired(
        state,
        [&]
        {
            for (std::uint64_t n = 0; n < kFrames; ++n)
                if (!SampleBufferPtr::Adopt(decoder->GetClipVideoFrame(kFirstTime + n * kFrameTime, flag)))
                    return 0;
            return kFrames;
        },
        [&]
        {
            for (std::uint64_t n = 0; n < kFrames; ++n)
            {
                if (moving)
                    drawRaw(kFirstTime + n * kFrameTime);
                benchmark::DoNotOptimize(raw.Copy().data());
            }
            return kFrames;
        });
}
BENCHMARK_CAPTURE(BM_Titles, moving, true)->UseManualTime()->Iterations(9)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Titles, still, false)->UseManualTime()->Iterations(9)->Unit(benchmark::kMillisecond);

// ---- keystrokes --------------------------------------------------------------------------------------------------

constexpr const char* kKeys[] = {"Ctrl", "Shift", "Delete", "A", "Ctrl + V"};
constexpr float kKeySize = 14;

/// 60 frames of five labels. @param changing  with every frame the newest label comes or goes, four others stay
void BM_Keystrokes(benchmark::State& state, bool changing)
{
    std::vector<tagQMXKeystrokeInfo> items(std::size(kKeys));
    std::vector<tagQMXKeystrokeInfo*> pointers;
    RawText raw(kWidth, kHeight);
    for (std::size_t i = 0; i < items.size(); ++i)
    {
        const std::string text = kKeys[i];
        items[i].text.assign(text.begin(), text.end());
        items[i].startTime = i * 1'000'000;
        items[i].fontName = L"DejaVu Sans";
        items[i].fontSize = kKeySize;
        items[i].backColor = 0x3A3F58;
        items[i].backAlpha = 0.8F;
        pointers.push_back(&items[i]);
        raw.AddLayout(text, kFamily, kKeySize * kScale, false);
    }
    const RefPtr<CKeystrokeDecoder> decoder = MakeDecoder<CKeystrokeDecoder>();
    decoder->InitializeKeystrokeText(pointers, 0);
    decoder->InitializeLeftAndTopAndWidth(0.05F, 0.8F, 0.9F);
    const auto drawRaw = [&](std::size_t labels)
    {
        raw.Clear();
        double x = 0.05 * kWidth;
        const double y = 0.8 * kHeight;
        for (std::size_t i = 0; i < labels; ++i)
        {
            const double width = 20 * kScale + raw.WidthOf(i);
            raw.FillBox(x, y, width, 10 * kScale + raw.HeightOf(i), 0x3A3F58, 0.8);
            raw.Draw(i, x + 10 * kScale, y + 5 * kScale, 0xFFFFFF, 1);
            x += width + std::floor(20 * kScale);
        }
    };
    constexpr std::uint64_t kAll = 10'000'000; // all five have begun
    constexpr std::uint64_t kFour = 3'500'000; // the fifth has not
    bool flag = false;
    drawRaw(5);
    if (!LooksAlike(SampleBufferPtr::Adopt(decoder->GetClipVideoFrame(kAll, flag)).Get(), raw.Copy()))
        return state.SkipWithError("the pictures differ");
    RunPaired(
        state,
        [&]
        {
            for (int n = 0; n < kFrames; ++n)
            {
                const std::uint64_t time = changing && n % 2 == 0 ? kFour : kAll;
                if (!SampleBufferPtr::Adopt(decoder->GetClipVideoFrame(time, flag)))
                    return 0;
            }
            return kFrames;
        },
        [&]
        {
            for (int n = 0; n < kFrames; ++n)
            {
                if (changing)
                    drawRaw(n % 2 == 0 ? 4 : 5);
                benchmark::DoNotOptimize(raw.Copy().data());
            }
            return kFrames;
        });
}
BENCHMARK_CAPTURE(BM_Keystrokes, changing, true)->UseManualTime()->Iterations(9)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Keystrokes, still, false)->UseManualTime()->Iterations(9)->Unit(benchmark::kMillisecond);
} // namespace
