/// @file fuzz_swf.cpp
/// Any bytes as a Flash movie: opened, played, jumped about in. The last three bytes choose how: size of the frames,
/// smooth edges, and how far to jump. Input that does not begin as a container does is taken for what is inside one.
#include "companions/swfrenderer/SwfRenderObj.h"
#include "engine/platform/RefPtr.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace
{
constexpr std::size_t kOptions = 3;

void Ask(CSWFRenderObj& movie, std::uint32_t index)
{
    const tagSWFFrameInfo* pInfo = nullptr;
    const std::uint8_t* pPixels = nullptr;
    (void)movie.RenderFrame(index, &pInfo, &pPixels); // a refusal is a fine result; a fault, a hang or a leak is not
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t cb)
{
    if (cb < kOptions)
        return 0;
    const std::uint8_t* const pOptions = pData + cb - kOptions;
    std::vector<std::uint8_t> file(pData, pData + cb - kOptions);
    if (file.size() < 3 || file[1] != 'W' || file[2] != 'S')
    {
        const auto length = static_cast<std::uint32_t>(file.size() + 8);
        const std::uint8_t head[] = {'F',
                                     'W',
                                     'S',
                                     10,
                                     std::uint8_t(length),
                                     std::uint8_t(length >> 8),
                                     std::uint8_t(length >> 16),
                                     std::uint8_t(length >> 24)};
        file.insert(file.begin(), std::begin(head), std::end(head));
    }
    const auto pMovie = RefPtr<CSWFRenderObj>::Adopt(new CSWFRenderObj);
    if (FAILED(pMovie->OpenBytes(file)))
        return 0;
    pMovie->SetRenderSize(1 + pOptions[0] % 64, 1 + pOptions[0] / 4);
    pMovie->SetSmoothEdges((pOptions[1] & 1) == 0);
    pMovie->SetRenderFlag(pOptions[1] >> 1 & 1);
    for (std::uint32_t index = 0; index < 4; ++index)
        Ask(*pMovie.Get(), index);
    Ask(*pMovie.Get(), std::uint32_t{pOptions[2]} * 16);
    Ask(*pMovie.Get(), 1);
    return 0;
}
