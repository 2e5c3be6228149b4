#include "pal/imaging/TiffCodec.h"

#include "pal/imaging/ExifOrientation.h"
#include "pal/imaging/ImageLimits.h"

#include <libyuv.h>
#include <tiffio.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace pal
{
/// The library's view of the bytes.
struct TiffStream
{
    static tmsize_t Read(thandle_t handle, void* pTarget, tmsize_t cb)
    {
        TiffCodec& codec = *static_cast<TiffCodec*>(handle);
        const ImageBytes part = codec.m_bytes.Part(codec.m_at, static_cast<std::size_t>(std::max<tmsize_t>(cb, 0)));
        if (part.Size() != 0)
            std::memcpy(pTarget, part.Data(), part.Size());
        codec.m_at += part.Size();
        return static_cast<tmsize_t>(part.Size());
    }
    static tmsize_t Write(thandle_t, void*, tmsize_t) { return 0; }
    static toff_t Seek(thandle_t handle, toff_t offset, int whence)
    {
        TiffCodec& codec = *static_cast<TiffCodec*>(handle);
        const std::uint64_t base = whence == SEEK_CUR ? codec.m_at : whence == SEEK_END ? codec.m_bytes.Size() : 0;
        codec.m_at = base + offset;
        return codec.m_at;
    }
    static int Close(thandle_t) { return 0; }
    static toff_t Size(thandle_t handle) { return static_cast<TiffCodec*>(handle)->m_bytes.Size(); }
    static int Map(thandle_t handle, void** ppBase, toff_t* pcb)
    {
        const ImageBytes& bytes = static_cast<TiffCodec*>(handle)->m_bytes;
        *ppBase = const_cast<BYTE*>(bytes.Data()); // only read
        *pcb = bytes.Size();
        return 1;
    }
    static void Unmap(thandle_t, void*, toff_t) {}
    static int Silence(TIFF*, void*, const char*, const char*, va_list) { return 1; } // nothing is printed
};

namespace
{
/// What the library may take in one piece beyond the picture's own 16 bytes a pixel (four floating-point samples).
constexpr std::uint64_t kSpareBytes = 16ULL << 20;

struct OptionsDeleter
{
    void operator()(TIFFOpenOptions* p) const { TIFFOpenOptionsFree(p); }
};

/// The library's conversion of any picture to 8-bit RGBA.
struct RgbaImage : TIFFRGBAImage
{
    explicit RgbaImage(TIFF* pTiff) : TIFFRGBAImage{}
    {
        char reason[1024];
        isOpen = TIFFRGBAImageBegin(this, pTiff, 0, reason) != 0;
    }
    ~RgbaImage()
    {
        if (isOpen)
            TIFFRGBAImageEnd(this);
    }
    RgbaImage(const RgbaImage&) = delete;
    RgbaImage& operator=(const RgbaImage&) = delete;

    bool isOpen;
};

/// What the first extra sample is; EXTRASAMPLE_UNSPECIFIED without one.
UINT AlphaKind(TIFF* pTiff)
{
    std::uint16_t count = 0;
    const std::uint16_t* pKinds = nullptr;
    const bool found = TIFFGetField(pTiff, TIFFTAG_EXTRASAMPLES, &count, &pKinds) != 0 && count != 0 && pKinds;
    return found ? pKinds[0] : EXTRASAMPLE_UNSPECIFIED;
}

/// Changes the kind for the reader; the file stays as it is.
void SetAlphaKind(TIFF* pTiff, std::uint16_t kind)
{
    std::uint16_t count = 0;
    const std::uint16_t* pKinds = nullptr;
    if (TIFFGetField(pTiff, TIFFTAG_EXTRASAMPLES, &count, &pKinds) == 0 || count == 0)
        return;
    std::vector<std::uint16_t> kinds(pKinds, pKinds + count); // the library frees its own
    kinds[0] = kind;
    TIFFSetField(pTiff, TIFFTAG_EXTRASAMPLES, count, kinds.data());
}

/// Colours that have been multiplied by their alpha, in place to straight ones. Order of the channels: alpha last.
void Unmultiply(BYTE* pRow, std::size_t width)
{
    for (BYTE* p = pRow; p < pRow + width * 4; p += 4)
    {
        const UINT alpha = p[3];
        for (int channel = 0; alpha != 0 && alpha != 0xFF && channel < 3; ++channel)
            p[channel] = static_cast<BYTE>(std::min(255U, (p[channel] * 255U + alpha / 2) / alpha));
    }
}
} // namespace

TiffCodec::~TiffCodec()
{
    if (m_pTiff)
        TIFFClose(m_pTiff);
}

HRESULT TiffCodec::Open(const ImageBytes& bytes, ImageCodecPtr& pCodec)
{
    std::unique_ptr<TiffCodec> pTiff(new TiffCodec(bytes));
    HRESULT hr = pTiff->OpenLibrary();
    if (FAILED(hr))
        return hr;
    ImageSize size;
    hr = pTiff->GetFrameSize(0, size);
    if (FAILED(hr))
        return hr;
    pTiff->m_count = std::min<UINT>(TIFFNumberOfDirectories(pTiff->m_pTiff), kMaxImageFrames);
    pCodec = std::move(pTiff);
    return S_OK;
}

HRESULT TiffCodec::OpenLibrary()
{
    const std::unique_ptr<TIFFOpenOptions, OptionsDeleter> pOptions(TIFFOpenOptionsAlloc());
    if (!pOptions)
        return E_OUTOFMEMORY;
    TIFFOpenOptionsSetMaxSingleMemAlloc(pOptions.get(), static_cast<tmsize_t>(kMaxImagePixels * 4));
    TIFFOpenOptionsSetErrorHandlerExtR(pOptions.get(), TiffStream::Silence, nullptr);
    TIFFOpenOptionsSetWarningHandlerExtR(pOptions.get(), TiffStream::Silence, nullptr);
    m_pTiff =
        TIFFClientOpenExt("picture", "r", this, TiffStream::Read, TiffStream::Write, TiffStream::Seek,
                          TiffStream::Close, TiffStream::Size, TiffStream::Map, TiffStream::Unmap, pOptions.get());
    return m_pTiff ? S_OK : WINCODEC_ERR_BADHEADER;
}

/// Makes a page the library's current one and checks what it would take.
HRESULT TiffCodec::SelectPage(UINT frame, ImageSize& size) const
{
    if (TIFFCurrentDirectory(m_pTiff) != frame && TIFFSetDirectory(m_pTiff, static_cast<tdir_t>(frame)) == 0)
        return WINCODEC_ERR_FRAMEMISSING;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    if (TIFFGetField(m_pTiff, TIFFTAG_IMAGEWIDTH, &width) == 0 ||
        TIFFGetField(m_pTiff, TIFFTAG_IMAGELENGTH, &height) == 0)
        return WINCODEC_ERR_BADHEADER;
    if (!AcceptsPicture(width, height, m_bytes.Size()))
        return WINCODEC_ERR_IMAGESIZEOUTOFRANGE;
    // A tile is decoded whole, however little of it shows.
    const std::uint64_t piece = TIFFIsTiled(m_pTiff) != 0 ? TIFFTileSize64(m_pTiff) : TIFFStripSize64(m_pTiff);
    if (piece > std::uint64_t{width} * height * 16 + kSpareBytes)
        return WINCODEC_ERR_IMAGESIZEOUTOFRANGE;
    char reason[1024];
    if (TIFFRGBAImageOK(m_pTiff, reason) == 0)
        return WINCODEC_ERR_UNSUPPORTEDPIXELFORMAT;
    size = {width, height};
    return S_OK;
}

HRESULT TiffCodec::GetFrameSize(UINT frame, ImageSize& size)
{
    return SelectPage(frame, size);
}

USHORT TiffCodec::Orientation(UINT frame) const
{
    ImageSize size;
    std::uint16_t orientation = 0;
    if (FAILED(SelectPage(frame, size)) || TIFFGetField(m_pTiff, TIFFTAG_ORIENTATION, &orientation) == 0)
        return 0;
    return CheckedOrientation(orientation);
}

HRESULT TiffCodec::Decode(UINT frame, BYTE* pTarget, std::size_t stride)
{
    ImageSize size;
    const HRESULT hr = SelectPage(frame, size);
    if (FAILED(hr))
        return hr;
    const UINT alpha = AlphaKind(m_pTiff);
    // The library would multiply straight colours by their alpha, for good; taken for multiplied ones they stay.
    if (alpha == EXTRASAMPLE_UNASSALPHA)
        SetAlphaKind(m_pTiff, EXTRASAMPLE_ASSOCALPHA);
    RgbaImage image(m_pTiff);
    if (alpha == EXTRASAMPLE_UNASSALPHA)
        SetAlphaKind(m_pTiff, EXTRASAMPLE_UNASSALPHA);
    if (!image.isOpen)
        return WINCODEC_ERR_BADIMAGE;
    image.req_orientation = image.orientation; // as it is stored

    const std::size_t cbRow = std::size_t{size.width} * 4;
    const std::unique_ptr<std::uint32_t[]> pRaster(new std::uint32_t[std::size_t{size.width} * size.height]());
    if (TIFFRGBAImageGet(&image, pRaster.get(), size.width, size.height) == 0)
        return WINCODEC_ERR_BADIMAGE;
    const BYTE* pRow = reinterpret_cast<const BYTE*>(pRaster.get());
    for (UINT y = 0; y < size.height; ++y, pRow += cbRow)
    {
        BYTE* const pOut = pTarget + y * stride;
        libyuv::ABGRToARGB(pRow, 0, pOut, 0, static_cast<int>(size.width), 1);
        if (alpha == EXTRASAMPLE_ASSOCALPHA)
            Unmultiply(pOut, size.width);
    }
    return S_OK;
}
} // namespace pal
