/// @file fuzz_gif.cpp
/// Any bytes as an animation, through the engine's decoder: played forward, jumped about in.
/// The last four bytes choose how: limit of the longer side, rotation, and where the jumps go.
#include "engine/qmx.h"
#include "fuzz/MemoryFile.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t cb)
{
    constexpr std::size_t kOptions = 4;
    if (cb < kOptions)
        return 0;
    const std::uint8_t* const pOptions = pData + cb - kOptions;
    const MemoryFile file(pData, cb - kOptions, "gif");
    tagDecProp prop(file.Path(), 0);
    prop.width = 2U * pOptions[0];
    prop.rotation = 90U * (pOptions[1] % 4);
    const auto pDecoder = RefPtr<CGifDecoder>::Adopt(new CGifDecoder);
    (void)pDecoder->Initialize(prop); // a refusal is a fine result; a fault, a hang or a leak is not
    bool flag = false;
    for (std::uint64_t ms = 0; ms < 1'000; ms += 90)
        (void)SampleBufferPtr::Adopt(pDecoder->GetClipVideoFrame(ms, flag));
    for (const std::uint64_t jump : {pOptions[2] * 100ULL, pOptions[3] * 10ULL, 0ULL, ~0ULL})
        (void)SampleBufferPtr::Adopt(pDecoder->GetClipVideoFrame(jump, flag));
    return 0;
}
