/// @file TiffCodec.h
/// TIFF pictures through libtiff, with all the compressions that it knows; each page is a frame.
#pragma once

#include "pal/imaging/ImageCodec.h"

struct tiff;

namespace pal
{
class TiffCodec final : public ImageCodec
{
public:
    static HRESULT Open(const ImageBytes& bytes, ImageCodecPtr& pCodec);
    ~TiffCodec() override;

    const GUID& ContainerFormat() const override { return GUID_ContainerFormatTiff; }
    UINT FrameCount() const override { return m_count; }
    HRESULT GetFrameSize(UINT frame, ImageSize& size) override;
    HRESULT Decode(UINT frame, BYTE* pTarget, std::size_t stride) override;
    USHORT Orientation(UINT frame) const override;

private:
    explicit TiffCodec(const ImageBytes& bytes) : m_bytes(bytes) {}
    HRESULT OpenLibrary();
    HRESULT SelectPage(UINT frame, ImageSize& size) const;

    const ImageBytes m_bytes;
    tiff* m_pTiff = nullptr; // owned; its place in m_bytes is m_at
    std::uint64_t m_at = 0;
    UINT m_count = 0;

    friend struct TiffStream;
};
} // namespace pal
