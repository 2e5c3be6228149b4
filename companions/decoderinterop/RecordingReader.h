/// @file RecordingReader.h
/// Pictures of a media file by time, as NV12.
#pragma once

#include "companions/decoderinterop/FrameWindow.h"
#include "engine/platform/RefPtr.h"
#include "engine/platform/SampleBuffer.h"

#include <d3d11.h>
#include <mfidl.h>
#include <mfreadwrite.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>

/// Decides for every picture whether to read on, to seek, or to take it from the window of decoded ones.
/// Threads : one at a time.
class CRecordingReader
{
public:
    CRecordingReader() = default;
    CRecordingReader(const CRecordingReader&) = delete;
    CRecordingReader& operator=(const CRecordingReader&) = delete;

    [[nodiscard]] HRESULT Open(const std::wstring& path);

    /// The first picture that is shown at @p time (100 ns) or later; null behind the last one.
    SampleBufferPtr GetPicture(std::uint64_t time);
    /// Time of frame @p n of a stream of constant rate, rounded down; nothing beyond what a time can hold.
    std::optional<std::uint64_t> TimeOf(std::uint64_t n) const;

private:
    void OfferDevice(IMFAttributes* pAttributes);
    [[nodiscard]] HRESULT SetOutput();
    void TakeSize(IMFMediaType* pType);
    std::int64_t FrameDuration() const;
    void Seek(std::int64_t time);
    /// @return S_FALSE and no sample at the end of the stream
    [[nodiscard]] HRESULT ReadOn(ComPtr<IMFSample>& pSample, std::int64_t& time);
    SampleBufferPtr ReadUntil(std::int64_t time);
    SampleBufferPtr CopyFrame(IMFSample* pSample) const;
    bool CopyPixels(IMFSample* pSample, std::uint8_t* pTarget, std::uint32_t cb) const;
    void LimitRange(std::uint8_t* pPixels) const;

    static constexpr std::int64_t kUnknown = INT64_MIN;

    ComPtr<ID3D11Device> m_pDevice; // decodes in hardware; null where there is none
    ComPtr<IMFDXGIDeviceManager> m_pDeviceManager;
    ComPtr<IMFSourceReader> m_pReader;
    std::uint32_t m_width = 0; ///< pixels, upright
    std::uint32_t m_height = 0;
    std::uint32_t m_rateNum = 30;
    std::uint32_t m_rateDen = 1;
    bool m_fullRange = false;
    CFrameWindow m_window{1};
    std::int64_t m_position = kUnknown; ///< time of the sample read last: the reader stands right behind it
    std::int64_t m_before = kUnknown;   ///< no sample lies after this time and before the next one that is read
    std::int64_t m_keepFrom = 0;        ///< samples from this time on are kept on the way to a target
};
