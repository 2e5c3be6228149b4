/// @file CameraClipDecoder.h
/// Frames of a camera recording.
#pragma once

#include "engine/decoders/Decoder.h"

#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

/// Serves a camera recording by frame number. A recording is a media file with an index beside it, and is named by a
/// file that need not exist, whose extension, in small letters, says the codec:
///
///     cam.h264   frames in cam.mp4, times in cam.meta
///     cam.mjpg   JPEG frames back to back in cam.mov, places in cam.meta
///
/// The index is an array of 24-byte records, one a frame: time in 100 ns, offset and length of its data in the media
/// file, each of 64 bits, little-endian. Places of Motion-JPEG frames have 32 bits: the byte offset of a record wraps
/// around at 2^32, the low half of a data offset counts, and neither reaches beyond 2 GiB.
///
/// Motion-JPEG is decoded for every second request at most while the rotation stays; the request between shows the
/// picture before it once more.
class QMX_API CCameraClipDecoder : public CDecoder
{
public:
    CCameraClipDecoder() = default;
    /// Copies pointers as plain values, without references: never copy a decoder that is open.
    CCameraClipDecoder(const CCameraClipDecoder& other) = default;
    CCameraClipDecoder& operator=(const CCameraClipDecoder& other) = default; ///< likewise

    /// Opens the recording once; a decoder that is open answers true and does not look at @p prop. Motion-JPEG frames
    /// keep the size that is asked for here.
    /// @return false for a name without a folder or an extension, another extension, no index, or media that cannot be
    ///         read (Motion-JPEG: found out with the first frame).
    bool Initialize(const tagDecProp& prop) override;
    /// @param frameIndex   number of the frame, from 0
    /// @param endOfStream  set to true when the decoder is not open, otherwise to false
    /// @return BGRA of the record's width (H.264: in the recording's shape; Motion-JPEG: of the record's height too)
    /// and
    ///         turned by its rotation, or, with kRequestNoAttachment in its flags, as it was decoded: NV12 for H.264.
    ///         The picture before it when the frame cannot be read; null when there is none.
    ISampleBuffer* GetClipVideoFrame(std::uint64_t frameIndex, bool& endOfStream) override;
    ISampleBuffer* GetLastFrame() override;

protected:
    ~CCameraClipDecoder() override;

private:
    static constexpr DWORD kCodecH264 = 0x34363248; ///< "H264" in memory
    static constexpr DWORD kCodecMjpg = 0x47504A4D; ///< "MJPG"

    bool _Open(const tagDecProp& prop);
    ISampleBuffer* _GetFrameAt(std::uint64_t frameIndex);
    bool _ReadJpeg(std::uint64_t frameIndex, std::uint32_t& cb);
    SampleBufferPtr _MakeFrame(std::uint64_t frameIndex);
    SampleBufferPtr _TurnBgra(ISampleBuffer& source) const;
    SampleBufferPtr _ConvertNv12(ISampleBuffer& source) const;
    void _Close();

    void* m_hDecoder = nullptr; ///< owned; of the JPEG frame decoder library, or a DecoderInterop
    DWORD m_dwCodec = kCodecH264;
    bool m_bFreshFrame = false;                  ///< the last call decoded a frame
    std::uint64_t m_nLastIndex = kTimeUnlimited; ///< number of the last frame; all ones when there is none
    ISampleBuffer* m_pLastFrame = nullptr;       // owns one reference
    std::uint32_t m_nLastRotation = 0;           ///< rotation that was asked for last
    std::wstring m_strMediaPath;
    std::wstring m_strMetaPath;
    std::FILE* m_fpMedia = nullptr;      // owned; Motion-JPEG only
    std::FILE* m_fpMeta = nullptr;       // owned; Motion-JPEG only
    std::vector<std::uint8_t> m_vecJpeg; ///< compressed frame; never shrinks
};
