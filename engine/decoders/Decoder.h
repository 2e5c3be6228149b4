/// @file Decoder.h
/// Common base of the decoders: reference count and property record.
#pragma once

#include "engine/decoders/IDecoder.h"

#include <atomic>
#include <cstdint>

/// Base of every decoder. On its own it opens anything and shows nothing.
/// A new decoder's record is all zero (rate 0.0, out-point 0), not the record's own defaults, until Initialize() or
/// SetDecoderProperty() has copied one in.
class QMX_API CDecoder : public IDecoder
{
public:
    CDecoder();
    /// Copies the count and the record, as the binary interface has it: only for decoders that nobody shares.
    CDecoder(const CDecoder& other);
    CDecoder& operator=(const CDecoder& other); ///< likewise

    bool Initialize(const tagDecProp& prop) override;
    void SetDecoderProperty(const tagDecProp& prop) override;
    tagDecProp* GetProperty() override;
    ISampleBuffer* GetClipVideoFrame(std::uint64_t time, bool& flag) override;
    ISampleBuffer* GetLastFrame() override;
    std::uint32_t AddRef() override;
    std::uint32_t Release() override;

protected:
    ~CDecoder() override;

    std::atomic<std::uint32_t> m_nRefCount{1}; ///< references to this decoder
    tagDecProp m_prop;                         ///< what the decoder was opened with
};
