/// @file PngCodec.h
/// PNG pictures through libpng: every colour type and depth, interlaced or not; the default picture of an animation.
#pragma once

#include "pal/imaging/ImageCodec.h"

namespace pal
{
class PngCodec final : public ImageCodec
{
public:
    static HRESULT Open(const ImageBytes& bytes, ImageCodecPtr& pCodec);

    const GUID& ContainerFormat() const override { return GUID_ContainerFormatPng; }
    HRESULT GetFrameSize(UINT, ImageSize& size) override;
    HRESULT Decode(UINT, BYTE* pTarget, std::size_t stride) override;
    USHORT Orientation(UINT) const override { return m_orientation; }

private:
    explicit PngCodec(const ImageBytes& bytes) : m_bytes(bytes) {}
    USHORT FindOrientation() const;

    ImageBytes m_bytes;
    ImageSize m_size;
    USHORT m_orientation = 0;
};
} // namespace pal
