#include "pal/imaging/PngCodec.h"

#include "pal/imaging/ExifOrientation.h"
#include "pal/imaging/ImageLimits.h"
#include "pal/imaging/PngReader.h"

namespace pal
{
HRESULT PngCodec::Open(const ImageBytes& bytes, ImageCodecPtr& pCodec)
{
    std::unique_ptr<PngCodec> pPng(new PngCodec(bytes));
    PngReader reader(bytes);
    if (!reader.ReadHeader(pPng->m_size))
        return WINCODEC_ERR_BADHEADER;
    if (!AcceptsPicture(pPng->m_size.width, pPng->m_size.height, bytes.Size()))
        return WINCODEC_ERR_IMAGESIZEOUTOFRANGE;
    pPng->m_orientation = pPng->FindOrientation();
    pCodec = std::move(pPng);
    return S_OK;
}

/// The EXIF block may stand before the pixels or behind them, where the library would have to decode them first.
USHORT PngCodec::FindOrientation() const
{
    constexpr std::size_t kSignature = 8;
    constexpr std::size_t kAround = 12; // length, name, checksum
    for (std::size_t at = kSignature; m_bytes.Has(at, kAround); at += kAround + m_bytes.Big32(at))
    {
        const ImageBytes name = m_bytes.Part(at + 4, 4);
        if (name.StartsWith("eXIf", 4))
            return ExifOrientation(m_bytes.Part(at + 8, m_bytes.Big32(at)));
        if (name.StartsWith("IEND", 4))
            break;
    }
    return 0;
}

HRESULT PngCodec::GetFrameSize(UINT, ImageSize& size)
{
    size = m_size;
    return S_OK;
}

HRESULT PngCodec::Decode(UINT, BYTE* pTarget, std::size_t stride)
{
    PngReader reader(m_bytes);
    ImageSize size;
    return reader.ReadHeader(size) && reader.ReadRows(pTarget, stride) ? S_OK : WINCODEC_ERR_BADIMAGE;
}
} // namespace pal
