/// @file JpegCodec.h
/// JPEG pictures through TurboJPEG: baseline, progressive, grey, YCbCr, RGB, CMYK and YCCK, 8 bits.
#pragma once

#include "pal/imaging/ImageCodec.h"

namespace pal
{
class JpegCodec final : public ImageCodec
{
public:
    static HRESULT Open(const ImageBytes& bytes, ImageCodecPtr& pCodec);

    const GUID& ContainerFormat() const override { return GUID_ContainerFormatJpeg; }
    HRESULT GetFrameSize(UINT, ImageSize& size) override;
    HRESULT Decode(UINT, BYTE* pTarget, std::size_t stride) override;
    USHORT Orientation(UINT) const override { return m_orientation; }

private:
    explicit JpegCodec(const ImageBytes& bytes) : m_bytes(bytes) {}
    HRESULT ReadHeader();
    void ReadMarkers();

    ImageBytes m_bytes;
    ImageSize m_size;
    UINT m_scans = 0;
    USHORT m_orientation = 0;
    bool m_isCmyk = false;
    bool m_isAdobe = false; ///< the writer marked it, so its inks are stored inverted: 255 is no ink
};
} // namespace pal
