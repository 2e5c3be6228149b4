/// @file BmpCodec.h
/// Windows and OS/2 bitmap files.
#pragma once

#include "pal/imaging/Dib.h"

namespace pal
{
class BmpCodec final : public ImageCodec
{
public:
    static HRESULT Open(const ImageBytes& bytes, ImageCodecPtr& pCodec);

    const GUID& ContainerFormat() const override { return GUID_ContainerFormatBmp; }
    HRESULT GetFrameSize(UINT, ImageSize& size) override;
    HRESULT Decode(UINT, BYTE* pTarget, std::size_t stride) override { return m_dib.Decode(pTarget, stride); }
    USHORT Orientation(UINT) const override { return 0; }

private:
    Dib m_dib;
};
} // namespace pal
