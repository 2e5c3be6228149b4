/// @file ImageCodec.h
/// What the Imaging Component's objects ask of a picture format.
#pragma once

#include "pal/imaging/ImageBytes.h"

#include <propidl.h>
#include <wincodec.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace pal
{
struct ImageSize
{
    UINT width = 0;
    UINT height = 0;
};

/// One open file. Its headers have been read and its sizes checked; pixels are decoded when they are asked for, each
/// time anew. Used by one thread at a time.
class ImageCodec
{
public:
    ImageCodec() = default;
    virtual ~ImageCodec() = default;
    ImageCodec(const ImageCodec&) = delete;
    ImageCodec& operator=(const ImageCodec&) = delete;

    virtual const GUID& ContainerFormat() const = 0;
    virtual UINT FrameCount() const { return 1; }
    /// @retval WINCODEC_ERR_IMAGESIZEOUTOFRANGE  the frame is there, but too large
    virtual HRESULT GetFrameSize(UINT frame, ImageSize& size) = 0;
    /// Decodes a frame as BGRA with straight alpha, as it is stored: no orientation is applied.
    /// @param pTarget  [out] all rows of the frame, top-down
    /// @param stride   bytes from row to row, at least width * 4
    /// @return a failure only when there is nothing to show: of a damaged picture comes what can be read, the rest is
    ///         transparent black. Throws std::bad_alloc.
    virtual HRESULT Decode(UINT frame, BYTE* pTarget, std::size_t stride) = 0;
    /// The palette that all frames share; empty for none.
    virtual std::vector<WICColor> GlobalPalette() const { return {}; }
    /// EXIF orientation, 1 to 8; 0 when the file does not say. See the metadata query "System.Photo.Orientation".
    virtual USHORT Orientation(UINT frame) const = 0;
    /// Answers a query in the format's own language. Throws std::bad_alloc.
    /// @param pFrame  frame whose values are meant; null for the file's own
    /// @param value   [in, out] empty; left so on failure
    virtual HRESULT Query(const UINT* pFrame, LPCWSTR name, PROPVARIANT& value) const;
};

using ImageCodecPtr = std::unique_ptr<ImageCodec>;

enum class ImageKind
{
    None,
    Bmp,
    Gif,
    Icon,
    Jpeg,
    Png,
    Tiff,
    Webp
};

/// Bytes that IdentifyImage() looks at.
inline constexpr std::size_t kImageSignatureBytes = 16;
/// The format by its first bytes; the file's name plays no part.
ImageKind IdentifyImage(const ImageBytes& bytes);

/// Opens @p bytes with the codec that they belong to.
/// @retval WINCODEC_ERR_COMPONENTNOTFOUND  no codec knows them  @retval WINCODEC_ERR_BADHEADER  they are damaged
/// @retval WINCODEC_ERR_IMAGESIZEOUTOFRANGE  they declare more than ImageLimits.h grants. Throws std::bad_alloc.
HRESULT OpenImageCodec(const ImageBytes& bytes, ImageCodecPtr& pCodec);
} // namespace pal
