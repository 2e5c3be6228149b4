/// @file WebpCodec.h
/// WebP pictures through libwebp; of an animation the first frame, on its canvas.
#pragma once

#include "pal/imaging/ImageCodec.h"

namespace pal
{
class WebpCodec final : public ImageCodec
{
public:
    static HRESULT Open(const ImageBytes& bytes, ImageCodecPtr& pCodec);

    const GUID& ContainerFormat() const override { return GUID_ContainerFormatWebp; }
    HRESULT GetFrameSize(UINT, ImageSize& size) override;
    HRESULT Decode(UINT, BYTE* pTarget, std::size_t stride) override;
    USHORT Orientation(UINT) const override { return m_orientation; }

private:
    explicit WebpCodec(const ImageBytes& bytes) : m_bytes(bytes), m_picture(bytes) {}
    HRESULT ReadContainer();

    ImageBytes m_bytes;
    ImageBytes m_picture;  ///< what is decoded: the file, or the first frame of an animation
    ImageSize m_size;      ///< of the canvas
    ImageSize m_frameSize; ///< of what is decoded
    UINT m_left = 0;       ///< where it lies on the canvas
    UINT m_top = 0;
    USHORT m_orientation = 0;
};
} // namespace pal
