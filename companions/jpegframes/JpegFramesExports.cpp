#include "companions/jpegframes/JpegFrameDecoder.h"
#include "engine/platform/JpegFrames.h"
#include "engine/platform/SampleBuffer.h"

#include <cstdlib>
#include <new>

void* JPGCreateDecoder(int width, int height)
{
    constexpr int kMaxSide = 32'767;
    if (width < 0 || height < 0 || width > kMaxSide || height > kMaxSide)
        return nullptr;
    return new (std::nothrow) CJpegFrameDecoder(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height));
}

tagSampleInfo* JPGDecodeFrame(void* handle, unsigned char* data, int length)
{
    if (!handle || !data || length <= 0)
        return nullptr;
    auto* const pInfo = static_cast<tagSampleInfo*>(std::malloc(sizeof(tagSampleInfo)));
    if (!pInfo)
        return nullptr;
    ::new (pInfo) tagSampleInfo;
    try
    {
        if (static_cast<CJpegFrameDecoder*>(handle)->Decode(data, static_cast<std::size_t>(length), *pInfo))
            return pInfo;
    }
    catch (const std::bad_alloc&) // no memory: no picture
    {
    }
    std::free(pInfo);
    return nullptr;
}

void JPGDestroyDecoder(void* handle)
{
    delete static_cast<CJpegFrameDecoder*>(handle);
}
