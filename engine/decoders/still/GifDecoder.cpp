#include "engine/decoders/still/GifDecoder.h"

#include "engine/decoders/still/MetadataValue.h"
#include "engine/platform/ReleaseAndClear.h"
#include "engine/platform/ReturnIfFailed.h"

#include <objbase.h>
#include <wincodec.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <new>

namespace
{
constexpr std::uint32_t kShortestFrame = 90; ///< milliseconds
constexpr std::uint32_t kMsPerDelayUnit = 10;
constexpr UINT kMaxColors = 256;
} // namespace

CGifDecoder::~CGifDecoder()
{
    ReleaseAndClear(m_pSavedBuffer);
    ReleaseAndClear(m_pFrameBuffer);
}

bool CGifDecoder::Initialize(const tagDecProp& prop)
{
    CImageDecoder::Initialize(prop);
    const HRESULT hr = SelectAndDisplayGif();
    m_vecFrameTimes.clear();
    m_nTotalDuration = 0;
    if ((m_prop.flags & kRequestNoTimeTable) == 0)
        ParseFrameTS();
    return hr == S_OK;
}

/// Makes a new canvas for the open file and composes its first frame.
HRESULT CGifDecoder::SelectAndDisplayGif()
{
    QMX_RETURN_IF_FAILED(GetGlobalMetadata());
    return RecoverDeviceResources();
}

/// Starts again at the first frame, on the canvas there is.
HRESULT CGifDecoder::RecoverDeviceResources()
{
    m_nDisposal = kDisposalKeep;
    m_nCurrentFrame = 0;
    m_nNextFrame = 0;
    m_nLoopsDone = 0;
    return m_nFrameCount > 0 ? ComposeNextFrame() : S_OK;
}

// ---- the file as a whole -----------------------------------------------------------------------------------------

HRESULT CGifDecoder::GetGlobalMetadata()
{
    ComPtr<IWICMetadataQueryReader> reader;
    HRESULT hr = E_FAIL;
    m_nFrameCount = 0;
    if (m_pBitmapDecoder != nullptr)
    {
        UINT count = 0;
        hr = m_pBitmapDecoder->GetFrameCount(&count);
        if (SUCCEEDED(hr))
            hr = m_pBitmapDecoder->GetMetadataQueryReader(reader.Put());
        if (SUCCEEDED(hr) && !reader)
            hr = E_FAIL;
        m_nFrameCount = count;
    }
    m_nBackgroundColor = 0;
    if (SUCCEEDED(hr) && FAILED(GetBackgroundColor(reader.Get())))
        m_nBackgroundColor = 0;
    if (SUCCEEDED(hr))
        hr = ReadWord(reader.Get(), L"/logscrdesc/Width", m_nCanvasWidth);
    if (SUCCEEDED(hr))
        hr = ReadWord(reader.Get(), L"/logscrdesc/Height", m_nCanvasHeight);
    if (FAILED(hr)) // nothing of another file may stay
        m_nCanvasWidth = m_nCanvasHeight = 0;
    MakeCanvas();
    if (SUCCEEDED(hr))
        hr = ReadGlobalMetadata(reader.Get());
    if (m_pRaw != nullptr)
    {
        m_pRaw->SetRatioX(m_nDisplayWidth);
        m_pRaw->SetRatioY(m_nDisplayHeight);
    }
    if (SUCCEEDED(hr))
        ReadLoopCount(reader.Get());
    return hr;
}

/// The shape of the screen's pixels: a ratio of (value + 15) / 64, width to height; 0 says nothing.
HRESULT CGifDecoder::ReadGlobalMetadata(IWICMetadataQueryReader* reader)
{
    std::uint32_t value = 0;
    QMX_RETURN_IF_FAILED(ReadByte(reader, L"/logscrdesc/PixelAspectRatio", value));
    m_nDisplayWidth = m_nCanvasWidth;
    m_nDisplayHeight = m_nCanvasHeight;
    if (value != 0)
    {
        const float ratio = (static_cast<float>(value) + 15.0F) / 64.0F;
        if (ratio > 1.0F)
            m_nDisplayHeight = static_cast<std::uint32_t>(static_cast<float>(m_nCanvasHeight) / ratio);
        else
            m_nDisplayWidth = static_cast<std::uint32_t>(static_cast<float>(m_nCanvasWidth) * ratio);
    }
    return S_OK;
}

/// The looping extension: blocks of a length, a 1 and the count in two bytes. A file without one loops for ever too.
void CGifDecoder::ReadLoopCount(IWICMetadataQueryReader* reader)
{
    constexpr std::size_t kIdentifier = 11;
    m_nLoopCount = 0;
    m_bHasLoopCount = 0;
    MetadataBytes bytes;
    if (FAILED(bytes.Read(reader, L"/appext/application")) || bytes.Size() != kIdentifier ||
        (std::memcmp(bytes.Data(), "NETSCAPE2.0", kIdentifier) != 0 &&
         std::memcmp(bytes.Data(), "ANIMEXTS1.0", kIdentifier) != 0))
        return;
    if (FAILED(bytes.Read(reader, L"/appext/data")) || bytes.Size() < 4 || bytes.Data()[0] == 0 || bytes.Data()[1] != 1)
        return;
    m_nLoopCount = bytes.Data()[3] * 256U + bytes.Data()[2];
    m_bHasLoopCount = m_nLoopCount != 0 ? 1 : 0;
}

HRESULT CGifDecoder::GetBackgroundColor(IWICMetadataQueryReader* reader)
{
    bool hasTable = false;
    std::uint32_t index = 0;
    QMX_RETURN_IF_FAILED(ReadBool(reader, L"/logscrdesc/GlobalColorTableFlag", hasTable));
    if (!hasTable)
        return E_FAIL;
    QMX_RETURN_IF_FAILED(ReadByte(reader, L"/logscrdesc/BackgroundColorIndex", index));
    ComPtr<IWICPalette> palette;
    QMX_RETURN_IF_FAILED(m_pFactory->CreatePalette(palette.Put()));
    QMX_RETURN_IF_FAILED(m_pBitmapDecoder->CopyPalette(palette.Get()));
    std::array<WICColor, kMaxColors> colors{};
    UINT count = 0;
    QMX_RETURN_IF_FAILED(palette->GetColors(kMaxColors, colors.data(), &count));
    if (index >= std::min(count, kMaxColors))
        return E_FAIL;
    m_nBackgroundColor = colors[index] & 0x00FFFFFFU; // transparent
    return S_OK;
}

void CGifDecoder::MakeCanvas()
{
    ReleaseAndClear(m_pRaw);
    ReleaseAndClear(m_pSavedBuffer);
    m_pRaw = CreateSampleBuffer(kSampleFormatBgra, m_nCanvasWidth, m_nCanvasHeight, 0);
    if (m_pRaw == nullptr)
        return;
    m_pSavedBuffer = CreateSampleBuffer(m_pRaw->GetFormat(), m_pRaw->GetWidth(), m_pRaw->GetHeight(), 0);
    FillCanvas();
    if (m_pSavedBuffer != nullptr)
        m_pSavedBuffer->CopyFrom(m_pRaw); // a file may ask for what was never saved
}

// ---- times -------------------------------------------------------------------------------------------------------

void CGifDecoder::ParseFrameTS()
{
    try
    {
        m_vecFrameTimes.assign(std::size_t{m_nFrameCount} + 1, 0);
    }
    catch (const std::bad_alloc&)
    {
        return; // frame 0 is shown for every time
    }
    for (std::uint32_t i = 1; i <= m_nFrameCount; ++i)
    {
        const std::uint32_t duration = FrameTime(i - 1);
        m_nTotalDuration += duration;
        m_vecFrameTimes[i] = m_vecFrameTimes[i - 1] + duration;
    }
}

/// Milliseconds for which a frame is shown: its delay, 90 at least. A frame whose metadata cannot be read, or whose
/// delay is no 16-bit number, is not shown at all.
std::uint32_t CGifDecoder::FrameTime(std::uint32_t index)
{
    ComPtr<IWICBitmapFrameDecode> frame;
    ComPtr<IWICMetadataQueryReader> reader;
    if (m_pBitmapDecoder == nullptr || FAILED(m_pBitmapDecoder->GetFrame(index, frame.Put())) || !frame ||
        FAILED(frame->GetMetadataQueryReader(reader.Put())) || !reader)
        return 0;
    std::uint32_t delay = 0;
    bool isWrongType = false;
    ReadMetadata(reader.Get(), L"/grctlext/Delay",
                 [&](const PROPVARIANT& value)
                 {
                     isWrongType = value.vt != VT_UI2;
                     delay = isWrongType ? 0U : value.uiVal;
                     return !isWrongType;
                 });
    return isWrongType ? 0 : std::max(delay * kMsPerDelayUnit, kShortestFrame);
}

std::uint32_t CGifDecoder::FrameAt(std::uint64_t timeMs) const
{
    const std::uint64_t time = m_nTotalDuration != 0 ? timeMs % m_nTotalDuration : 0;
    for (std::size_t i = 0; i + 1 < m_vecFrameTimes.size(); ++i)
    {
        if (m_vecFrameTimes[i] <= time && time < m_vecFrameTimes[i + 1])
            return static_cast<std::uint32_t>(i);
    }
    return 0;
}
