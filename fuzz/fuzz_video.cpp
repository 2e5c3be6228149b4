/// @file fuzz_video.cpp
/// Any bytes as a video file, through the engine's decoder: opened, read on, jumped about in.
/// The last four bytes choose how: width of the frames asked for, rotation, and where the jumps go.
#include "engine/qmx.h"
#include "fuzz/MemoryFile.h"

#include <mfapi.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace
{
constexpr std::size_t kOptions = 4;

/// A decoder outlives no input, and media services start once.
void StartServices()
{
    static const HRESULT started = MFStartup(MF_VERSION, MFSTARTUP_FULL);
    (void)started;
}

void Ask(CVideoDecoder& decoder, std::uint64_t time)
{
    bool endOfStream = false;
    (void)SampleBufferPtr::Adopt(decoder.GetClipVideoFrame(time, endOfStream));
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t cb)
{
    if (cb < kOptions)
        return 0;
    StartServices();
    const std::uint8_t* const pOptions = pData + cb - kOptions;
    const MemoryFile file(pData, cb - kOptions, {});

    tagVideoInfo info;
    {
        const auto pProbe = RefPtr<CVideoDecoder>::Adopt(new CVideoDecoder);
        if (!pProbe->GetVideoInfo(file.Path(), &info))
            return 0; // a refusal is a fine result; a fault, a hang or a leak is not
    }
    tagDecProp prop(file.Path(), 0);
    prop.flags = pOptions[0] & (kRequestUseCache | kRequestSeekBack);
    prop.width = 2 + pOptions[1];
    prop.height = 2 + pOptions[1];
    prop.rotation = 90U * (pOptions[0] >> 6);
    if (info.dFrameRate > 0.01 && info.dFrameRate < 1000)
    {
        prop.frameRate = info.dFrameRate;
        prop.frameDuration = static_cast<std::uint64_t>(kTimePerSecond / info.dFrameRate);
    }
    const auto pDecoder = RefPtr<CVideoDecoder>::Adopt(new CVideoDecoder);
    if (!pDecoder->Initialize(prop))
        return 0;
    for (std::uint64_t n = 0; n < 6; ++n)
        Ask(*pDecoder.Get(), n * prop.frameDuration);
    const double seconds = std::clamp(info.dDuration, 0.0, 1e5);
    Ask(*pDecoder.Get(), static_cast<std::uint64_t>(seconds * pOptions[2] / 256 * kTimePerSecond));
    Ask(*pDecoder.Get(), static_cast<std::uint64_t>(seconds * pOptions[3] / 128 * kTimePerSecond));
    Ask(*pDecoder.Get(), 0);
    return 0;
}
