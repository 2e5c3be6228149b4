/// @file QMXTextClip.h
/// What clips of titles and of keystrokes have in common.
#pragma once

#include "engine/clips/QMXBaseClip.h"
#include "engine/decoders/DecoderProp.h"

#include <cstdint>

/// Gives transparent premultiplied frames through a decoder without a file, its own or one shared through the cache. It
/// is silent. It adds no virtual operation: the slots after CQMXBaseClip's are the derived classes'.
class QMX_API CQMXTextClip : public CQMXBaseClip
{
public:
    CQMXTextClip(const CQMXTextClip&) = delete;
    CQMXTextClip& operator=(const CQMXTextClip&) = delete;

    /// Takes the common settings, and of a text clip also the reserved pointer.
    void CopyFrom(IQMXBaseClip* source) override;
    bool Close() override;

protected:
    /// @param decoderType  kDecoderTitle or kDecoderKeystroke
    CQMXTextClip(QMXClipType type, std::uint32_t decoderType);
    ~CQMXTextClip() override; ///< gives the decoder back

    /// Keeps @p request and takes a decoder of the clip's type for it: a shared one where the request allows it and the
    /// cache has none of another type. Throws std::bad_alloc. @return false when the decoder refuses
    bool TakeDecoder(const tagRenderProp& request);
    /// Whether it is one that other clips draw with, too.
    bool IsDecoderShared() const { return m_bDecoderShared; }
    /// Sets a shared decoder to this clip's size, where that of another clip may stand.
    void RestoreSize();
    /// The decoder's frame at @p time of its own count. @return true, also without a frame
    bool ShowFrame(std::uint64_t time, FrameResult& out);

private:
    std::uint32_t m_nOutputHeight = 0; ///< of the request that opened the clip
    std::uint32_t m_nOutputWidth = 0;
    void* m_pReserved = nullptr; ///< copied by CopyFrom(), not used otherwise
    const std::uint32_t m_nDecoderType;
    bool m_bDecoderShared = false;
    tagDecProp m_decoderProp; ///< what this clip asks of its decoder
};
