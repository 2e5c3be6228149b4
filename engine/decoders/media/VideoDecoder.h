/// @file VideoDecoder.h
/// Frames of a video file.
#pragma once

#include "engine/decoders/Decoder.h"
#include "engine/decoders/media/VideoInfo.h"

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

struct ID3D11Device;
struct IMFAttributes;
struct IMFDXGIDeviceManager;
struct IMFMediaType;
struct IMFSample;
struct IMFSourceReader;
class CLockedPicture;
class CQMXThreadPool;

/// Turns a video file into BGRA frames through the platform's source reader. Times that move forward by less than
/// three frames are served by reading on, every other time by a seek.
///
/// Frames have the width that the property record asks for and the even height that keeps the source's display
/// aspect; the record's height is not looked at. A record's rotation of 90 or 270 degrees exchanges both.
class QMX_API CVideoDecoder : public CDecoder
{
public:
    CVideoDecoder() = default;
    /// Copies pointers as plain values, without references: never copy a decoder that is open.
    CVideoDecoder(const CVideoDecoder& other) = default;
    CVideoDecoder& operator=(const CVideoDecoder& other) = default; ///< likewise

    bool Initialize(const tagDecProp& prop) override;
    /// @param time         100 ns from the start of the file.
    /// @param endOfStream  set to false on entry, to true when the file ends before @p time: the picture is then the
    ///                     one returned before.
    /// @return one reference for the caller. A decoder without an open file answers with a transparent black frame of
    ///         the record's width and height; null when there is no picture or memory is short.
    ISampleBuffer* GetClipVideoFrame(std::uint64_t time, bool& endOfStream) override;
    ISampleBuffer* GetLastFrame() override;

    /// Opens @p path and fills @p info. The file stays open in this decoder.
    /// @return false when @p info is null or the file has no video that can be read; the record may be partly filled.
    bool GetVideoInfo(std::wstring path, tagVideoInfo* info);

protected:
    ~CVideoDecoder() override;

private:
    friend struct VideoDecoderProbe; // defined by the tests

    static const DWORD m_dwStreamIdx = 0xFFFFFFFCU; ///< the reader's name for the first video stream

    /// What becomes of the newest sample when the stream ends without another one.
    enum class AtEnd
    {
        DropSample,
        KeepSample
    };

    bool _InternalInitialize(const std::wstring& path, tagVideoInfo* info);
    [[nodiscard]] HRESULT _OpenReader(const std::wstring& path, tagVideoInfo* info);
    void _CreateDevice(IMFAttributes* pAttributes);
    void _UpdateDisplayAspect();
    [[nodiscard]] HRESULT _FillVideoInfo(IMFMediaType* pNative, tagVideoInfo& info);
    void _InternalClose();

    void _SkipPreload(std::uint64_t time);
    void _SeekBack(std::uint64_t time, IMFSample** ppSample);
    void _SeekTo(std::uint64_t time);
    DWORD _ReadUntil(std::uint64_t time, IMFSample** ppSample, AtEnd atEnd);
    void _OnMediaTypeChanged(DWORD streamFlags, DWORD streamIndex);
    [[nodiscard]] HRESULT _ConvertVideoTypeToUncompressedType(IMFMediaType* pType, const GUID& subtype,
                                                              IMFMediaType** ppOut);

    ISampleBuffer* _GetBlankFrame();
    ISampleBuffer* _GetFrameAt(std::uint64_t time, bool& endOfStream);
    std::uint32_t _GetAngle() const;
    bool _LastFrameFits() const;
    std::uint32_t _GetOutputHeight() const;
    SampleBufferPtr _MakeFrame(IMFSample* pSample);
    bool _DescribePicture(const CLockedPicture& picture, tagSampleInfo& info);
    /// Copies the picture of @p pSample at the nominal size: rows of m_nFrameWidth * 4 bytes, as many as fit.
    /// Consumes the caller's reference in every case.
    /// @return false when the sample's pixels cannot be read, or are fewer than that.
    bool _CropFrame(IMFSample* pSample, std::uint8_t* pDestination, std::uint32_t cbDestination);

    IMFSourceReader* m_pReader = nullptr;  // owns one reference; null when closed
    IMFSample* m_pPendingSample = nullptr; // owns one reference; read by _SkipPreload(), not yet shown
    std::uint32_t m_nDecodedWidth = 0;     ///< pixels that the reader delivers now; padding included
    std::uint32_t m_nDecodedHeight = 0;    ///< rows, likewise
    std::uint32_t m_nFrameWidth = 0;       ///< nominal size, exchanged for a source turned by 90 or 270 degrees
    std::uint32_t m_nFrameHeight = 0;
    std::uint32_t m_nPixelAspectX = 1;
    std::uint32_t m_nPixelAspectY = 1;
    std::uint32_t m_nDisplayAspectX = 16; ///< in lowest terms
    std::uint32_t m_nDisplayAspectY = 9;
    std::uint32_t m_nBaseRotation = 0;                ///< degrees that the decoded frames already contain
    std::uint32_t m_nLastRotation = 0;                ///< rotation that the previous request asked for
    std::uint64_t m_llLastTime = kTimeUnlimited;      ///< time of the previous request; all ones after a close
    ISampleBuffer* m_pLastFrame = nullptr;            // owns one reference; the last frame returned
    std::vector<std::uint8_t> m_vecFrameBuffer;       ///< scratch of one nominal frame, sized on the first frame
    ID3D11Device* m_pD3DDevice = nullptr;             // owns one reference; decoding device, null without hardware
    IMFDXGIDeviceManager* m_pDeviceManager = nullptr; // owns one reference; shares the device with the reader
    CQMXThreadPool* m_pThreadPool = nullptr;          // owned; made elsewhere
};
