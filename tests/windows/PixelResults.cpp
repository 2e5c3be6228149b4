// Prints a checksum for pictures that the pixel utility and the clips make of the same input on every system. The
// Windows build's lines are compared with the native build's.
#include "engine/platform/PixelUtility.h"
#include "engine/qmx.h"
#include "tests/decoders/still/TinyGif.h"
#include "tests/support/TemporaryFolder.h"

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>
#if defined(_WIN32)
#include <objbase.h>
#endif

namespace
{
/// FNV-1a, 64 bits.
std::uint64_t ChecksumOf(const std::uint8_t* pBytes, std::size_t cb)
{
    std::uint64_t sum = 0xCBF29CE484222325U;
    for (std::size_t i = 0; i < cb; ++i)
        sum = (sum ^ pBytes[i]) * 0x100000001B3U;
    return sum;
}

/// Rows without padding; every value of every channel occurs.
struct Picture
{
    Picture(std::uint32_t width, std::uint32_t height, std::uint32_t seed)
        : bytes(std::size_t{width} * height * 4), info{bytes.data(), nullptr, nullptr, width, height, width * 4}
    {
        for (std::uint8_t& byte : bytes)
        {
            seed = seed * 1664525U + 1013904223U; // Numerical Recipes' generator
            byte = static_cast<std::uint8_t>(seed >> 24);
        }
    }

    std::vector<std::uint8_t> bytes;
    tagSampleInfo info;
};

void Print(const std::string& name, bool done, const std::vector<std::uint8_t>& bytes)
{
    std::printf("%-40s %d %016llx\n", name.c_str(), done ? 1 : 0,
                static_cast<unsigned long long>(ChecksumOf(bytes.data(), bytes.size())));
}

void PrintScaled()
{
    const Picture source(317, 203, 1);
    constexpr std::uint32_t kSizes[][2] = {{317, 203}, {160, 90}, {640, 360}, {101, 400}, {1, 1}};
    for (const auto& size : kSizes)
    {
        for (const std::uint32_t angle : {0U, 90U, 180U, 270U, 45U})
        {
            for (const std::uint32_t mode : {kScaleBilinear, kScaleArea})
            {
                Picture target(size[0], size[1], 2);
                const bool done = ScaleAndRotateBGRA(&source.info, &target.info, angle, mode);
                Print("scale " + std::to_string(size[0]) + "x" + std::to_string(size[1]) + " angle " +
                          std::to_string(angle) + " mode " + std::to_string(mode),
                      done, target.bytes);
            }
        }
    }
}

void PrintRotated()
{
    const Picture source(317, 203, 3);
    for (const std::uint32_t angle : {0U, 90U, 180U, 270U})
    {
        const bool turned = angle % 180 != 0;
        Picture target(turned ? 203 : 317, turned ? 317 : 203, 4);
        const bool done = RotateBGRA(&source.info, &target.info, angle);
        Print("rotate " + std::to_string(angle), done, target.bytes);
    }
}

void PrintKeyed()
{
    const Picture background(320, 180, 6);
    constexpr std::uint8_t kGreen[] = {60, 200, 40};
    constexpr std::uint8_t kOffAndOn[] = {0, 1};
    for (const std::uint8_t option : kOffAndOn)
    {
        for (const std::uint8_t keyOnly : kOffAndOn)
        {
            for (const bool hasBackground : {false, true})
            {
                Picture frame(320, 180, 5);
                const bool done = ReplaceToTransparent(&frame.info, hasBackground ? &background.info : nullptr, kGreen,
                                                       0.3, 0.2, 0.5, option, keyOnly);
                Print("key option " + std::to_string(option) + " only " + std::to_string(keyOnly) + " background " +
                          std::to_string(hasBackground ? 1 : 0),
                      done, frame.bytes);
            }
        }
    }
}

/// The picture of a clip of @p type at @p time milliseconds.
void PrintClip(const std::string& name, QMXClipType type, const std::filesystem::path& path, std::uint64_t time)
{
    const std::unique_ptr<IQMXTrack> pTrack(CreateQMXTrack(1, QMXTrackType{}, 0, {}));
    IQMXBaseClip* const pClip = CreateClipByClipType(type);
    pClip->SetFilePath(path.wstring());
    pClip->SetDuration(10 * kTimePerSecond);
    pTrack->AddClip(pClip);
    tagRenderProp request;
    request.width = 320;
    request.height = 180;
    const auto pFrame = SampleBufferPtr::Adopt(pTrack->GetFrameAtTime(request, time * 10'000, nullptr));
    std::uint8_t* pPixels = nullptr;
    std::uint32_t cb = 0;
    const bool done = pFrame && pFrame->GetBuffer(&pPixels, &cb);
    Print(name, done, done ? std::vector<std::uint8_t>(pPixels, pPixels + cb) : std::vector<std::uint8_t>());
}
/// An animation with a palette of a frame's own, transparency, every way of disposal and frames that reach past the
/// edge.
void PrintGif()
{
    TinyGif gif(96, 54);
    gif.Control(10, 1).Solid(0, 0, 96, 54, 2);
    gif.Control(10, 2, 1).Solid(10, 5, 40, 30, 0);
    gif.Control(10, 3).Solid(30, 20, 50, 30, 1);
    gif.Control(10, 0).Solid(80, 40, 40, 40, 3);
    gif.End();
    const test_support::TemporaryFolder folder;
    const std::filesystem::path file =
        folder.Write("animation.gif", {reinterpret_cast<const char*>(gif.bytes.data()), gif.bytes.size()});
    for (const std::uint64_t time : {0U, 150U, 250U, 350U, 450U, 900U})
        PrintClip("gif at " + std::to_string(time), QMXClipType_Image, file, time);
}
} // namespace

int main()
{
#if defined(_WIN32)
    (void)CoInitializeEx(nullptr, COINIT_MULTITHREADED); // the host's part, as MFStartup() is
#endif
    PrintScaled();
    PrintRotated();
    PrintKeyed();
    PrintClip("color clip", QMXClipType_Color, L"", 2'000);
    PrintGif();
    return 0;
}
