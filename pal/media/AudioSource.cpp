#include "pal/media/AudioSource.h"

#include <mfapi.h>
#include <mferror.h>

extern "C"
{
#include <libavutil/mathematics.h>
}

#include <algorithm>
#include <cstring>

namespace pal
{
namespace
{
constexpr std::int64_t kTimePerSecond = 10'000'000;
constexpr std::int64_t kLatestTime = 100'000'000 * kTimePerSecond; // three years; keeps the arithmetic in 64 bits
constexpr std::int64_t kSilenceSamples = 1024;                     // a piece of silence
} // namespace

AudioSource::AudioSource(const MediaFile& file, AVStream& stream) : m_frames(file, stream) {}

HRESULT AudioSource::SetRequest(const AudioRequest& request)
{
    HRESULT hr = m_frames.Open();
    if (FAILED(hr))
        return hr;
    const LONGLONG time = m_isReady ? TimeOf(m_next) : 0;
    if (HaveBlock())
        hr = m_converter.Configure(*m_block.pFrame, request);
    else
    {
        // Nothing that can be decoded. The stream has a type nevertheless, and no samples.
        AVFrame like = {};
        like.format = AV_SAMPLE_FMT_S16;
        like.sample_rate = m_frames.GetRate();
        like.ch_layout = AV_CHANNEL_LAYOUT_STEREO;
        hr = m_converter.Configure(like, request);
    }
    if (FAILED(hr))
        return hr;
    m_request = request;
    if (m_isReady)
    {
        m_isPlaced = false;
        Seek(time);
    }
    m_isReady = true;
    return S_OK;
}

std::uint64_t AudioSource::CountDuration()
{
    if (!m_frames.IsBare())
        return 0;
    const std::int64_t length = m_frames.CountLength();
    if (m_isReady)
    {
        m_block = {};
        m_isPlaced = false;
        m_isSeekPending = true;
    }
    return length > 0 ? static_cast<std::uint64_t>(av_rescale(length, kTimePerSecond, m_frames.GetRate())) : 0;
}

LONGLONG AudioSource::TimeOf(std::int64_t index) const
{
    return av_rescale(index, kTimePerSecond, m_converter.GetOutput().rate);
}

/// Source sample at a place of the stream.
std::int64_t AudioSource::ToSource(std::int64_t place) const
{
    return av_rescale(place - m_frames.GetZero(), m_converter.GetSourceRate(), m_frames.GetRate());
}

void AudioSource::Seek(std::int64_t time)
{
    if (time > kLatestTime)
        return SeekToEnd();
    m_next = av_rescale(time, m_converter.GetOutput().rate, kTimePerSecond);
    m_isSeekPending = true;
    m_isAtEnd = false;
}

void AudioSource::SeekToEnd()
{
    m_isSeekPending = false;
    m_isPlaced = false;
    m_isAtEnd = true;
}

HRESULT AudioSource::CarryOutSeek()
{
    m_isSeekPending = false;
    // A little ahead, reading on is the cheaper way.
    const std::int64_t ahead = m_next - m_converted;
    if (m_isPlaced && !m_isDrained && ahead >= 0 && ahead <= m_converter.GetOutput().rate)
        return S_OK;
    const std::int64_t needed = m_converter.SourceAt(m_next) - m_converter.GetLead();
    m_source = std::max<std::int64_t>(0, m_converter.AlignDown(needed));
    m_converted = m_converter.GridAt(m_source);
    m_block = {};
    m_isDrained = false;
    m_isPlaced = true;
    m_frames.Seek(m_frames.GetZero() + av_rescale(m_source, m_frames.GetRate(), m_converter.GetSourceRate()));
    return m_converter.Begin();
}

/// Goes over to the format of the block at hand. The old format's samples have all been delivered.
HRESULT AudioSource::ChangeSource(DWORD* pFlags)
{
    const AudioRequest before = m_converter.GetOutput();
    const int rateBefore = m_converter.GetSourceRate();
    const HRESULT hr = m_converter.Configure(*m_block.pFrame, m_request);
    if (FAILED(hr))
        return hr;
    const AudioRequest& output = m_converter.GetOutput();
    m_source = m_converter.AlignDown(av_rescale(m_source, m_converter.GetSourceRate(), rateBefore));
    m_converted = m_converter.GridAt(m_source);
    m_next = av_rescale(m_next, output.rate, before.rate);
    m_isDrained = false;
    *pFlags |= MF_SOURCE_READERF_NATIVEMEDIATYPECHANGED;
    if (output.rate != before.rate || output.channels != before.channels || output.mask != before.mask)
        *pFlags |= MF_SOURCE_READERF_CURRENTMEDIATYPECHANGED;
    return S_OK;
}

/// @return true when there are decoded samples that have not been converted
bool AudioSource::HaveBlock()
{
    if (m_block.pFrame == nullptr || m_blockDone >= m_block.pFrame->nb_samples)
    {
        m_block = m_frames.Next();
        m_blockDone = 0;
    }
    return m_block.pFrame != nullptr;
}

AudioSource::Piece AudioSource::SilentPiece(std::int64_t count)
{
    const AVSampleFormat format = m_converter.GetSourceFormat();
    const bool isPlanar = av_sample_fmt_is_planar(format) != 0;
    const auto channels = static_cast<std::size_t>(m_converter.GetSourceChannels());
    const auto cbSample = static_cast<std::size_t>(av_get_bytes_per_sample(format));
    const bool isUnsigned = av_get_packed_sample_fmt(format) == AV_SAMPLE_FMT_U8;
    m_silence.assign(kSilenceSamples * cbSample * (isPlanar ? 1 : channels), isUnsigned ? 0x80 : 0);
    m_planes.assign(isPlanar ? channels : 1, m_silence.data());
    const std::int64_t taken = std::min(count, kSilenceSamples);
    m_source += taken;
    return {m_planes.data(), static_cast<int>(taken)};
}

AudioSource::Piece AudioSource::NextPiece()
{
    while (HaveBlock() && m_converter.Fits(*m_block.pFrame))
    {
        const AVFrame& frame = *m_block.pFrame;
        const std::int64_t place = ToSource(m_block.place) + m_blockDone;
        if (place > m_source)
            return SilentPiece(place - m_source);
        const std::int64_t left = frame.nb_samples - m_blockDone;
        if (place < m_source)
        {
            m_blockDone += static_cast<int>(std::min(left, m_source - place));
            continue;
        }
        // Half a second at most, so that a chunk never holds more than one, whatever the resampler had left.
        const int count = static_cast<int>(std::min<std::int64_t>(left, std::max(1, frame.sample_rate / 2)));
        const bool isPlanar = av_sample_fmt_is_planar(m_converter.GetSourceFormat()) != 0;
        const auto channels = static_cast<std::size_t>(frame.ch_layout.nb_channels);
        const std::size_t cbStep = static_cast<std::size_t>(av_get_bytes_per_sample(m_converter.GetSourceFormat())) *
                                   (isPlanar ? 1 : channels);
        m_planes.resize(isPlanar ? channels : 1);
        for (std::size_t i = 0; i < m_planes.size(); ++i)
            m_planes[i] = frame.extended_data[i] + static_cast<std::size_t>(m_blockDone) * cbStep;
        m_blockDone += count;
        m_source += count;
        return {m_planes.data(), count};
    }
    return {};
}

HRESULT AudioSource::Wrap(IMFMediaBuffer* pBuffer, int count, LONGLONG* pTime, IMFSample** ppSample) const
{
    IMFSample* pSample = nullptr;
    HRESULT hr = MFCreateSample(&pSample);
    if (SUCCEEDED(hr))
        hr = pSample->AddBuffer(pBuffer);
    if (FAILED(hr))
    {
        if (pSample != nullptr)
            pSample->Release();
        return hr;
    }
    *pTime = TimeOf(m_next);
    pSample->SetSampleTime(*pTime);
    pSample->SetSampleDuration(TimeOf(m_next + count) - *pTime);
    *ppSample = pSample;
    return S_OK;
}

/// Converts @p piece (without samples: what the converter still holds) and makes a sample of what is wanted of it.
HRESULT AudioSource::Deliver(const Piece& piece, LONGLONG* pTime, IMFSample** ppSample)
{
    const int capacity = m_converter.GetBound(piece.count);
    const std::size_t cbBlock = m_converter.GetBlockBytes();
    IMFMediaBuffer* pBuffer = nullptr;
    HRESULT hr = MFCreateMemoryBuffer(static_cast<DWORD>(static_cast<std::size_t>(capacity) * cbBlock), &pBuffer);
    if (FAILED(hr))
        return hr;
    BYTE* pBytes = nullptr;
    pBuffer->Lock(&pBytes, nullptr, nullptr);
    std::int64_t count = m_converter.Convert(piece.ppPlanes, piece.count, pBytes, capacity);
    if (count < 0)
        hr = E_FAIL;
    else
    {
        // The converter rounds its tail up by more than a sample.
        if (m_isDrained)
            count = std::clamp<std::int64_t>(m_converter.GridAt(m_source) - m_converted, 0, count);
        const std::int64_t first = m_converted;
        m_converted += count;
        const std::int64_t dropped = std::clamp<std::int64_t>(m_next - first, 0, count);
        count -= dropped;
        if (dropped > 0 && count > 0)
            std::memmove(pBytes, pBytes + static_cast<std::size_t>(dropped) * cbBlock,
                         static_cast<std::size_t>(count) * cbBlock);
        pBuffer->SetCurrentLength(static_cast<DWORD>(static_cast<std::size_t>(count) * cbBlock));
    }
    pBuffer->Unlock();
    if (SUCCEEDED(hr) && count > 0)
        hr = Wrap(pBuffer, static_cast<int>(count), pTime, ppSample);
    if (SUCCEEDED(hr) && count > 0)
        m_next += count;
    pBuffer->Release();
    return hr;
}

HRESULT AudioSource::Read(DWORD* pFlags, LONGLONG* pTime, IMFSample** ppSample)
{
    HRESULT hr = m_isSeekPending ? CarryOutSeek() : S_OK;
    while (SUCCEEDED(hr) && *ppSample == nullptr && !m_isAtEnd)
    {
        if (m_isDrained && HaveBlock())
        {
            hr = ChangeSource(pFlags);
            continue;
        }
        const Piece piece = m_isDrained ? Piece() : NextPiece();
        m_isAtEnd = m_isDrained;
        m_isDrained = piece.count == 0;
        if (!m_isAtEnd)
            hr = Deliver(piece, pTime, ppSample);
    }
    if (m_isAtEnd)
        *pFlags |= MF_SOURCE_READERF_ENDOFSTREAM;
    return hr;
}
} // namespace pal
