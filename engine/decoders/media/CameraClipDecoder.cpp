#include "engine/decoders/media/CameraClipDecoder.h"

#include "engine/platform/DecoderInterop.h"
#include "engine/platform/JpegFrames.h"
#include "engine/platform/NullReference.h"
#include "engine/platform/PathSeparator.h"
#include "engine/platform/PixelUtility.h"

#include <shlwapi.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

namespace
{
constexpr std::uint32_t kRecordBytes = 24;

struct FreeMemory
{
    void operator()(void* p) const { std::free(p); }
};

bool IsTurnedBySide(std::uint32_t rotation)
{
    return rotation != 0 && rotation != 180;
}

/// Moves to an offset of which only the low 32 bits count; half of them lie before the start of every file.
bool SeekTo(std::FILE* fp, std::uint64_t offset)
{
    const auto low = static_cast<std::int32_t>(static_cast<std::uint32_t>(offset));
    return low >= 0 && std::fseek(fp, low, SEEK_SET) == 0;
}

bool ReadField(std::FILE* fp, std::uint64_t& value)
{
    std::array<std::uint8_t, 8> bytes{};
    if (std::fread(bytes.data(), 1, bytes.size(), fp) != bytes.size())
        return false;
    value = 0;
    for (std::size_t i = bytes.size(); i-- > 0;)
        value = value << 8 | bytes[i];
    return true;
}

/// The pixels of @p frame; with its bytes when they are asked for.
tagSampleInfo Describe(ISampleBuffer& frame, std::uint32_t* pcb = nullptr)
{
    tagSampleInfo info;
    frame.GetBuffer(&info.pData, pcb);
    info.nWidth = frame.GetWidth();
    info.nHeight = frame.GetHeight();
    info.nStride = info.nWidth * 4;
    return info;
}

/// trunc(width * rows / columns).
std::uint32_t HeightFor(std::uint32_t width, std::uint32_t columns, std::uint32_t rows)
{
    const double height = std::trunc(static_cast<double>(width) * rows / columns);
    return height >= 0 && height <= UINT32_MAX ? static_cast<std::uint32_t>(height) : 0;
}
} // namespace

CCameraClipDecoder::~CCameraClipDecoder()
{
    _Close();
}

// ---- opening -----------------------------------------------------------------------------------------------------

bool CCameraClipDecoder::Initialize(const tagDecProp& prop)
{
    if (m_hDecoder != nullptr)
        return true;
    try
    {
        return CDecoder::Initialize(prop) && _Open(m_prop);
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

bool CCameraClipDecoder::_Open(const tagDecProp& prop)
{
    const std::wstring& path = prop.filePath;
    const std::size_t separator = path.rfind(kPathSeparator);
    const std::size_t dot = path.rfind(L'.');
    if (separator == std::wstring::npos || dot == std::wstring::npos || dot < separator)
        return false;
    const std::wstring extension = path.substr(dot + 1);
    const std::wstring stem = path.substr(0, dot);
    const bool isH264 = extension == L"h264";
    if ((!isH264 && extension != L"mjpg") || !PathFileExistsW((stem + L".meta").c_str()))
        return false;
    m_strMetaPath = stem + L".meta";
    m_dwCodec = isH264 ? kCodecH264 : kCodecMjpg;
    m_strMediaPath = stem + (isH264 ? L".mp4" : L".mov");
    if (isH264)
        m_hDecoder = DecoderInterop::CreateDecoder(m_strMediaPath, m_strMetaPath);
    else
        m_hDecoder = JPGCreateDecoder(static_cast<int>(prop.width), static_cast<int>(prop.height));
    if (m_hDecoder == nullptr)
        return false;
    if (!isH264)
    {
        m_fpMedia = _wfopen(m_strMediaPath.c_str(), L"rb");
        m_fpMeta = _wfopen(m_strMetaPath.c_str(), L"rb");
    }
    return true;
}

void CCameraClipDecoder::_Close()
{
    if (m_dwCodec == kCodecMjpg)
        JPGDestroyDecoder(m_hDecoder);
    else
        delete static_cast<DecoderInterop*>(m_hDecoder);
    m_nLastIndex = kTimeUnlimited;
    if (ISampleBuffer* const frame = std::exchange(m_pLastFrame, nullptr))
        frame->Release();
    for (std::FILE** const ppFile : {&m_fpMeta, &m_fpMedia})
    {
        if (std::FILE* const fp = std::exchange(*ppFile, nullptr))
            std::fclose(fp);
    }
}

// ---- frames ------------------------------------------------------------------------------------------------------

ISampleBuffer* CCameraClipDecoder::GetLastFrame()
{
    return SampleBufferPtr::Retain(m_pLastFrame).Detach();
}

ISampleBuffer* CCameraClipDecoder::GetClipVideoFrame(std::uint64_t frameIndex, bool& endOfStream)
{
    if (!IsNullReference(&endOfStream))
        endOfStream = m_hDecoder == nullptr;
    if (m_hDecoder == nullptr)
        return GetLastFrame();
    if (m_prop.rotation == m_nLastRotation && m_pLastFrame != nullptr)
    {
        if (frameIndex == m_nLastIndex)
            return GetLastFrame();
        if (m_bFreshFrame && m_dwCodec == kCodecMjpg)
        {
            m_bFreshFrame = false;
            return GetLastFrame();
        }
    }
    m_nLastRotation = m_prop.rotation;
    SampleBufferPtr frame;
    try
    {
        frame = _MakeFrame(frameIndex);
    }
    catch (const std::bad_alloc&) // memory is short: no frame
    {
    }
    if (!frame)
        return GetLastFrame();
    m_bFreshFrame = true;
    m_nLastIndex = frameIndex;
    if (ISampleBuffer* const old = std::exchange(m_pLastFrame, frame.Detach()))
        old->Release();
    return GetLastFrame();
}

/// Frame @p frameIndex as the property record wants it.
SampleBufferPtr CCameraClipDecoder::_MakeFrame(std::uint64_t frameIndex)
{
    SampleBufferPtr frame = SampleBufferPtr::Adopt(_GetFrameAt(frameIndex));
    if (!frame || (m_prop.flags & kRequestNoAttachment) != 0)
        return frame;
    if (m_dwCodec == kCodecH264)
        return _ConvertNv12(*frame.Get());
    return m_prop.rotation != 0 ? _TurnBgra(*frame.Get()) : frame;
}

ISampleBuffer* CCameraClipDecoder::_GetFrameAt(std::uint64_t frameIndex)
{
    if (m_dwCodec == kCodecH264)
        return static_cast<DecoderInterop*>(m_hDecoder)->GetSample(frameIndex);
    std::uint32_t cb = 0;
    if (!_ReadJpeg(frameIndex, cb))
        return nullptr;
    const std::unique_ptr<tagSampleInfo, FreeMemory> info(
        JPGDecodeFrame(m_hDecoder, m_vecJpeg.data(), static_cast<int>(cb)));
    if (!info)
        return nullptr;
    ISampleBuffer* const frame = CreateSampleBufferEx(kSampleFormatBgra, info.get());
    if (frame == nullptr)
        FreeSamplePixels(info->pData);
    return frame;
}

/// Reads the compressed frame into the first @p cb bytes of m_vecJpeg.
bool CCameraClipDecoder::_ReadJpeg(std::uint64_t frameIndex, std::uint32_t& cb)
{
    constexpr std::uint64_t kMaxBytes = INT32_MAX; // what the JPEG decoder takes
    constexpr std::size_t kStep = 1U << 20;
    if (m_fpMeta == nullptr || m_fpMedia == nullptr)
        return false;
    std::uint64_t time = 0;
    std::uint64_t offset = 0;
    std::uint64_t length = 0;
    const std::uint32_t place = static_cast<std::uint32_t>(frameIndex) * kRecordBytes; // wraps around
    if (!SeekTo(m_fpMeta, place) || !ReadField(m_fpMeta, time) || !ReadField(m_fpMeta, offset) ||
        !ReadField(m_fpMeta, length))
        return false;
    if (length == 0 || length > kMaxBytes || !SeekTo(m_fpMedia, offset))
        return false;
    // Memory grows with what the file really holds, not with what its index claims.
    std::size_t read = 0;
    while (read < length)
    {
        const std::size_t end = std::min<std::size_t>(length, std::max(m_vecJpeg.size(), read + kStep));
        if (m_vecJpeg.size() < end)
            m_vecJpeg.resize(end);
        const std::size_t got = std::fread(m_vecJpeg.data() + read, 1, end - read, m_fpMedia);
        read += got;
        if (read < end)
            return false;
    }
    cb = static_cast<std::uint32_t>(length);
    return true;
}

/// Motion-JPEG: the decoder has made the size that was asked for at the start; what is left is the turn.
SampleBufferPtr CCameraClipDecoder::_TurnBgra(ISampleBuffer& source) const
{
    const std::uint32_t rotation = m_prop.rotation;
    const tagSampleInfo from = Describe(source);
    SampleBufferPtr target =
        SampleBufferPtr::Adopt(CreateSampleBuffer(kSampleFormatBgra, from.nWidth, from.nHeight, 0));
    if (!target)
        return {};
    if (IsTurnedBySide(rotation))
        target->SetSize(from.nHeight, from.nWidth);
    std::uint32_t cb = 0;
    const tagSampleInfo to = Describe(*target.Get(), &cb);
    if (!RotateBGRA(&from, &to, rotation))
        std::memset(to.pData, 0, cb);
    return target;
}

SampleBufferPtr CCameraClipDecoder::_ConvertNv12(ISampleBuffer& source) const
{
    const std::uint32_t rotation = m_prop.rotation;
    const tagSampleInfo from = Describe(source);
    if (from.nWidth == 0)
        return {};
    const std::uint32_t width = m_prop.width;
    const std::uint32_t height = HeightFor(width, from.nWidth, from.nHeight);
    SampleBufferPtr target = SampleBufferPtr::Adopt(CreateSampleBuffer(kSampleFormatBgra, width, height, 0));
    if (!target)
        return {};
    std::uint32_t cb = 0;
    const tagSampleInfo to = Describe(*target.Get(), &cb);
    if (!ScaleAndConvertNV12(&from, &to, rotation, kScaleBilinear))
        std::memset(to.pData, 0, cb);
    if (IsTurnedBySide(rotation))
        target->SetSize(height, width);
    return target;
}
