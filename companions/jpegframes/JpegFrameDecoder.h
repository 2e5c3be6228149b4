/// @file JpegFrameDecoder.h
/// Decodes JPEG pictures at one size.
#pragma once

#include "engine/platform/SampleInfo.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

/// What a handle of the library stands for. Keeps its working memory from picture to picture.
/// Threads : one at a time.
class CJpegFrameDecoder
{
public:
    /// @param width,height  of every picture, 0..32,767; either 0: those of the JPEG
    CJpegFrameDecoder(std::uint32_t width, std::uint32_t height);

    /// @return pixels from AllocateSamplePixels() described in @p info, which the caller owns; null on any failure.
    ///         Throws std::bad_alloc.
    std::uint8_t* Decode(const std::uint8_t* pData, std::size_t cb, tagSampleInfo& info);

private:
    struct Size
    {
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        bool operator==(const Size&) const = default;
    };
    struct HandleCloser
    {
        void operator()(void* pHandle) const;
    };

    bool ReadSize(const std::uint8_t* pData, std::size_t cb, Size& size);
    static Size SizeToDecode(const Size& stored, const Size& wanted);
    bool DecodeInto(const std::uint8_t* pData, std::size_t cb, const Size& size, std::uint8_t* pPixels);

    const Size m_wanted;
    std::unique_ptr<void, HandleCloser> m_pHandle; ///< of TurboJPEG; made with the first picture
    std::vector<std::uint8_t> m_unscaled;          ///< picture before the last scaling
};
