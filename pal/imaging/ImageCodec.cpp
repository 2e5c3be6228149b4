#include "pal/imaging/ImageCodec.h"

#include "pal/imaging/BmpCodec.h"
#include "pal/imaging/GifCodec.h"
#include "pal/imaging/IcoCodec.h"
#include "pal/imaging/JpegCodec.h"
#include "pal/imaging/PngCodec.h"
#include "pal/imaging/TiffCodec.h"
#include "pal/imaging/WebpCodec.h"

namespace pal
{
HRESULT ImageCodec::Query(const UINT*, LPCWSTR, PROPVARIANT&) const
{
    return WINCODEC_ERR_PROPERTYNOTFOUND;
}

ImageKind IdentifyImage(const ImageBytes& bytes)
{
    if (bytes.StartsWith("\xFF\xD8\xFF", 3))
        return ImageKind::Jpeg;
    if (bytes.StartsWith("\x89PNG\r\n\x1A\n", 8))
        return ImageKind::Png;
    if (bytes.StartsWith("GIF87a", 6) || bytes.StartsWith("GIF89a", 6))
        return ImageKind::Gif;
    if (bytes.StartsWith("II*\0", 4) || bytes.StartsWith("MM\0*", 4) || bytes.StartsWith("II+\0", 4) ||
        bytes.StartsWith("MM\0+", 4))
        return ImageKind::Tiff;
    if (bytes.StartsWith("RIFF", 4) && bytes.Part(8, 4).StartsWith("WEBP", 4))
        return ImageKind::Webp;
    if (bytes.StartsWith("BM", 2))
        return ImageKind::Bmp;
    // Icons and cursors: weak marks, so the first entry's reserved byte is looked at as well.
    const UINT type = bytes.Little16(2);
    if (bytes.Has(0, 10) && bytes.Little16(0) == 0 && (type == 1 || type == 2) && bytes.Little16(4) != 0 &&
        bytes.Byte(9) == 0)
        return ImageKind::Icon;
    return ImageKind::None;
}

HRESULT OpenImageCodec(const ImageBytes& bytes, ImageCodecPtr& pCodec)
{
    switch (IdentifyImage(bytes))
    {
    case ImageKind::Bmp:
        return BmpCodec::Open(bytes, pCodec);
    case ImageKind::Gif:
        return GifCodec::Open(bytes, pCodec);
    case ImageKind::Icon:
        return IcoCodec::Open(bytes, pCodec);
    case ImageKind::Jpeg:
        return JpegCodec::Open(bytes, pCodec);
    case ImageKind::Png:
        return PngCodec::Open(bytes, pCodec);
    case ImageKind::Tiff:
        return TiffCodec::Open(bytes, pCodec);
    case ImageKind::Webp:
        return WebpCodec::Open(bytes, pCodec);
    case ImageKind::None:
        break;
    }
    return WINCODEC_ERR_COMPONENTNOTFOUND;
}
} // namespace pal
