/// Still pictures and animations through the engine, each beside the raw library loop that is its limit.
#include "bench/PairedFigures.h"
#include "companions/pixelutility/kernels/MergeBgra.h"
#include "engine/platform/PixelUtility.h"
#include "engine/qmx.h"

#include <benchmark/benchmark.h>
#include <gif_lib.h>
#include <libyuv.h>
#include <turbojpeg.h>

#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <vector>

namespace
{
using Bytes = std::vector<std::uint8_t>;

/// A file that goes away with the program.
class BenchFile
{
public:
    BenchFile(const Bytes& bytes, const std::string& extension)
        : m_path(std::filesystem::temp_directory_path() / ("qmx-bench-" + std::to_string(getpid()) + "." + extension)),
          m_bytes(bytes)
    {
        std::ofstream(m_path, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    ~BenchFile()
    {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }
    BenchFile(const BenchFile&) = delete;
    BenchFile& operator=(const BenchFile&) = delete;

    std::wstring Path() const { return m_path.wstring(); }
    std::string NativePath() const { return m_path.string(); }
    const Bytes& Content() const { return m_bytes; }

private:
    std::filesystem::path m_path;
    Bytes m_bytes;
};

/// Smooth shapes with some grain, which costs a decoder about what a photograph does.
Bytes PhotographPixels(int width, int height)
{
    Bytes bgra(std::size_t{4} * static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    std::uint32_t noise = 1;
    std::size_t i = 0;
    for (int y = 0; y < height; ++y)
    {
        for (int x = 0; x < width; ++x)
        {
            noise = noise * 1'664'525 + 1'013'904'223;
            const int grain = static_cast<int>(noise >> 28);
            bgra[i++] = static_cast<std::uint8_t>((x / 16 + grain) & 0xFF);
            bgra[i++] = static_cast<std::uint8_t>((y / 12 + x / 40 + grain) & 0xFF);
            bgra[i++] = static_cast<std::uint8_t>((x * y / 20'000 + grain) & 0xFF);
            bgra[i++] = 255;
        }
    }
    return bgra;
}

constexpr int kPhotoWidth = 6'000; // 24 megapixels
constexpr int kPhotoHeight = 4'000;
constexpr int kShownWidth = 1'920;
constexpr int kShownHeight = 1'280;

const BenchFile& Photograph()
{
    static const BenchFile file = []
    {
        const Bytes bgra = PhotographPixels(kPhotoWidth, kPhotoHeight);
        const tjhandle turbo = tjInitCompress();
        unsigned char* pJpeg = nullptr;
        unsigned long cb = 0;
        tjCompress2(turbo, bgra.data(), kPhotoWidth, 0, kPhotoHeight, TJPF_BGRA, &pJpeg, &cb, TJSAMP_420, 90, 0);
        const Bytes bytes(pJpeg, pJpeg + cb);
        tjFree(pJpeg);
        tjDestroy(turbo);
        return BenchFile(bytes, "jpg");
    }();
    return file;
}

int ShowPhotograph()
{
    const RefPtr<CImageDecoder> decoder = RefPtr<CImageDecoder>::Adopt(new CImageDecoder);
    tagDecProp prop(Photograph().Path(), 0);
    prop.width = kShownWidth;
    bool flag = false;
    if (!decoder->Initialize(prop))
        return 0;
    const SampleBufferPtr frame = SampleBufferPtr::Adopt(decoder->GetClipVideoFrame(0, flag));
    return frame && frame->GetWidth() == kShownWidth && frame->GetHeight() == kShownHeight ? 1 : 0;
}

/// TurboJPEG's whole decode and one area scale, into memory that is kept.
int DecodeAndScale(bool byLibyuv)
{
    static Bytes full(std::size_t{4} * kPhotoWidth * kPhotoHeight);
    static Bytes scaled(std::size_t{4} * kShownWidth * kShownHeight);
    const Bytes& jpeg = Photograph().Content();
    const tjhandle turbo = tjInitDecompress();
    const int decoded = tjDecompress2(turbo, jpeg.data(), static_cast<unsigned long>(jpeg.size()), full.data(),
                                      kPhotoWidth, 0, kPhotoHeight, TJPF_BGRA, 0);
    tjDestroy(turbo);
    if (byLibyuv)
    {
        libyuv::ARGBScale(full.data(), kPhotoWidth * 4, kPhotoWidth, kPhotoHeight, scaled.data(), kShownWidth * 4,
                          kShownWidth, kShownHeight, libyuv::kFilterBox);
    }
    else
    {
        tagSampleInfo source;
        source.pData = full.data();
        source.nWidth = kPhotoWidth;
        source.nHeight = kPhotoHeight;
        source.nStride = kPhotoWidth * 4;
        tagSampleInfo target = source;
        target.pData = scaled.data();
        target.nWidth = kShownWidth;
        target.nHeight = kShownHeight;
        target.nStride = kShownWidth * 4;
        ScaleAndRotateBGRA(&source, &target, 0, kScaleArea);
    }
    return decoded == 0 ? 1 : 0;
}

/// Limit: ratio 1.15.
void BM_StillJpeg24MpTo1920(benchmark::State& state)
{
    qmx::bench::RunPaired(state, ShowPhotograph, [] { return DecodeAndScale(true); });
}
BENCHMARK(BM_StillJpeg24MpTo1920)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(9);

/// The same beside our own area scale, which tells what the way there costs.
void BM_StillJpeg24MpTo1920_OwnScale(benchmark::State& state)
{
    qmx::bench::RunPaired(state, ShowPhotograph, [] { return DecodeAndScale(false); });
}
BENCHMARK(BM_StillJpeg24MpTo1920_OwnScale)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(9);

/// The same photograph, which says that it lies on its side.
const BenchFile& TurnedPhotograph()
{
    static const BenchFile file = []
    {
        constexpr std::array<std::uint8_t, 36> kExif{0xFF, 0xE1, 0, 34, 'E', 'x', 'i', 'f', 0,    0, 'I', 'I',
                                                     '*',  0,    8, 0,  0,   0,   1,   0,   0x12, 1, 3,   0,
                                                     1,    0,    0, 0,  6,   0,   0,   0,   0,    0, 0,   0};
        Bytes bytes = Photograph().Content();
        bytes.insert(bytes.begin() + 2, kExif.begin(), kExif.end());
        return BenchFile(bytes, "turned.jpg");
    }();
    return file;
}

int ShowTurnedPhotograph()
{
    const RefPtr<CImageDecoder> decoder = RefPtr<CImageDecoder>::Adopt(new CImageDecoder);
    tagDecProp prop(TurnedPhotograph().Path(), 0);
    prop.width = kShownWidth;
    bool flag = false;
    if (!decoder->Initialize(prop))
        return 0;
    const SampleBufferPtr frame = SampleBufferPtr::Adopt(decoder->GetClipVideoFrame(0, flag));
    return frame && frame->GetWidth() == kShownHeight && frame->GetHeight() == kShownWidth ? 1 : 0;
}

/// The raw loop turns the whole picture, too.
int DecodeTurnAndScale()
{
    static Bytes full(std::size_t{4} * kPhotoWidth * kPhotoHeight);
    static Bytes turned(full.size());
    static Bytes scaled(std::size_t{4} * kShownWidth * kShownHeight);
    const Bytes& jpeg = TurnedPhotograph().Content();
    const tjhandle turbo = tjInitDecompress();
    const int decoded = tjDecompress2(turbo, jpeg.data(), static_cast<unsigned long>(jpeg.size()), full.data(),
                                      kPhotoWidth, 0, kPhotoHeight, TJPF_BGRA, 0);
    tjDestroy(turbo);
    libyuv::ARGBRotate(full.data(), kPhotoWidth * 4, turned.data(), kPhotoHeight * 4, kPhotoWidth, kPhotoHeight,
                       libyuv::kRotate90);
    libyuv::ARGBScale(turned.data(), kPhotoHeight * 4, kPhotoHeight, kPhotoWidth, scaled.data(), kShownHeight * 4,
                      kShownHeight, kShownWidth, libyuv::kFilterBox);
    return decoded == 0 ? 1 : 0;
}

void BM_StillJpeg24MpTurnedTo1920(benchmark::State& state)
{
    qmx::bench::RunPaired(state, ShowTurnedPhotograph, DecodeTurnAndScale);
}
BENCHMARK(BM_StillJpeg24MpTurnedTo1920)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(9);

constexpr int kGifWidth = 640;
constexpr int kGifHeight = 360;
constexpr int kGifFrames = 60;

/// A screen recording: a window that moves over a still background; every frame is whole.
const BenchFile& Animation()
{
    static const BenchFile file = []
    {
        const std::string path = (std::filesystem::temp_directory_path() / "qmx-bench-made.gif").string();
        int error = 0;
        GifFileType* const pGif = EGifOpenFileName(path.c_str(), false, &error);
        std::array<GifColorType, 256> colours{};
        for (std::size_t i = 0; i < 256; ++i)
            colours[i] = {static_cast<GifByteType>(i), static_cast<GifByteType>(i * 3),
                          static_cast<GifByteType>(255 - i)};
        ColorMapObject* const pMap = GifMakeMapObject(256, colours.data());
        EGifSetGifVersion(pGif, true);
        EGifPutScreenDesc(pGif, kGifWidth, kGifHeight, 8, 0, pMap);
        std::uint32_t noise = 1;
        Bytes row(kGifWidth);
        for (int frame = 0; frame < kGifFrames; ++frame)
        {
            const GifByteType control[4] = {1 << 2, 10, 0, 0};
            EGifPutExtension(pGif, GRAPHICS_EXT_FUNC_CODE, 4, control);
            EGifPutImageDesc(pGif, 0, 0, kGifWidth, kGifHeight, false, nullptr);
            for (int y = 0; y < kGifHeight; ++y)
            {
                for (int x = 0; x < kGifWidth; ++x)
                {
                    noise = noise * 1'664'525 + 1'013'904'223;
                    const bool inside = x > frame * 4 && x < frame * 4 + 200 && y > 80 && y < 240;
                    row[static_cast<std::size_t>(x)] = static_cast<std::uint8_t>(
                        inside ? 128 + (noise >> 29) : static_cast<std::uint32_t>(x / 8 + y / 8));
                }
                EGifPutLine(pGif, row.data(), kGifWidth);
            }
        }
        EGifCloseFile(pGif, &error);
        GifFreeMapObject(pMap);
        std::ifstream stream(path, std::ios::binary);
        const Bytes bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
        std::filesystem::remove(path);
        return BenchFile(bytes, "gif");
    }();
    return file;
}

int PlayAnimation()
{
    const RefPtr<CGifDecoder> decoder = RefPtr<CGifDecoder>::Adopt(new CGifDecoder);
    tagDecProp prop(Animation().Path(), 0);
    prop.width = kGifWidth;
    if (!decoder->Initialize(prop))
        return 0;
    int frames = 0;
    for (int i = 0; i < kGifFrames; ++i)
    {
        bool flag = false;
        frames += SampleBufferPtr::Adopt(decoder->GetClipVideoFrame(static_cast<std::uint64_t>(i) * 100, flag)) ? 1 : 0;
    }
    return frames;
}

/// giflib's decode of the same frames, indices only.
int DecodeAnimation()
{
    static Bytes row(kGifWidth);
    int error = 0;
    GifFileType* const pGif = DGifOpenFileName(Animation().NativePath().c_str(), &error);
    int frames = 0;
    GifRecordType record = UNDEFINED_RECORD_TYPE;
    while (pGif && DGifGetRecordType(pGif, &record) == GIF_OK && record != TERMINATE_RECORD_TYPE)
    {
        if (record == IMAGE_DESC_RECORD_TYPE)
        {
            DGifGetImageHeader(pGif);
            for (int y = 0; y < kGifHeight; ++y)
                DGifGetLine(pGif, row.data(), kGifWidth);
            ++frames;
            continue;
        }
        int function = 0;
        GifByteType* pBlock = nullptr;
        DGifGetExtension(pGif, &function, &pBlock);
        while (pBlock)
            DGifGetExtensionNext(pGif, &pBlock);
    }
    DGifCloseFile(pGif, &error);
    return frames;
}

void BM_GifForward640(benchmark::State& state)
{
    qmx::bench::RunPaired(state, PlayAnimation, DecodeAnimation);
}
BENCHMARK(BM_GifForward640)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(9);

/// @param alpha  of every source pixel: 0 and 255 take the short ways
void BM_MergeRow1080p(benchmark::State& state)
{
    constexpr std::size_t kPixels = 1'920 * 1'080;
    Bytes source(kPixels * 4, static_cast<std::uint8_t>(state.range(0)));
    Bytes target(kPixels * 4, 200);
    for (auto _ : state)
    {
        qmx::kernels::MergeBgraRow(source.data(), target.data(), kPixels);
        benchmark::ClobberMemory();
    }
    Bytes expected(4, 200);
    qmx::kernels::MergeBgraRowScalar(source.data(), expected.data(), 1);
    if (state.range(0) == 255 && !std::equal(expected.begin(), expected.end(), target.begin()))
        state.SkipWithError("wrong pixels");
}
BENCHMARK(BM_MergeRow1080p)->Arg(0)->Arg(128)->Arg(255)->Unit(benchmark::kMillisecond);
} // namespace
