#include "pal/imaging/GifCodec.h"

#include "pal/imaging/ImageLimits.h"

#include <objbase.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace pal
{
namespace
{
constexpr std::size_t kBackgroundIndex = 11; ///< offsets in the file's screen descriptor
constexpr std::size_t kMaxApplicationData = 64U << 10;

HRESULT SetWord(PROPVARIANT& value, UINT number)
{
    value.vt = VT_UI2;
    value.uiVal = static_cast<USHORT>(number);
    return S_OK;
}

HRESULT SetByte(PROPVARIANT& value, UINT number)
{
    value.vt = VT_UI1;
    value.bVal = static_cast<BYTE>(number);
    return S_OK;
}

HRESULT SetBytes(PROPVARIANT& value, const std::vector<BYTE>& bytes)
{
    auto* const pCopy = static_cast<BYTE*>(CoTaskMemAlloc(bytes.size()));
    if (!pCopy)
        return E_OUTOFMEMORY;
    std::memcpy(pCopy, bytes.data(), bytes.size());
    value.vt = VT_VECTOR | VT_UI1;
    value.caub = {static_cast<ULONG>(bytes.size()), pCopy};
    return S_OK;
}

bool Is(LPCWSTR name, LPCWSTR other)
{
    return _wcsicmp(name, other) == 0;
}

WICColor OpaqueColour(const GifColorType& colour)
{
    return 0xFF000000U | static_cast<UINT>(colour.Red) << 16 | static_cast<UINT>(colour.Green) << 8 | colour.Blue;
}

std::array<WICColor, 256> ColourTable(const ColorMapObject* pMap, int transparent)
{
    std::array<WICColor, 256> table{};
    const int count = pMap ? std::min(pMap->ColorCount, 256) : 0;
    for (int i = 0; i < count; ++i)
        table[static_cast<std::size_t>(i)] = OpaqueColour(pMap->Colors[i]);
    if (transparent >= 0 && transparent < 256)
        table[static_cast<std::size_t>(transparent)] = 0;
    return table;
}

void PutRow(const std::array<WICColor, 256>& table, const GifByteType* pIndices, std::size_t count, BYTE* pOut)
{
    for (std::size_t x = 0; x < count; ++x)
        std::memcpy(pOut + x * 4, &table[pIndices[x]], 4); // little-endian: B, G, R, A
}

/// Rows of an interlaced frame in the order in which they are stored.
class RowOrder
{
public:
    RowOrder(UINT height, bool isInterlaced) : m_height(height), m_isInterlaced(isInterlaced) {}
    /// The next row; height when there are no more.
    UINT Next()
    {
        if (!m_isInterlaced)
            return std::min(m_row++, m_height);
        constexpr std::array<UINT, 4> kFirst{0, 4, 2, 1};
        constexpr std::array<UINT, 4> kStep{8, 8, 4, 2};
        while (m_pass < 4)
        {
            const UINT row = kFirst[m_pass] + m_row++ * kStep[m_pass];
            if (row < m_height)
                return row;
            ++m_pass;
            m_row = 0;
        }
        return m_height;
    }

private:
    UINT m_height;
    bool m_isInterlaced;
    UINT m_pass = 0;
    UINT m_row = 0;
};
} // namespace

// ---- opening -----------------------------------------------------------------------------------------------------

HRESULT GifCodec::Open(const ImageBytes& bytes, ImageCodecPtr& pCodec)
{
    std::unique_ptr<GifCodec> pGif(new GifCodec(bytes));
    int error = 0;
    pGif->m_pGif = DGifOpen(pGif.get(), OnRead, &error);
    if (!pGif->m_pGif)
        return error == D_GIF_ERR_NOT_ENOUGH_MEM ? E_OUTOFMEMORY : WINCODEC_ERR_BADHEADER;
    const auto width = static_cast<UINT>(pGif->m_pGif->SWidth);
    const auto height = static_cast<UINT>(pGif->m_pGif->SHeight);
    if (width != 0 && height != 0 && !AcceptsPicture(width, height, bytes.Size()))
        return WINCODEC_ERR_IMAGESIZEOUTOFRANGE; // a viewer would make a canvas of that size
    pGif->ReadRecords();
    if (pGif->m_frames.empty())
        return WINCODEC_ERR_FRAMEMISSING;
    pCodec = std::move(pGif);
    return S_OK;
}

GifCodec::~GifCodec()
{
    if (m_pGif)
        DGifCloseFile(m_pGif, nullptr);
}

int GifCodec::OnRead(GifFileType* pGif, GifByteType* pTarget, int cb)
{
    auto& self = *static_cast<GifCodec*>(pGif->UserData);
    const ImageBytes part = self.m_bytes.Part(self.m_at, static_cast<std::size_t>(std::max(cb, 0)));
    if (part.Size() != 0)
        std::memcpy(pTarget, part.Data(), part.Size());
    self.m_at += part.Size();
    return static_cast<int>(part.Size());
}

/// Notes where the frames lie. Ends at the trailer or at the first damage: what was found until then counts.
void GifCodec::ReadRecords()
{
    std::optional<Control> control;
    GifRecordType record = UNDEFINED_RECORD_TYPE;
    while (m_frames.size() < kMaxImageFrames && DGifGetRecordType(m_pGif, &record) != GIF_ERROR)
    {
        if (record == IMAGE_DESC_RECORD_TYPE)
        {
            if (!ReadFrame(control))
                return;
        }
        else if (record != EXTENSION_RECORD_TYPE || !ReadExtension(control))
        {
            return;
        }
    }
}

bool GifCodec::ReadFrame(std::optional<Control>& control)
{
    Frame frame;
    frame.offset = m_at;
    if (DGifGetImageHeader(m_pGif) == GIF_ERROR)
        return false;
    const GifImageDesc& image = m_pGif->Image;
    frame.left = static_cast<USHORT>(image.Left);
    frame.top = static_cast<USHORT>(image.Top);
    frame.width = static_cast<USHORT>(image.Width);
    frame.height = static_cast<USHORT>(image.Height);
    frame.control = std::exchange(control, std::nullopt);
    m_frames.push_back(frame);
    int codeSize = 0;
    GifByteType* pBlock = nullptr;
    bool isGood = DGifGetCode(m_pGif, &codeSize, &pBlock) != GIF_ERROR;
    while (isGood && pBlock)
        isGood = DGifGetCodeNext(m_pGif, &pBlock) != GIF_ERROR;
    return isGood;
}

bool GifCodec::ReadExtension(std::optional<Control>& control)
{
    int function = 0;
    GifByteType* pBlock = nullptr;
    if (DGifGetExtension(m_pGif, &function, &pBlock) == GIF_ERROR)
        return false;
    GraphicsControlBlock block;
    if (function == GRAPHICS_EXT_FUNC_CODE && pBlock && DGifExtensionToGCB(pBlock[0], pBlock + 1, &block) != GIF_ERROR)
        control = Control{static_cast<USHORT>(block.DelayTime), static_cast<BYTE>(block.DisposalMode),
                          block.TransparentColor};
    if (function == APPLICATION_EXT_FUNC_CODE && pBlock && m_application.empty())
        return ReadApplication(pBlock);
    while (pBlock)
    {
        if (DGifGetExtensionNext(m_pGif, &pBlock) == GIF_ERROR)
            return false;
    }
    return true;
}

/// @param pBlock  the identifier, its length first
bool GifCodec::ReadApplication(const GifByteType* pBlock)
{
    m_application.assign(pBlock + 1, pBlock + 1 + pBlock[0]);
    for (;;)
    {
        GifByteType* pNext = nullptr;
        if (DGifGetExtensionNext(m_pGif, &pNext) == GIF_ERROR)
            return false;
        if (!pNext)
            break;
        if (m_applicationData.size() < kMaxApplicationData)
            m_applicationData.insert(m_applicationData.end(), pNext, pNext + 1 + pNext[0]);
    }
    m_applicationData.push_back(0);
    return true;
}

// ---- pixels ------------------------------------------------------------------------------------------------------

HRESULT GifCodec::GetFrameSize(UINT frame, ImageSize& size)
{
    const Frame& found = m_frames[frame];
    if (found.width == 0 || found.height == 0)
        return WINCODEC_ERR_BADIMAGE;
    if (!AcceptsPicture(found.width, found.height, m_bytes.Size()))
        return WINCODEC_ERR_IMAGESIZEOUTOFRANGE;
    size = {found.width, found.height};
    return S_OK;
}

bool GifCodec::BeginFrame(const Frame& frame)
{
    m_at = frame.offset;
    return DGifGetImageHeader(m_pGif) != GIF_ERROR;
}

HRESULT GifCodec::Decode(UINT index, BYTE* pTarget, std::size_t stride)
{
    const Frame& frame = m_frames[index];
    if (!BeginFrame(frame))
        return WINCODEC_ERR_BADIMAGE;
    const GifImageDesc& image = m_pGif->Image;
    const int transparent = frame.control ? frame.control->transparent : NO_TRANSPARENT_COLOR;
    const auto table = ColourTable(image.ColorMap ? image.ColorMap : m_pGif->SColorMap, transparent);
    m_row.resize(frame.width);
    RowOrder order(frame.height, image.Interlace);
    UINT rows = 0; // rows that have been put
    UINT row = order.Next();
    for (; row < frame.height; row = order.Next(), ++rows)
    {
        if (DGifGetLine(m_pGif, m_row.data(), frame.width) == GIF_ERROR)
            break;
        PutRow(table, m_row.data(), frame.width, pTarget + row * stride);
    }
    if (row == frame.height)
        return S_OK;
    const UINT pixels = ReadBrokenRow(frame, rows, m_row.data());
    if (rows == 0 && pixels == 0)
        return WINCODEC_ERR_BADIMAGE;
    BYTE* const pBroken = pTarget + row * stride;
    PutRow(table, m_row.data(), pixels, pBroken);
    std::memset(pBroken + std::size_t{pixels} * 4, 0, (frame.width - std::size_t{pixels}) * 4);
    for (row = order.Next(); row < frame.height; row = order.Next())
        std::memset(pTarget + row * stride, 0, std::size_t{frame.width} * 4);
    return S_OK;
}

/// Pixels that can be read of the row in which the data end: the library does not tell, so they are read one by one.
/// @return how many
UINT GifCodec::ReadBrokenRow(const Frame& frame, UINT firstRows, GifByteType* pRow)
{
    if (!BeginFrame(frame))
        return 0;
    for (UINT i = 0; i < firstRows; ++i)
    {
        if (DGifGetLine(m_pGif, pRow, frame.width) == GIF_ERROR)
            return 0;
    }
    UINT pixels = 0;
    while (pixels < frame.width && DGifGetLine(m_pGif, pRow + pixels, 1) != GIF_ERROR)
        ++pixels;
    return pixels;
}

std::vector<WICColor> GifCodec::GlobalPalette() const
{
    std::vector<WICColor> colours;
    const ColorMapObject* const pMap = m_pGif->SColorMap;
    for (int i = 0; pMap && i < std::min(pMap->ColorCount, 256); ++i)
        colours.push_back(OpaqueColour(pMap->Colors[i]));
    return colours;
}

// ---- queries -----------------------------------------------------------------------------------------------------

HRESULT GifCodec::Query(const UINT* pFrame, LPCWSTR name, PROPVARIANT& value) const
{
    return pFrame ? QueryFrame(m_frames[*pFrame], name, value) : QueryFile(name, value);
}

HRESULT GifCodec::QueryFile(LPCWSTR name, PROPVARIANT& value) const
{
    if (Is(name, L"/logscrdesc/Width"))
        return SetWord(value, static_cast<UINT>(m_pGif->SWidth));
    if (Is(name, L"/logscrdesc/Height"))
        return SetWord(value, static_cast<UINT>(m_pGif->SHeight));
    if (Is(name, L"/logscrdesc/PixelAspectRatio"))
        return SetByte(value, m_pGif->AspectByte);
    if (Is(name, L"/logscrdesc/BackgroundColorIndex"))
        return SetByte(value, m_bytes.Byte(kBackgroundIndex));
    if (Is(name, L"/logscrdesc/GlobalColorTableFlag"))
    {
        value.vt = VT_BOOL;
        value.boolVal = m_pGif->SColorMap ? VARIANT_TRUE : VARIANT_FALSE;
        return S_OK;
    }
    if (Is(name, L"/appext/application") && !m_application.empty())
        return SetBytes(value, m_application);
    if (Is(name, L"/appext/data") && !m_applicationData.empty())
        return SetBytes(value, m_applicationData);
    return WINCODEC_ERR_PROPERTYNOTFOUND;
}

HRESULT GifCodec::QueryFrame(const Frame& frame, LPCWSTR name, PROPVARIANT& value) const
{
    if (Is(name, L"/imgdesc/Left"))
        return SetWord(value, frame.left);
    if (Is(name, L"/imgdesc/Top"))
        return SetWord(value, frame.top);
    if (Is(name, L"/imgdesc/Width"))
        return SetWord(value, frame.width);
    if (Is(name, L"/imgdesc/Height"))
        return SetWord(value, frame.height);
    if (Is(name, L"/grctlext/Delay") && frame.control)
        return SetWord(value, frame.control->delay);
    if (Is(name, L"/grctlext/Disposal") && frame.control)
        return SetByte(value, frame.control->disposal);
    return WINCODEC_ERR_PROPERTYNOTFOUND;
}
} // namespace pal
