/// Kernels of the companion libraries, each beside the raw library loop that is its limit. One core, 1080p.
#include "companions/pixelutility/kernels/YuvToBgra.h"

#include <benchmark/benchmark.h>
#include <libyuv.h>

#include <cstdint>
#include <vector>

namespace
{
using qmx::kernels::YuvMatrix;
using qmx::kernels::YuvPicture;

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr std::ptrdiff_t kStride = std::ptrdiff_t{kWidth} * 4;
constexpr std::size_t kPixels = std::size_t{kWidth} * kHeight;

enum class YuvKind
{
    I420,
    Nv12,
    I444,
    I420Words, ///< 10 bits in the low bits of 16
    P010
};

/// A 1080p picture of smooth ramps, with the sizes that a decoder's frames have.
class YuvFixture
{
public:
    explicit YuvFixture(YuvKind kind) : m_bytes(kPixels * 6 + 64), m_target(kPixels * 4)
    {
        const bool words = kind == YuvKind::I420Words || kind == YuvKind::P010;
        const std::size_t cbSample = words ? 2 : 1;
        for (std::size_t i = 0; i < m_bytes.size(); ++i)
        {
            // Words of 10 bits keep their upper byte below 4; in P010 the same byte is simply a level.
            const std::size_t level = i * 7 / 5 + i / kWidth;
            m_bytes[i] = static_cast<std::uint8_t>(kind == YuvKind::I420Words && i % 2 == 1 ? level % 4 : level);
        }
        const bool halved = kind != YuvKind::I444;
        m_picture.interleavedChroma = kind == YuvKind::Nv12 || kind == YuvKind::P010;
        m_picture.pY = m_bytes.data();
        m_picture.pU = m_picture.pY + kPixels * cbSample;
        m_picture.pV = m_picture.pU + kPixels * cbSample / (halved ? 4 : 1);
        m_picture.strideY = static_cast<std::ptrdiff_t>(kWidth * cbSample);
        m_picture.strideU = halved && !m_picture.interleavedChroma ? m_picture.strideY / 2 : m_picture.strideY;
        m_picture.strideV = m_picture.strideU;
        m_picture.width = kWidth;
        m_picture.height = kHeight;
        m_picture.chromaShiftX = halved ? 1 : 0;
        m_picture.chromaShiftY = halved ? 1 : 0;
        m_picture.bitDepth = words ? 10 : 8;
        m_picture.highBits = kind == YuvKind::P010;
        m_picture.matrix = YuvMatrix::Bt709;
    }

    const YuvPicture& Picture() const { return m_picture; }
    std::uint8_t* Target() { return m_target.data(); }

    bool MatchesScalarReference() const
    {
        std::vector<std::uint8_t> expected(kPixels * 4);
        return qmx::kernels::ConvertYuvToBgraScalar(m_picture, expected.data(), kStride) && expected == m_target;
    }

private:
    std::vector<std::uint8_t> m_bytes;
    std::vector<std::uint8_t> m_target;
    YuvPicture m_picture;
};

void BM_YuvToBgra1080p(benchmark::State& state, YuvKind kind)
{
    YuvFixture fixture(kind);
    for (auto _ : state)
    {
        qmx::kernels::ConvertYuvToBgra(fixture.Picture(), fixture.Target(), kStride);
        benchmark::ClobberMemory();
    }
    if (!fixture.MatchesScalarReference())
        state.SkipWithError("wrong pixels");
}
BENCHMARK_CAPTURE(BM_YuvToBgra1080p, I420, YuvKind::I420)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_YuvToBgra1080p, NV12, YuvKind::Nv12)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_YuvToBgra1080p, I444, YuvKind::I444)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_YuvToBgra1080p, I420_10bit, YuvKind::I420Words)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_YuvToBgra1080p, P010, YuvKind::P010)->Unit(benchmark::kMillisecond);

void BM_YuvToBgra1080p_Scalar(benchmark::State& state)
{
    YuvFixture fixture(YuvKind::I420);
    for (auto _ : state)
    {
        qmx::kernels::ConvertYuvToBgraScalar(fixture.Picture(), fixture.Target(), kStride);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_YuvToBgra1080p_Scalar)->Unit(benchmark::kMillisecond);

void BM_YuvToBgra1080p_LibyuvI420ToARGB(benchmark::State& state)
{
    YuvFixture fixture(YuvKind::I420);
    const YuvPicture& p = fixture.Picture();
    for (auto _ : state)
    {
        libyuv::I420ToARGBMatrix(p.pY, static_cast<int>(p.strideY), p.pU, static_cast<int>(p.strideU), p.pV,
                                 static_cast<int>(p.strideV), fixture.Target(), kWidth * 4, &libyuv::kYuvH709Constants,
                                 kWidth, kHeight);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_YuvToBgra1080p_LibyuvI420ToARGB)->Unit(benchmark::kMillisecond);
} // namespace
