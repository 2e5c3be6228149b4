/// @file IcoCodec.h
/// Icons and cursors.
#pragma once

#include "pal/imaging/Dib.h"

#include <vector>

namespace pal
{
/// Frames are the entries that can be read, the largest first and, of equal size, the deepest: frame 0 is the picture
/// that the icon's author would show on a large screen.
class IcoCodec final : public ImageCodec
{
public:
    static HRESULT Open(const ImageBytes& bytes, ImageCodecPtr& pCodec);

    const GUID& ContainerFormat() const override { return GUID_ContainerFormatIco; }
    UINT FrameCount() const override { return static_cast<UINT>(m_entries.size()); }
    HRESULT GetFrameSize(UINT frame, ImageSize& size) override;
    HRESULT Decode(UINT frame, BYTE* pTarget, std::size_t stride) override;
    USHORT Orientation(UINT) const override { return 0; }

private:
    struct Entry
    {
        ImageSize size;
        UINT bits = 0;
        ImageCodecPtr pPng; ///< null: the bitmap counts
        Dib dib;
    };

    std::vector<Entry> m_entries;
};
} // namespace pal
