#include "bench/PairedFigures.h"
#include "bench/RawLoop.h"
#include "engine/decoders/media/CameraClipDecoder.h"
#include "engine/decoders/media/VideoDecoder.h"
#include "engine/platform/DecoderInterop.h"
#include "engine/platform/PixelUtility.h"
#include "pal/kernel/PathText.h"
#include "pal/media/MediaStatistics.h"

#include <benchmark/benchmark.h>
#include <turbojpeg.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace
{
namespace fs = std::filesystem;
using qmx::bench::FindFilm;
using qmx::bench::RawLoop;
using qmx::bench::RunPaired;

constexpr std::uint32_t kWidth = 1280;
constexpr std::uint32_t kHeight = 720;

/// Where one compressed frame lies.
struct Place
{
    std::uint64_t time = 0;
    std::uint64_t offset = 0;
    std::uint64_t length = 0;
};

/// A Motion-JPEG recording of 720p, made of a film; removed at the end.
class JpegRecording
{
public:
    ~JpegRecording()
    {
        std::error_code error;
        fs::remove_all(m_folder, error);
    }
    bool Make(const std::string& film, std::uint64_t count)
    {
        fs::create_directories(m_folder);
        tagDecProp prop(pal::FromPathBytes(film), 0);
        prop.width = kWidth;
        const auto pDecoder = RefPtr<CVideoDecoder>::Adopt(new CVideoDecoder);
        if (!pDecoder->Initialize(prop))
            return false;
        std::ofstream media(Path(".mov"), std::ios::binary);
        std::ofstream meta(Path(".meta"), std::ios::binary);
        const std::unique_ptr<void, int (*)(tjhandle)> pHandle(tjInitCompress(), tjDestroy);
        unsigned char* pJpeg = nullptr;
        unsigned long cb = 0;
        Place place;
        for (std::uint64_t n = 0; n < count; ++n)
        {
            bool ended = false;
            const auto pFrame = SampleBufferPtr::Adopt(pDecoder->GetClipVideoFrame(n * 333'333, ended));
            std::uint8_t* pPixels = nullptr;
            if (!pFrame || !pFrame->GetBuffer(&pPixels, nullptr) || pFrame->GetHeight() != kHeight ||
                tjCompress2(pHandle.get(), pPixels, kWidth, 0, kHeight, TJPF_BGRX, &pJpeg, &cb, TJSAMP_420, 90, 0) != 0)
                return false;
            place.length = cb;
            media.write(reinterpret_cast<const char*>(pJpeg), static_cast<std::streamsize>(cb));
            meta.write(reinterpret_cast<const char*>(&place), sizeof(place)); // little-endian, as this machine
            m_places.push_back(place);
            place.time += 333'333;
            place.offset += cb;
        }
        tjFree(pJpeg);
        return media.good() && meta.good();
    }
    std::string Path(const char* pExtension) const { return (m_folder / "cam").string() + pExtension; }
    const std::vector<Place>& GetPlaces() const { return m_places; }

private:
    fs::path m_folder = fs::temp_directory_path() / ("qmx-bench-" + std::to_string(std::random_device()()));
    std::vector<Place> m_places;
};

/// Reads and decodes frames with the library alone; every buffer is kept.
class RawJpegLoop
{
public:
    explicit RawJpegLoop(const std::string& media) : m_pFile(std::fopen(media.c_str(), "rb"), &CloseFile) {}

    const std::uint8_t* Decode(const Place& place)
    {
        m_jpeg.resize(std::max<std::size_t>(m_jpeg.size(), place.length));
        if (!m_pFile || std::fseek(m_pFile.get(), static_cast<long>(place.offset), SEEK_SET) != 0 ||
            std::fread(m_jpeg.data(), 1, place.length, m_pFile.get()) != place.length)
            return nullptr;
        const bool done = tjDecompress2(m_pHandle.get(), m_jpeg.data(), static_cast<unsigned long>(place.length),
                                        m_pixels.data(), kWidth, 0, kHeight, TJPF_BGRA, 0) == 0;
        return done ? m_pixels.data() : nullptr;
    }

private:
    static void CloseFile(std::FILE* pFile) { std::fclose(pFile); }

    std::unique_ptr<std::FILE, void (*)(std::FILE*)> m_pFile;
    std::unique_ptr<void, int (*)(tjhandle)> m_pHandle{tjInitDecompress(), tjDestroy};
    std::vector<std::uint8_t> m_jpeg;
    std::vector<std::uint8_t> m_pixels = std::vector<std::uint8_t>(std::size_t{kWidth} * kHeight * 4);
};

/// 200 frames of a Motion-JPEG recording of 720p in random order.
void BM_CameraRandomJpeg(benchmark::State& state)
{
    constexpr int kFrames = 200;
    const std::string film = FindFilm("bench-1080p.mp4");
    JpegRecording recording;
    if (film.empty() || !recording.Make(film, 100))
        return state.SkipWithError("film not made (scripts/make-media)");
    tagDecProp prop(pal::FromPathBytes(recording.Path(".mjpg")), 0);
    prop.width = kWidth;
    prop.height = kHeight;
    const auto pDecoder = RefPtr<CCameraClipDecoder>::Adopt(new CCameraClipDecoder);
    if (!pDecoder->Initialize(prop))
        return state.SkipWithError("the recording cannot be opened");
    RawJpegLoop raw(recording.Path(".mov"));
    bool ended = false;
    // The decoder repeats the picture before for every second request: the second one decodes.
    const auto get = [&](std::uint64_t n)
    {
        SampleBufferPtr::Adopt(pDecoder->GetClipVideoFrame(n, ended));
        return SampleBufferPtr::Adopt(pDecoder->GetClipVideoFrame(n, ended));
    };
    std::mt19937 random(5);
    std::vector<std::size_t> order(kFrames);
    for (std::size_t i = 0; i < order.size(); ++i)
        do
            order[i] = random() % recording.GetPlaces().size();
        while (i > 0 && order[i] == order[i - 1]); // a frame that is asked for again costs nothing
    for (std::size_t n = 0; n < 5; ++n)
    {
        std::uint8_t* pOurs = nullptr;
        const SampleBufferPtr pFrame = get(n);
        const std::uint8_t* const pRaw = raw.Decode(recording.GetPlaces()[n]);
        if (!pFrame || !pRaw || !pFrame->GetBuffer(&pOurs, nullptr) ||
            std::memcmp(pOurs, pRaw, std::size_t{kWidth} * kHeight * 4) != 0)
            return state.SkipWithError("wrong pictures");
    }
    RunPaired(
        state,
        [&]
        {
            for (const std::size_t n : order)
                if (!get(n))
                    return 0;
            return kFrames;
        },
        [&]
        {
            for (const std::size_t n : order)
                if (raw.Decode(recording.GetPlaces()[n]) == nullptr)
                    return 0;
            return kFrames;
        });
}
BENCHMARK(BM_CameraRandomJpeg)->UseManualTime()->Iterations(11)->Unit(benchmark::kMillisecond);

/// 120 frames of an H.264 recording in order, as NV12, beside decoding alone.
void BM_CameraH264InOrder(benchmark::State& state)
{
    constexpr int kFrames = 120;
    const std::string film = FindFilm("bench-1080p.mp4");
    RawLoop raw;
    const std::unique_ptr<DecoderInterop> pInterop(
        film.empty() ? nullptr : DecoderInterop::CreateDecoder(pal::FromPathBytes(film), L""));
    if (!pInterop || !raw.Open(film))
        return state.SkipWithError("film not made (scripts/make-media)");
    for (std::uint64_t n = 0; n < 5; ++n)
    {
        std::uint8_t* pOurs = nullptr;
        const auto pFrame = SampleBufferPtr::Adopt(pInterop->GetSample(n));
        if (!pFrame || !raw.Decode() || !pFrame->GetBuffer(&pOurs, nullptr) ||
            std::memcmp(pOurs, raw.GetFrame().data[0], pFrame->GetWidth()) != 0)
            return state.SkipWithError("wrong pictures");
    }
    std::uint64_t next = 5;
    RunPaired(
        state,
        [&]
        {
            for (int i = 0; i < kFrames; ++i)
            {
                if (SampleBufferPtr::Adopt(pInterop->GetSample(next)))
                    ++next;
                else if (!SampleBufferPtr::Adopt(pInterop->GetSample(next = 0)))
                    return 0;
            }
            return kFrames;
        },
        [&]
        {
            for (int i = 0; i < kFrames; ++i)
                if (!raw.Decode() && !(raw.SeekAndDecode(0) || raw.Decode()))
                    return 0;
            return kFrames;
        });
}
BENCHMARK(BM_CameraH264InOrder)->UseManualTime()->Iterations(15)->Unit(benchmark::kMillisecond);

/// 120 steps back in an H.264 recording, beside decoding four pictures, which is what a step may cost.
void BM_CameraH264Backward(benchmark::State& state)
{
    constexpr int kSteps = 120;
    constexpr int kAllowedDecodes = 4;
    const std::string film = FindFilm("bench-1080p.mp4");
    RawLoop raw;
    const std::unique_ptr<DecoderInterop> pInterop(
        film.empty() ? nullptr : DecoderInterop::CreateDecoder(pal::FromPathBytes(film), L""));
    if (!pInterop || !raw.Open(film))
        return state.SkipWithError("film not made (scripts/make-media)");
    std::uint64_t decoded = 0;
    std::uint64_t from = 245;
    RunPaired(
        state,
        [&]
        {
            if (!SampleBufferPtr::Adopt(pInterop->GetSample(from))) // not a step
                return 0;
            const std::uint64_t before = pal::GetMediaStatistics().picturesDecoded;
            for (std::uint64_t n = 1; n <= kSteps; ++n)
                if (!SampleBufferPtr::Adopt(pInterop->GetSample(from - n)))
                    return 0;
            decoded += pal::GetMediaStatistics().picturesDecoded - before;
            from = from == 245 ? 130 : 245;
            return kSteps;
        },
        [&]
        {
            for (int i = 0; i < kSteps * kAllowedDecodes; ++i)
                if (!raw.Decode() && !(raw.SeekAndDecode(0) || raw.Decode()))
                    return 0;
            return kSteps;
        });
    state.counters["engine_decoded"] =
        static_cast<double>(decoded) / (kSteps * static_cast<double>(state.iterations()));
}
BENCHMARK(BM_CameraH264Backward)->UseManualTime()->Iterations(2)->Unit(benchmark::kMillisecond);

/// NV12 of 1080p to BGRA of 720p, turned by the argument, beside the steps one after the other.
void BM_ScaleAndConvertNV12(benchmark::State& state)
{
    constexpr std::uint32_t kSourceWidth = 1920;
    constexpr std::uint32_t kSourceHeight = 1080;
    constexpr int kRounds = 20;
    const auto angle = static_cast<std::uint32_t>(state.range(0));
    std::vector<std::uint8_t> nv12(std::size_t{kSourceWidth} * kSourceHeight * 3 / 2);
    std::mt19937 random(3);
    for (std::uint8_t& sample : nv12)
        sample = static_cast<std::uint8_t>(random());
    const auto describe = [](std::vector<std::uint8_t>& pixels, std::uint32_t width, std::uint32_t height)
    {
        tagSampleInfo info;
        info.pData = pixels.data();
        info.nWidth = width;
        info.nHeight = height;
        info.nStride = width * 4;
        return info;
    };
    std::vector<std::uint8_t> whole(std::size_t{kSourceWidth} * kSourceHeight * 4);
    std::vector<std::uint8_t> ours(std::size_t{kWidth} * kHeight * 4);
    std::vector<std::uint8_t> theirs(ours.size());
    const tagSampleInfo source = describe(nv12, kSourceWidth, kSourceHeight);
    const tagSampleInfo converted = describe(whole, kSourceWidth, kSourceHeight);
    const tagSampleInfo target = describe(ours, kWidth, kHeight);
    const tagSampleInfo other = describe(theirs, kWidth, kHeight);
    const auto one = [&] { return ScaleAndConvertNV12(&source, &target, angle, kScaleBilinear); };
    const auto steps = [&]
    {
        return ScaleAndConvertNV12(&source, &converted, 0, kScaleBilinear) &&
               ScaleAndRotateBGRA(&converted, &other, angle, kScaleBilinear);
    };
    if (!one() || !steps() || ours != theirs)
        return state.SkipWithError("wrong pixels");
    const auto repeat = [](const auto& step)
    {
        for (int i = 0; i < kRounds; ++i)
            step();
        return kRounds;
    };
    RunPaired(
        state, [&] { return repeat(one); }, [&] { return repeat(steps); });
}
BENCHMARK(BM_ScaleAndConvertNV12)->Arg(0)->Arg(90)->UseManualTime()->Iterations(9)->Unit(benchmark::kMillisecond);
} // namespace
