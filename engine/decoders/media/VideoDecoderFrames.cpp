#include "engine/decoders/media/LockedPicture.h"
#include "engine/decoders/media/VideoDecoder.h"
#include "engine/platform/NullReference.h"
#include "engine/platform/PixelUtility.h"

#include <mfapi.h>
#include <mfidl.h>
#include <mfreadwrite.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace
{
constexpr std::uint64_t kMaxSide = 32'767;
constexpr std::uint64_t kMaxPixelBytes = 1ULL << 30;
/// Reads in a row that bring no later time before the stream is given up: a gap is skipped, a broken one is not
/// waited for.
constexpr int kMaxStalledReads = 1'000;

template <class T> void ReleaseAndClear(T*& p)
{
    if (T* const old = std::exchange(p, nullptr))
        old->Release();
}

/// One more reference on @p p for a caller; null stays null.
ISampleBuffer* Share(ISampleBuffer* p)
{
    return SampleBufferPtr::Retain(p).Detach();
}

bool IsUpright(std::uint32_t angle)
{
    return angle == 0 || angle == 180;
}

/// Time stamps are signed, requests are not: what lies before the start reaches no request.
bool HasReached(LONGLONG timestamp, std::uint64_t time)
{
    return timestamp >= 0 && static_cast<std::uint64_t>(timestamp) >= time;
}

tagSampleInfo DescribeBgra(std::uint8_t* pixels, std::uint32_t width, std::uint32_t height, std::uint32_t stride)
{
    tagSampleInfo info;
    info.pData = pixels;
    info.nWidth = width;
    info.nHeight = height;
    info.nStride = stride;
    return info;
}

void CopyRows(const CLockedPicture& picture, std::uint8_t* pTarget, std::uint64_t cbRow, std::uint64_t nRows)
{
    const std::int64_t stride = picture.GetStride(cbRow);
    const std::uint8_t* pSource = picture.GetPixels();
    for (std::uint64_t row = 0; row < nRows; ++row, pSource += stride, pTarget += cbRow)
        std::memcpy(pTarget, pSource, cbRow);
}

/// True for a picture of a size that this system handles.
bool IsUsableSize(std::uint64_t width, std::uint64_t height)
{
    return width != 0 && height != 0 && width <= kMaxSide && height <= kMaxSide && width * height * 4 <= kMaxPixelBytes;
}
} // namespace

// ---- reading -------------------------------------------------------------------------------------------------

void CVideoDecoder::_OnMediaTypeChanged(DWORD streamFlags, DWORD streamIndex)
{
    if ((streamFlags & MF_SOURCE_READERF_CURRENTMEDIATYPECHANGED) == 0)
        return;
    ComPtr<IMFMediaType> pType;
    if (FAILED(m_pReader->GetCurrentMediaType(streamIndex, pType.Put())) || !pType)
        return;
    UINT32 width = 0;
    UINT32 height = 0;
    if (FAILED(MFGetAttributeSize(pType.Get(), MF_MT_FRAME_SIZE, &width, &height)))
        width = height = 0;
    m_nDecodedWidth = width;
    m_nDecodedHeight = height;
}

void CVideoDecoder::_SeekTo(std::uint64_t time)
{
    PROPVARIANT position;
    PropVariantInit(&position);
    position.vt = VT_I8;
    position.hVal.QuadPart = static_cast<LONGLONG>(time); // beyond what is signed: no place, as past the end
    m_pReader->SetCurrentPosition(GUID_NULL, position);
}

/// Reads samples until one reaches @p time, the stream ends or nothing more comes.
/// @param ppSample     [in, out] the newest sample; each older one is released.
/// @param atEnd        whether the newest sample survives an end of the stream that comes without one.
/// @return the flags of the last read.
DWORD CVideoDecoder::_ReadUntil(std::uint64_t time, IMFSample** ppSample, AtEnd atEnd)
{
    LONGLONG latest = std::numeric_limits<LONGLONG>::min();
    for (int nStalled = 0; nStalled < kMaxStalledReads;)
    {
        DWORD index = 0;
        DWORD flags = 0;
        LONGLONG timestamp = 0;
        ComPtr<IMFSample> pSample;
        const HRESULT hr = m_pReader->ReadSample(m_dwStreamIdx, 0, &index, &flags, &timestamp, pSample.Put());
        _OnMediaTypeChanged(flags, index);
        if (pSample || atEnd == AtEnd::DropSample)
        {
            ReleaseAndClear(*ppSample);
            *ppSample = pSample.Detach();
        }
        if (FAILED(hr) || (flags & (MF_SOURCE_READERF_ENDOFSTREAM | MF_SOURCE_READERF_ERROR)) != 0 ||
            HasReached(timestamp, time))
            return flags;
        nStalled = timestamp > latest ? 0 : nStalled + 1;
        latest = std::max(latest, timestamp);
    }
    return 0;
}

void CVideoDecoder::_SkipPreload(std::uint64_t time)
{
    ReleaseAndClear(m_pPendingSample);
    _SeekTo(time);
    if (time != 0)
        _ReadUntil(time, &m_pPendingSample, AtEnd::DropSample);
    if (time != 0 && m_pPendingSample == nullptr)
        _SeekBack(time, &m_pPendingSample);
    m_llLastTime = time;
}

/// Where the record allows it: starts again one second earlier, for files whose last key frames a seek passes by.
/// What is shown at the very end of the file is then the last picture.
void CVideoDecoder::_SeekBack(std::uint64_t time, IMFSample** ppSample)
{
    if ((m_prop.flags & kRequestSeekBack) == 0)
        return;
    m_pReader->Flush(m_dwStreamIdx);
    _SeekTo(time - std::min(time, kTimePerSecond));
    _ReadUntil(time, ppSample, AtEnd::KeepSample);
}

// ---- frames --------------------------------------------------------------------------------------------------

ISampleBuffer* CVideoDecoder::GetClipVideoFrame(std::uint64_t time, bool& endOfStream)
{
    if (IsNullReference(&endOfStream))
        return nullptr;
    endOfStream = false;
    try
    {
        return m_pReader != nullptr ? _GetFrameAt(time, endOfStream) : _GetBlankFrame();
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
}

ISampleBuffer* CVideoDecoder::_GetBlankFrame()
{
    if (m_pLastFrame == nullptr)
    {
        SampleBufferPtr pFrame =
            SampleBufferPtr::Adopt(CreateSampleBuffer(kSampleFormatBgra, m_prop.width, m_prop.height, 0));
        std::uint8_t* pPixels = nullptr;
        std::uint32_t cb = 0;
        if (!pFrame || !pFrame->GetBuffer(&pPixels, &cb))
            return nullptr;
        std::memset(pPixels, 0, cb);
        m_pLastFrame = pFrame.Detach();
    }
    return Share(m_pLastFrame);
}

ISampleBuffer* CVideoDecoder::_GetFrameAt(std::uint64_t time, bool& endOfStream)
{
    const bool sameRotation = std::exchange(m_nLastRotation, m_prop.rotation) == m_prop.rotation;
    const bool sameTime = time == m_llLastTime && m_pLastFrame != nullptr;
    if (sameTime && sameRotation && _LastFrameFits())
        return Share(m_pLastFrame);

    // The reader stands behind the picture of the same time, which is wanted in another shape: it is sought again.
    if (sameTime || time < m_llLastTime || time - m_llLastTime >= 3 * m_prop.frameDuration)
        _SkipPreload(time);
    ComPtr<IMFSample> pSample = ComPtr<IMFSample>::Adopt(std::exchange(m_pPendingSample, nullptr));
    if (!pSample)
    {
        if ((_ReadUntil(time, pSample.Put(), AtEnd::DropSample) & MF_SOURCE_READERF_ENDOFSTREAM) != 0)
        {
            endOfStream = true;
            return Share(m_pLastFrame);
        }
        if (!pSample)
            _SeekBack(time, pSample.Put());
    }
    m_llLastTime = time;
    if (m_vecFrameBuffer.empty() && IsUsableSize(m_nFrameWidth, m_nFrameHeight))
        m_vecFrameBuffer.resize(std::size_t{m_nFrameHeight} * m_nFrameWidth * 4);
    if (!pSample)
        return nullptr;

    SampleBufferPtr pFrame = _MakeFrame(pSample.Get());
    if (!pFrame)
        return nullptr;
    ReleaseAndClear(m_pLastFrame);
    m_pLastFrame = pFrame.Detach();
    return Share(m_pLastFrame);
}

std::uint32_t CVideoDecoder::_GetAngle() const
{
    return (m_prop.rotation - m_nBaseRotation + 360) % 360;
}

/// False when the record asks for another width than the last frame has: decoders are shared by clips.
bool CVideoDecoder::_LastFrameFits() const
{
    const std::uint32_t width = IsUpright(_GetAngle()) ? m_pLastFrame->GetWidth() : m_pLastFrame->GetHeight();
    return width == m_prop.width;
}

/// Rows of a frame as wide as the record asks: what keeps the display aspect, truncated to an even number.
/// @return 0 when there is no such frame.
std::uint32_t CVideoDecoder::_GetOutputHeight() const
{
    const double across = static_cast<double>(m_nPixelAspectX) * m_nFrameWidth;
    const double down = static_cast<double>(m_nPixelAspectY) * m_nFrameHeight;
    const double height = std::trunc(m_prop.width * down / across);
    if (!(height >= 2 && height <= static_cast<double>(kMaxSide))) // also what is not a number
        return 0;
    return static_cast<std::uint32_t>(height) & ~1U;
}

/// The picture of @p pSample, cut to the nominal size, scaled and turned. Null when it cannot be had.
SampleBufferPtr CVideoDecoder::_MakeFrame(IMFSample* pSample)
{
    const std::uint32_t width = m_prop.width;
    const std::uint32_t height = _GetOutputHeight();
    CLockedPicture picture;
    if (height == 0 || FAILED(picture.Lock(pSample)))
        return {};
    tagSampleInfo source;
    if (!_DescribePicture(picture, source))
        return {};

    SampleBufferPtr pFrame = SampleBufferPtr::Adopt(CreateSampleBuffer(kSampleFormatBgra, width, height, 0));
    std::uint8_t* pPixels = nullptr;
    std::uint32_t cb = 0;
    if (!pFrame || !pFrame->GetBuffer(&pPixels, &cb))
        return {};
    const tagSampleInfo target = DescribeBgra(pPixels, width, height, width * 4);
    const std::uint32_t angle = _GetAngle();
    const std::uint32_t mode = (m_prop.flags & kRequestUseCache) != 0 ? kScaleBilinear : kScaleArea;
    if (!ScaleAndRotateBGRA(&source, &target, angle, mode))
        std::memset(pPixels, 0, cb); // whatever the reason, nobody sees what the storage held before
    const bool upright = IsUpright(angle);
    pFrame->SetRatioX(upright ? m_nDisplayAspectX : m_nDisplayAspectY);
    pFrame->SetRatioY(upright ? m_nDisplayAspectY : m_nDisplayAspectX);
    if (!upright)
        pFrame->SetSize(height, width);
    return pFrame;
}

/// Describes the nominal part of @p picture; what the decoder pads beyond it is left out. A stream that has become
/// smaller than its nominal size is described as it is.
/// @return false when the buffer does not hold such a picture.
bool CVideoDecoder::_DescribePicture(const CLockedPicture& picture, tagSampleInfo& info)
{
    const std::uint32_t width = m_nDecodedWidth != 0 ? std::min(m_nFrameWidth, m_nDecodedWidth) : m_nFrameWidth;
    const std::uint32_t height = m_nDecodedHeight != 0 ? std::min(m_nFrameHeight, m_nDecodedHeight) : m_nFrameHeight;
    const std::uint64_t cbRow = std::uint64_t{width} * 4;
    if (!IsUsableSize(width, height) || !picture.Holds(cbRow, height, std::uint64_t{m_nDecodedWidth} * 4))
        return false;
    const std::int64_t stride = picture.GetStride(cbRow);
    // The pixel library only reads the source.
    auto* pPixels = const_cast<std::uint8_t*>(picture.GetPixels());
    if (stride > 0)
    {
        info = DescribeBgra(pPixels, width, height, static_cast<std::uint32_t>(stride));
        return true;
    }
    // Rows stored bottom-up: the pixel library knows no negative strides.
    m_vecFrameBuffer.resize(std::max<std::size_t>(m_vecFrameBuffer.size(), cbRow * height));
    CopyRows(picture, m_vecFrameBuffer.data(), cbRow, height);
    info = DescribeBgra(m_vecFrameBuffer.data(), width, height, static_cast<std::uint32_t>(cbRow));
    return true;
}

bool CVideoDecoder::_CropFrame(IMFSample* pSample, std::uint8_t* pDestination, std::uint32_t cbDestination)
{
    const ComPtr<IMFSample> pOwned = ComPtr<IMFSample>::Adopt(pSample); // the caller's reference is consumed
    CLockedPicture picture;
    if (!pOwned || pDestination == nullptr || FAILED(picture.Lock(pSample)))
        return false;
    const std::uint64_t cbRow = std::uint64_t{m_nFrameWidth} * 4;
    if (cbRow == 0)
        return false;
    const std::uint64_t nRows = std::min<std::uint64_t>(m_nFrameHeight, cbDestination / cbRow);
    if (picture.GetStride(cbRow) == static_cast<std::int64_t>(cbRow) && m_nDecodedHeight == m_nFrameHeight)
    {
        std::memcpy(pDestination, picture.GetPixels(), std::min<std::size_t>(cbDestination, picture.GetLength()));
        return true;
    }
    if (!picture.Holds(cbRow, nRows, std::uint64_t{m_nDecodedWidth} * 4))
        return false;
    CopyRows(picture, pDestination, cbRow, nRows);
    return true;
}
