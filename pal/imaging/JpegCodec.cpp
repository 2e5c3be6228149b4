#include "pal/imaging/JpegCodec.h"

#include "pal/imaging/ExifOrientation.h"
#include "pal/imaging/ImageLimits.h"

#include <turbojpeg.h>

#include <cstring>
#include <type_traits>

namespace pal
{
namespace
{
struct TurboDeleter
{
    void operator()(void* p) const { tjDestroy(p); }
};
using TurboPtr = std::unique_ptr<std::remove_pointer_t<tjhandle>, TurboDeleter>;

constexpr BYTE kApp1 = 0xE1;
constexpr BYTE kApp14 = 0xEE;
constexpr BYTE kStartOfScan = 0xDA;
constexpr BYTE kEndOfImage = 0xD9;

/// Markers without a length behind them.
bool StandsAlone(BYTE marker)
{
    return marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8);
}

/// Place of the next marker's code at or after @p at, behind data in which 0xFF is stuffed; the size when there is
/// none.
std::size_t NextMarker(const ImageBytes& bytes, std::size_t at)
{
    while (at < bytes.Size())
    {
        const void* const p = std::memchr(bytes.Data() + at, 0xFF, bytes.Size() - at);
        if (!p)
            break;
        at = static_cast<std::size_t>(static_cast<const BYTE*>(p) - bytes.Data()) + 1;
        const BYTE code = bytes.Byte(at);
        if (at < bytes.Size() && code != 0 && code != 0xFF && !StandsAlone(code))
            return at;
    }
    return bytes.Size();
}

/// Ink amounts in place to B, G, R, A: what one ink lets through times what black lets through.
void CmykToBgra(BYTE* pRow, UINT width, bool isInverted)
{
    const BYTE flip = isInverted ? 0 : 0xFF;
    for (BYTE* p = pRow; p < pRow + std::size_t{width} * 4; p += 4)
    {
        const UINT black = p[3] ^ flip;
        const auto light = [black, flip](BYTE ink) { return static_cast<BYTE>(((ink ^ flip) * black + 127U) / 255U); };
        const BYTE red = light(p[0]);
        p[1] = light(p[1]);
        p[0] = light(p[2]);
        p[2] = red;
        p[3] = 0xFF;
    }
}
} // namespace

HRESULT JpegCodec::Open(const ImageBytes& bytes, ImageCodecPtr& pCodec)
{
    std::unique_ptr<JpegCodec> pJpeg(new JpegCodec(bytes));
    const HRESULT hr = pJpeg->ReadHeader();
    if (SUCCEEDED(hr))
        pCodec = std::move(pJpeg);
    return hr;
}

HRESULT JpegCodec::ReadHeader()
{
    const TurboPtr pTurbo(tjInitDecompress());
    if (!pTurbo)
        return E_OUTOFMEMORY;
    int width = 0;
    int height = 0;
    int subsampling = 0;
    int colours = 0;
    if (tjDecompressHeader3(pTurbo.get(), m_bytes.Data(), static_cast<unsigned long>(m_bytes.Size()), &width, &height,
                            &subsampling, &colours) != 0 ||
        width <= 0 || height <= 0)
        return WINCODEC_ERR_BADHEADER; // 12-bit pictures as well
    m_size = {static_cast<UINT>(width), static_cast<UINT>(height)};
    m_isCmyk = colours == TJCS_CMYK || colours == TJCS_YCCK;
    if (!AcceptsPicture(m_size.width, m_size.height, m_bytes.Size()))
        return WINCODEC_ERR_IMAGESIZEOUTOFRANGE;
    ReadMarkers();
    if (std::uint64_t{m_scans} * m_size.width * m_size.height > kMaxScannedPixels)
        return WINCODEC_ERR_IMAGESIZEOUTOFRANGE;
    return S_OK;
}

void JpegCodec::ReadMarkers()
{
    for (std::size_t at = NextMarker(m_bytes, 2); at < m_bytes.Size();)
    {
        const BYTE marker = m_bytes.Byte(at);
        if (marker == kEndOfImage)
            break;
        const std::size_t cb = m_bytes.Big16(at + 1); // its own two bytes included
        const ImageBytes segment = m_bytes.Part(at + 3, cb > 2 ? cb - 2 : 0);
        if (marker == kStartOfScan)
            ++m_scans;
        else if (marker == kApp1 && m_orientation == 0 && segment.StartsWith("Exif\0\0", 6))
            m_orientation = ExifOrientation(segment);
        else if (marker == kApp14 && segment.StartsWith("Adobe", 5))
            m_isAdobe = true;
        at = NextMarker(m_bytes, at + 1 + cb);
    }
}

HRESULT JpegCodec::GetFrameSize(UINT, ImageSize& size)
{
    size = m_size;
    return S_OK;
}

HRESULT JpegCodec::Decode(UINT, BYTE* pTarget, std::size_t stride)
{
    const TurboPtr pTurbo(tjInitDecompress());
    if (!pTurbo)
        return E_OUTOFMEMORY;
    const int decoded =
        tjDecompress2(pTurbo.get(), m_bytes.Data(), static_cast<unsigned long>(m_bytes.Size()), pTarget,
                      static_cast<int>(m_size.width), static_cast<int>(stride), static_cast<int>(m_size.height),
                      m_isCmyk ? TJPF_CMYK : TJPF_BGRA, TJFLAG_LIMITSCANS);
    if (decoded != 0 && tjGetErrorCode(pTurbo.get()) == TJERR_FATAL)
        return WINCODEC_ERR_BADIMAGE; // after a warning the library has filled in what is missing
    for (UINT y = 0; m_isCmyk && y < m_size.height; ++y)
        CmykToBgra(pTarget + y * stride, m_size.width, m_isAdobe);
    return S_OK;
}
} // namespace pal
