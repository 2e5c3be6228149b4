/// @file fuzz_swf.cpp
/// Any bytes as a Flash movie: opened, played, jumped about in. The last three bytes choose how: size of the frames,
/// smooth edges, and how far to jump. Input that does not begin as a container does is taken for what is inside one.
/// The movie's budget is a small share of what a program gives it, so that no input takes long; what is left out where
/// the budget ends goes the same way. A frame that is asked for again must look as it did.
#include "companions/swfrenderer/SwfRenderObj.h"
#include "engine/platform/RefPtr.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace
{
constexpr std::size_t kOptions = 3;
constexpr swf::Budget kBudget{.bytes = std::size_t{4} << 20,
                              .readSteps = 65'536,
                              .tickWork = 400'000,
                              .frameWork = 1 << 20,
                              .frameEdges = 16'384,
                              .frameCells = 1 << 18,
                              .videoWork = 3 << 20, // enough for some decoders to begin
                              .layerPixels = 1 << 16};

/// FNV-1a over the frame; 0 when there is none.
std::uint64_t Ask(CSWFRenderObj& movie, std::uint32_t index)
{
    const tagSWFFrameInfo* pInfo = nullptr;
    const std::uint8_t* pPixels = nullptr;
    if (FAILED(movie.RenderFrame(index, &pInfo, &pPixels)))
        return 0; // a refusal is a fine result; a fault, a hang or a leak is not
    std::uint64_t hash = 0xCBF29CE484222325ULL;
    for (std::size_t i = 0; i < std::size_t{pInfo->nStride} * pInfo->nHeight; ++i)
        hash = (hash ^ pPixels[i]) * 0x100000001B3ULL;
    return hash;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t cb)
{
    if (cb < kOptions)
        return 0;
    const std::uint8_t* const pOptions = pData + cb - kOptions;
    static std::vector<std::uint8_t> file; // keeps its memory from input to input
    file.clear();
    if (cb - kOptions < 3 || pData[1] != 'W' || pData[2] != 'S')
    {
        const auto length = static_cast<std::uint32_t>(cb - kOptions + 8);
        file = {'F',
                'W',
                'S',
                10,
                std::uint8_t(length),
                std::uint8_t(length >> 8),
                std::uint8_t(length >> 16),
                std::uint8_t(length >> 24)};
    }
    file.insert(file.end(), pData, pOptions);
    const auto pMovie = RefPtr<CSWFRenderObj>::Adopt(new CSWFRenderObj);
    if (FAILED(pMovie->OpenBytes(file, kBudget)))
        return 0;
    pMovie->SetRenderSize(1 + pOptions[0] % 32, 1 + pOptions[0] / 8);
    pMovie->SetSmoothEdges((pOptions[1] & 1) == 0);
    pMovie->SetRenderFlag(pOptions[1] >> 1 & 1);
    const std::uint64_t first = Ask(*pMovie.Get(), 0);
    Ask(*pMovie.Get(), 1);
    Ask(*pMovie.Get(), 2U + pOptions[2] % 64);
    if (pOptions[2] >= 64 && Ask(*pMovie.Get(), 0) != first)
        std::abort(); // a frame looks the same whatever was asked for before
    return 0;
}
