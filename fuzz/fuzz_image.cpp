/// @file fuzz_image.cpp
/// Any bytes as a still picture, through the engine's decoder.
/// The last three bytes choose how: limit of the longer side, rotation, and another limit to change to.
#include "engine/qmx.h"
#include "fuzz/MemoryFile.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t cb)
{
    constexpr std::size_t kOptions = 3;
    if (cb < kOptions)
        return 0;
    const std::uint8_t* const pOptions = pData + cb - kOptions;
    const MemoryFile file(pData, cb - kOptions, {});
    tagDecProp prop(file.Path(), 0);
    prop.width = 2U * pOptions[0];
    prop.rotation = 90U * (pOptions[1] % 4);
    prop.decoderType = kDecoderImage;
    const auto pDecoder = RefPtr<CImageDecoder>::Adopt(new CImageDecoder);
    if (!pDecoder->Initialize(prop))
        return 0; // a refusal is a fine result; a fault, a hang or a leak is not
    bool flag = false;
    (void)SampleBufferPtr::Adopt(pDecoder->GetClipVideoFrame(0, flag));
    prop.width = 2U * pOptions[2];
    pDecoder->SetDecoderProperty(prop);
    (void)SampleBufferPtr::Adopt(pDecoder->GetClipVideoFrame(0, flag));
    (void)SampleBufferPtr::Adopt(pDecoder->GetLastFrame());
    return 0;
}
