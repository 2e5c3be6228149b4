/// @file DecoderInterop.h
/// The hardware decoder interop library: any frame of an H.264 recording by its number.
#pragma once

#include "engine/platform/Export.h"
#include "engine/platform/SampleBuffer.h"

#include <cstdint>
#include <memory>
#include <string>

/// One open recording: a media file and its index of 24-byte records, of which the first eight bytes, little-endian,
/// are the frame's time in 100 ns.
/// Threads : one at a time. The platform's media services must have been started.
class QMX_DECODERINTEROP_API DecoderInterop
{
public:
    /// @param mediaPath  a media file whose first video stream holds the frames
    /// @param metaPath   its index; where it cannot be opened, or holds no whole record, frames follow each other at
    ///                   the stream's rate
    /// @return to be deleted by the caller; null when the media file cannot be read or memory is short.
    static DecoderInterop* CreateDecoder(std::wstring mediaPath, std::wstring metaPath);
    ~DecoderInterop();
    DecoderInterop(const DecoderInterop&) = delete;
    DecoderInterop& operator=(const DecoderInterop&) = delete;

    /// The frame of the record @p frameIndex: the first one that is shown at its time or later, where up to a fiftieth
    /// of a frame earlier counts as the same time. Requests in order are the fast way; steps backward are served from
    /// the frames that were decoded on the way.
    /// @return NV12, upright, limited range, with one reference for the caller; null behind the last record or the
    ///         last frame, when the frame cannot be decoded, or when memory is short.
    ISampleBuffer* GetSample(std::uint64_t frameIndex);

private:
    struct State;
    explicit DecoderInterop(std::unique_ptr<State> pState);

    State* m_pState; // owned
};
