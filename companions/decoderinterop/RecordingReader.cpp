#include "companions/decoderinterop/RecordingReader.h"

#include "engine/platform/ReturnIfFailed.h"

#include <d3d10.h>
#include <mfapi.h>
#include <mferror.h>
#include <propidl.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace
{
constexpr DWORD kStream = 0xFFFFFFFCU; // the reader's name for the first video stream
constexpr std::int64_t kTimePerSecond = 10'000'000;
/// Frames ahead that are read on to; a seek may lead back to a key frame that lies further behind.
constexpr std::int64_t kReadOnFrames = 8;
/// Samples in a row that bring no later time before a stream is given up.
constexpr int kMaxStalledReads = 1'000;

std::array<std::uint8_t, 256> MakeRangeTable(int offset, int steps)
{
    std::array<std::uint8_t, 256> table{};
    for (int i = 0; i < 256; ++i)
        table[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(offset + (i * steps * 2 + 255) / 510);
    return table;
}
} // namespace

// ---- opening -----------------------------------------------------------------------------------------------------

HRESULT CRecordingReader::Open(const std::wstring& path)
{
    ComPtr<IMFAttributes> pAttributes;
    QMX_RETURN_IF_FAILED(MFCreateAttributes(pAttributes.Put(), 3));
    QMX_RETURN_IF_FAILED(pAttributes->SetUINT32(MF_SOURCE_READER_ENABLE_ADVANCED_VIDEO_PROCESSING, TRUE));
    QMX_RETURN_IF_FAILED(pAttributes->SetUINT32(MF_READWRITE_DISABLE_CONVERTERS, FALSE));
    OfferDevice(pAttributes.Get());
    QMX_RETURN_IF_FAILED(MFCreateSourceReaderFromURL(path.c_str(), pAttributes.Get(), m_pReader.Put()));
    QMX_RETURN_IF_FAILED(m_pReader->SetStreamSelection(MF_SOURCE_READER_ALL_STREAMS, FALSE));
    QMX_RETURN_IF_FAILED(m_pReader->SetStreamSelection(kStream, TRUE));
    QMX_RETURN_IF_FAILED(SetOutput());
    m_window = CFrameWindow(std::size_t{m_width} * m_height * 3 / 2);
    return S_OK;
}

void CRecordingReader::OfferDevice(IMFAttributes* pAttributes)
{
    const D3D_FEATURE_LEVEL levels[] = {D3D_FEATURE_LEVEL_11_1, D3D_FEATURE_LEVEL_11_0};
    D3D11CreateDevice(nullptr, D3D_DRIVER_TYPE_HARDWARE, nullptr, D3D11_CREATE_DEVICE_VIDEO_SUPPORT, levels, 2,
                      D3D11_SDK_VERSION, m_pDevice.Put(), nullptr, nullptr);
    if (!m_pDevice)
        return;
    ComPtr<ID3D10Multithread> pMultithread;
    if (SUCCEEDED(m_pDevice->QueryInterface(IID_PPV_ARGS(pMultithread.Put()))) && pMultithread)
        pMultithread->SetMultithreadProtected(TRUE); // the reader decodes on threads of its own
    UINT resetToken = 0;
    if (FAILED(MFCreateDXGIDeviceManager(&resetToken, m_pDeviceManager.Put())) || !m_pDeviceManager)
        return;
    m_pDeviceManager->ResetDevice(m_pDevice.Get(), resetToken);
    pAttributes->SetUnknown(MF_SOURCE_READER_D3D_MANAGER, m_pDeviceManager.Get());
}

HRESULT CRecordingReader::SetOutput()
{
    ComPtr<IMFMediaType> pNative;
    QMX_RETURN_IF_FAILED(m_pReader->GetNativeMediaType(kStream, 0, pNative.Put()));
    TakeSize(pNative.Get());
    UINT32 rotation = 0;
    if (SUCCEEDED(pNative->GetUINT32(MF_MT_VIDEO_ROTATION, &rotation)) && (rotation == 90 || rotation == 270))
        std::swap(m_width, m_height); // asked for the exchanged size, the reader delivers upright frames
    UINT32 range = MFNominalRange_Unknown;
    if (SUCCEEDED(pNative->GetUINT32(MF_MT_VIDEO_NOMINAL_RANGE, &range)))
        m_fullRange = range == MFNominalRange_0_255;
    UINT32 numerator = 0;
    UINT32 denominator = 0;
    if (SUCCEEDED(MFGetAttributeRatio(pNative.Get(), MF_MT_FRAME_RATE, &numerator, &denominator)) && numerator != 0 &&
        denominator != 0)
    {
        m_rateNum = numerator;
        m_rateDen = denominator;
    }

    ComPtr<IMFMediaType> pOutput;
    QMX_RETURN_IF_FAILED(MFCreateMediaType(pOutput.Put()));
    QMX_RETURN_IF_FAILED(pNative->CopyAllItems(pOutput.Get()));
    QMX_RETURN_IF_FAILED(pOutput->SetGUID(MF_MT_SUBTYPE, MFVideoFormat_NV12));
    QMX_RETURN_IF_FAILED(MFSetAttributeSize(pOutput.Get(), MF_MT_FRAME_SIZE, m_width, m_height));
    QMX_RETURN_IF_FAILED(pOutput->SetUINT32(MF_MT_ALL_SAMPLES_INDEPENDENT, TRUE));
    QMX_RETURN_IF_FAILED(pOutput->SetUINT32(MF_MT_INTERLACE_MODE, MFVideoInterlace_Progressive));
    return m_pReader->SetCurrentMediaType(kStream, nullptr, pOutput.Get());
}

void CRecordingReader::TakeSize(IMFMediaType* pType)
{
    UINT32 width = 0;
    UINT32 height = 0;
    if (SUCCEEDED(MFGetAttributeSize(pType, MF_MT_FRAME_SIZE, &width, &height)))
    {
        m_width = width;
        m_height = height;
    }
}

// ---- time --------------------------------------------------------------------------------------------------------

std::int64_t CRecordingReader::FrameDuration() const
{
    return std::max<std::int64_t>(1, kTimePerSecond * m_rateDen / m_rateNum);
}

std::optional<std::uint64_t> CRecordingReader::TimeOf(std::uint64_t n) const
{
    constexpr std::uint64_t kMaxSeconds = 1'000'000'000;
    if (n > UINT64_MAX / m_rateDen)
        return std::nullopt;
    const std::uint64_t product = n * m_rateDen;
    const std::uint64_t seconds = product / m_rateNum;
    if (seconds > kMaxSeconds)
        return std::nullopt;
    return seconds * kTimePerSecond + product % m_rateNum * kTimePerSecond / m_rateNum;
}

// ---- pictures ----------------------------------------------------------------------------------------------------

SampleBufferPtr CRecordingReader::GetPicture(std::uint64_t time)
{
    if (time > static_cast<std::uint64_t>(INT64_MAX))
        return {};
    // Times in the container are rounded to its clock, and those in the index to theirs.
    constexpr std::int64_t kLeastSlack = 200;
    const std::int64_t slack = std::max(kLeastSlack, FrameDuration() / 50);
    const std::int64_t target = std::max<std::int64_t>(0, static_cast<std::int64_t>(time) - slack);
    if (SampleBufferPtr frame = m_window.Find(target))
        return frame;

    const bool known = m_position != kUnknown;
    const bool backward = known && target <= m_position;
    m_window.Keep(backward);
    m_keepFrom = INT64_MAX;
    if (backward)
        m_keepFrom = target - static_cast<std::int64_t>(m_window.GetCapacity() - 1) * FrameDuration();
    if (!known || backward || target - m_position > kReadOnFrames * FrameDuration())
        Seek(target);
    return ReadUntil(target);
}

void CRecordingReader::Seek(std::int64_t time)
{
    PROPVARIANT position;
    PropVariantInit(&position);
    position.vt = VT_I8;
    position.hVal.QuadPart = time;
    m_position = kUnknown;
    // A reader that delivers the first sample at or after the time leaves none out; one that begins earlier says so by
    // the first sample's time.
    m_before = SUCCEEDED(m_pReader->SetCurrentPosition(GUID_NULL, position)) ? time - 1 : INT64_MAX;
}

HRESULT CRecordingReader::ReadOn(ComPtr<IMFSample>& pSample, std::int64_t& time)
{
    for (int reads = 0; reads < kMaxStalledReads; ++reads)
    {
        DWORD index = 0;
        DWORD flags = 0;
        LONGLONG timestamp = 0;
        QMX_RETURN_IF_FAILED(m_pReader->ReadSample(kStream, 0, &index, &flags, &timestamp, pSample.Put()));
        if ((flags & MF_SOURCE_READERF_CURRENTMEDIATYPECHANGED) != 0)
        {
            ComPtr<IMFMediaType> pType;
            if (SUCCEEDED(m_pReader->GetCurrentMediaType(kStream, pType.Put())))
                TakeSize(pType.Get());
        }
        if (pSample)
        {
            time = timestamp;
            return S_OK;
        }
        if ((flags & MF_SOURCE_READERF_ENDOFSTREAM) != 0)
            return S_FALSE;
    }
    return E_FAIL; // ticks without a sample, for ever
}

SampleBufferPtr CRecordingReader::ReadUntil(std::int64_t target)
{
    int stalled = 0;
    for (;;)
    {
        ComPtr<IMFSample> pSample;
        std::int64_t time = 0;
        if (ReadOn(pSample, time) != S_OK)
        {
            m_position = kUnknown;
            return {};
        }
        stalled = m_position != kUnknown && time <= m_position ? stalled + 1 : 0;
        if (stalled == kMaxStalledReads)
            return {};
        const std::int64_t before = std::min(m_before, time - 1);
        m_position = m_before = time;
        if (time >= target)
        {
            SampleBufferPtr frame = CopyFrame(pSample.Get());
            if (frame)
                m_window.Add(frame, time, before);
            return frame;
        }
        if (time >= m_keepFrom)
        {
            if (const SampleBufferPtr frame = CopyFrame(pSample.Get()))
                m_window.Add(frame, time, before);
        }
    }
}

SampleBufferPtr CRecordingReader::CopyFrame(IMFSample* pSample) const
{
    SampleBufferPtr frame = SampleBufferPtr::Adopt(CreateSampleBuffer(kSampleFormatNv12, m_width, m_height, 0));
    std::uint8_t* pPixels = nullptr;
    std::uint32_t cb = 0;
    if (!frame || !frame->GetBuffer(&pPixels, &cb) || !CopyPixels(pSample, pPixels, cb))
        return {};
    if (m_fullRange)
        LimitRange(pPixels);
    return frame;
}

bool CRecordingReader::CopyPixels(IMFSample* pSample, std::uint8_t* pTarget, std::uint32_t cb) const
{
    ComPtr<IMFMediaBuffer> pBuffer;
    if (FAILED(pSample->ConvertToContiguousBuffer(pBuffer.Put())))
        return false;
    ComPtr<IMF2DBuffer> pPicture;
    DWORD cbPicture = 0;
    if (SUCCEEDED(pBuffer->QueryInterface(IID_PPV_ARGS(pPicture.Put()))) && pPicture)
        return SUCCEEDED(pPicture->GetContiguousLength(&cbPicture)) && cbPicture == cb &&
               SUCCEEDED(pPicture->ContiguousCopyTo(pTarget, cb));
    BYTE* pPixels = nullptr;
    if (FAILED(pBuffer->Lock(&pPixels, nullptr, &cbPicture)))
        return false;
    const bool whole = pPixels != nullptr && cbPicture >= cb;
    if (whole)
        std::memcpy(pTarget, pPixels, cb);
    pBuffer->Unlock();
    return whole;
}

/// Full-range samples to limited range, which is what NV12 frames are taken for.
void CRecordingReader::LimitRange(std::uint8_t* pPixels) const
{
    static const std::array<std::uint8_t, 256> luma = MakeRangeTable(16, 219);
    static const std::array<std::uint8_t, 256> chroma = MakeRangeTable(16, 224);
    const std::size_t cbLuma = std::size_t{m_width} * m_height;
    const std::size_t cbChroma = std::size_t{(m_width + 1) / 2} * 2 * ((m_height + 1) / 2);
    const auto apply = [](std::uint8_t* p, std::size_t cb, const std::array<std::uint8_t, 256>& table)
    { std::transform(p, p + cb, p, [&table](std::uint8_t sample) { return table[sample]; }); };
    apply(pPixels, cbLuma, luma);
    apply(pPixels + cbLuma, cbChroma, chroma);
}
