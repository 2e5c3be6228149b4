/// @file fuzz_sound.cpp
/// Any bytes as a file of sound, through the clip audio functions and a clip: opened, read on, jumped about in.
/// The last two bytes choose where the jumps go.
#include "engine/qmx.h"
#include "fuzz/MemoryFile.h"

#include <mfapi.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace
{
constexpr std::size_t kOptions = 2;
constexpr std::size_t kLongestBlock = 192'000;
constexpr int kBlocks = 40;

/// Media services start once.
void StartServices()
{
    static const HRESULT started = MFStartup(MF_VERSION, MFSTARTUP_FULL);
    (void)started;
}

/// Reads on for a while. @return bytes
std::uint64_t Read(void* hSound, std::vector<unsigned char>& block)
{
    std::uint64_t cbAll = 0;
    for (int i = 0; i < kBlocks; ++i)
    {
        const unsigned int cb = QMXGetClipAudio(hSound, block.data());
        if (cb == 0)
            break;
        if (cb > kLongestBlock || cb % 4 != 0)
            std::abort();
        cbAll += cb;
    }
    return cbAll;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t cb)
{
    if (cb < kOptions)
        return 0;
    StartServices();
    const std::uint8_t* const pOptions = pData + cb - kOptions;
    const MemoryFile file(pData, cb - kOptions, {});
    void* hSound = nullptr;
    if (FAILED(QMXGetClipAudioBegin(&hSound, file.Path(), 0)))
        return 0; // a refusal is a fine result; a fault, a hang or a leak is not
    std::vector<unsigned char> block(kLongestBlock);
    const std::uint64_t length = Read(hSound, block) * 10'000'000 / 192'000;
    for (std::size_t i = 0; i < kOptions; ++i)
        if (SUCCEEDED(QMXGetClipAudioBegin(&hSound, file.Path(), length * pOptions[i] / 128)))
            Read(hSound, block);
    QMXGetClipAudioEnd(hSound);

    CQMXAudioClip clip;
    clip.SetFilePath(file.Path());
    std::uint8_t* pBlock = block.data();
    std::uint32_t size = 9'999;
    clip.GetAudioData(&pBlock, &size, length * pOptions[0] / 256);
    clip.GetAudioAtTime(length * pOptions[1] / 256, &pBlock, &size);
    clip.GetAudioAtTime(0, &pBlock, &size);
    return 0;
}
