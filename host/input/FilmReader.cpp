#include "host/input/FilmReader.h"

#include "host/HostError.h"
#include "host/system/Platform.h"

#include <mfapi.h>
#include <propvarutil.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <utility>

namespace qmx::host
{
namespace
{
constexpr DWORD kStream = 0xFFFFFFFCU; // the reader's name for the first video stream
constexpr DWORD kSource = 0xFFFFFFFFU;
} // namespace

FilmReader::FilmReader(const std::filesystem::path& path) : m_path(path)
{
    std::error_code error;
    if (std::filesystem::is_directory(path, error))
        Fail("is a folder");
    errno = 0;
    if (!std::ifstream(path, std::ios::binary))
        throw HostError(ExitCode::Media, path.string(), std::string("cannot be opened: ") + std::strerror(errno));
    Open();
}

void FilmReader::Fail(const char* pReason) const
{
    throw HostError(ExitCode::Media, m_path.string(), pReason);
}

void FilmReader::Check(HRESULT hr) const
{
    if (hr == E_OUTOFMEMORY)
        throw std::bad_alloc();
    if (FAILED(hr))
        Fail("holds no video that can be read");
}

void FilmReader::Open()
{
    RefPtr<IMFAttributes> pAttributes;
    Check(MFCreateAttributes(pAttributes.Put(), 1));
    Check(pAttributes->SetUINT32(MF_SOURCE_READER_ENABLE_ADVANCED_VIDEO_PROCESSING, TRUE));
    Check(MFCreateSourceReaderFromURL(EnginePath(m_path).c_str(), pAttributes.Get(), m_pReader.Put()));
    Check(m_pReader->SetStreamSelection(MF_SOURCE_READER_ALL_STREAMS, FALSE));
    Check(m_pReader->SetStreamSelection(kStream, TRUE));
    RefPtr<IMFMediaType> pNative;
    Check(m_pReader->GetNativeMediaType(kStream, 0, pNative.Put()));
    Check(MFGetAttributeSize(pNative.Get(), MF_MT_FRAME_SIZE, &m_width, &m_height));
    UINT32 rotation = 0;
    if (SUCCEEDED(pNative->GetUINT32(MF_MT_VIDEO_ROTATION, &rotation)) && (rotation == 90 || rotation == 270))
        std::swap(m_width, m_height); // asked for the exchanged size, the reader delivers upright pictures
    if (m_width == 0 || m_height == 0)
        Fail("holds no video that can be read");
    ChooseRate(*pNative.Get());

    RefPtr<IMFMediaType> pOutput;
    Check(MFCreateMediaType(pOutput.Put()));
    Check(pOutput->SetGUID(MF_MT_MAJOR_TYPE, MFMediaType_Video));
    Check(pOutput->SetGUID(MF_MT_SUBTYPE, MFVideoFormat_RGB32));
    Check(MFSetAttributeSize(pOutput.Get(), MF_MT_FRAME_SIZE, m_width, m_height));
    Check(MFSetAttributeRatio(pOutput.Get(), MF_MT_FRAME_RATE, m_rate.Numerator(), m_rate.Denominator()));
    Check(pOutput->SetUINT32(MF_MT_INTERLACE_MODE, MFVideoInterlace_Progressive));
    Check(m_pReader->SetCurrentMediaType(kStream, nullptr, pOutput.Get()));
}

void FilmReader::ChooseRate(IMFMediaType& native)
{
    UINT32 numerator = 0;
    UINT32 denominator = 0;
    if (SUCCEEDED(MFGetAttributeRatio(&native, MF_MT_FRAME_RATE, &numerator, &denominator)) && denominator != 0)
    {
        std::optional<FrameRate> rate = FrameRate::FromFraction(numerator, denominator);
        if (!rate) // terms that are no rate's: rounded to a thousandth
            rate = FrameRate::FromFraction((std::uint64_t{numerator} * 1000 + denominator / 2) / denominator, 1000);
        m_rate = rate.value_or(m_rate);
    }
    PROPVARIANT value;
    PropVariantInit(&value);
    LONGLONG duration = 0;
    if (SUCCEEDED(m_pReader->GetPresentationAttribute(kSource, MF_PD_DURATION, &value)) &&
        SUCCEEDED(PropVariantToInt64(value, &duration)) && duration > 0)
    {
        const auto time = std::min(static_cast<std::uint64_t>(duration), kMaxTime);
        m_statedFrames = static_cast<std::uint64_t>(std::llround(static_cast<double>(time) / 1e7 * m_rate.PerSecond()));
    }
    PropVariantClear(&value);
}

bool FilmReader::Read(Canvas& canvas)
{
    constexpr int kMaxTicks = 1'000; // answers without a picture
    for (int i = 0; i < kMaxTicks; ++i)
    {
        DWORD index = 0;
        DWORD flags = 0;
        LONGLONG time = 0;
        RefPtr<IMFSample> pSample;
        Check(m_pReader->ReadSample(kStream, 0, &index, &flags, &time, pSample.Put()));
        if (pSample)
        {
            CopyPixels(*pSample.Get(), canvas);
            return true;
        }
        if ((flags & MF_SOURCE_READERF_ENDOFSTREAM) != 0)
            return false;
    }
    Fail("brings no more pictures");
}

void FilmReader::CopyPixels(IMFSample& sample, Canvas& canvas) const
{
    const std::size_t cbRow = std::size_t{m_width} * 4;
    RefPtr<IMFMediaBuffer> pBuffer;
    Check(sample.ConvertToContiguousBuffer(pBuffer.Put()));
    BYTE* pPixels = nullptr;
    DWORD cb = 0;
    Check(pBuffer->Lock(&pPixels, nullptr, &cb));
    const bool whole = pPixels != nullptr && cb >= cbRow * m_height;
    for (std::uint32_t y = 0; whole && y < m_height; ++y)
        std::memcpy(canvas.Row(y), pPixels + y * cbRow, cbRow);
    pBuffer->Unlock();
    if (!whole)
        Fail("brings pictures of another size than it states");
}
} // namespace qmx::host
