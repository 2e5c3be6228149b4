/// @file IDecoder.h
/// The interface through which every source of pictures is read.
#pragma once

#include "engine/decoders/DecoderProp.h"
#include "engine/platform/Export.h"
#include "engine/platform/RefPtr.h"
#include "engine/platform/SampleBuffer.h"

#include <cstdint>

/// One source of pictures, shared by every clip that shows the same file on the same track.
/// Lifetime : reference counted, born with one reference; the last Release() may come from the cleaner thread.
/// Threads  : AddRef/Release from any thread; everything else from one thread at a time.
/// Slots    : the order of the declarations is part of the binary interface.
class QMX_API IDecoder
{
public:
    IDecoder() = default;
    IDecoder(const IDecoder&) = default;            ///< see the decoders
    IDecoder& operator=(const IDecoder&) = default; ///< see the decoders

protected:
    virtual ~IDecoder() = default; ///< slot 0; a decoder ends through Release() only

public:
    /// Opens the source that @p prop names and keeps a copy of the record.
    /// @return false when it cannot be opened; the decoder then still answers, see GetClipVideoFrame().
    virtual bool Initialize(const tagDecProp& prop) = 0; ///< slot 1
    /// Takes a copy of @p prop; what it changes shows in the next frame.
    virtual void SetDecoderProperty(const tagDecProp& prop) = 0; ///< slot 2
    /// The decoder's own record, which the caller may read and write; the decoder keeps the ownership.
    virtual tagDecProp* GetProperty() = 0; ///< slot 3
    /// Picture shown at @p time.
    /// @param time  unit set by the decoder kind: 100 ns from the start of the source (video, Flash), milliseconds
    ///              (image, GIF), frame number (camera), 100 ns from the clip's start (title, keystroke).
    /// @param flag  written by the kinds that report an end of stream, otherwise left untouched.
    /// @return BGRA rows of width * 4 bytes, top-down, with ONE reference that the caller releases; null when there
    ///         is no picture.
    virtual ISampleBuffer* GetClipVideoFrame(std::uint64_t time, bool& flag) = 0; ///< slot 4
    /// The last picture returned, with one reference for the caller; null when there is none.
    virtual ISampleBuffer* GetLastFrame() = 0; ///< slot 5
    virtual std::uint32_t AddRef() = 0;        ///< slot 6. @return the new count
    virtual std::uint32_t Release() = 0;       ///< slot 7. @return the new count; 0 when the decoder is gone
};

using DecoderPtr = RefPtr<IDecoder>; ///< holds one reference
