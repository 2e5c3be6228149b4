/// @file TitleDecoder.h
/// Frames of a title.
#pragma once

#include "engine/decoders/Decoder.h"
#include "engine/decoders/still/TextCanvas.h"
#include "engine/decoders/still/TitleTextInfo.h"

#include <cstdint>
#include <vector>

/// Draws texts, each with a font, a colour, a place and a movement of its own, on transparent frames of the property
/// record's size. Times count in 100 ns from the clip's start. There is no last frame.
class QMX_API CTitleDecoder : public CDecoder
{
public:
    CTitleDecoder() = default;
    /// Copies pointers as plain values, without references: never copy a decoder that is open.
    CTitleDecoder(const CTitleDecoder& other) = default;
    CTitleDecoder& operator=(const CTitleDecoder& other) = default;

    /// Makes what frames of the record's size are drawn with, and forgets the texts. @return true, always: a decoder
    /// that lacks a device or a service gives transparent frames.
    bool Initialize(const tagDecProp& prop) override;
    /// A record of another size calls Initialize(), so the texts have to be given again.
    void SetDecoderProperty(const tagDecProp& prop) override;
    /// @return one reference to a new premultiplied frame; null when the record has no size or memory is short.
    ISampleBuffer* GetClipVideoFrame(std::uint64_t time, bool& flag) override;

    /// Replaces the texts. @param items  drawn in this order; borrowed, they must live while frames are asked for.
    /// @param startTime  of the clip; kept. @return false when memory is short
    bool InitializeTitleText(const std::vector<tagQMXTitleTextInfo*>& items, std::uint64_t startTime);
    /// True when these texts were given last.
    bool IsShowing(const std::vector<tagQMXTitleTextInfo*>& items) const;

protected:
    ~CTitleDecoder() override;

private:
    friend struct TitleDecoderProbe; // defined by the tests

    void _DrawItem(tagQMXTitleTextInfo* info, std::uint64_t time);
    /// Where the layout of @p info is drawn at @p time. @param layoutLeft  of the leftmost line in the layout's box:
    /// the item's anchor is that line's edge.
    void _CalculateLeftAndTop(float& left, float& top, std::uint64_t time, tagQMXTitleTextInfo* info, float layoutLeft);
    void _InternalClose();

    std::uint32_t m_nWidth = 0; ///< pixels
    std::uint32_t m_nHeight = 0;
    std::uint64_t m_nStartTime = 0;                   ///< kept; nothing reads it
    std::vector<tagQMXTitleTextInfo*> m_vecTextInfos; // borrowed
    CTextCanvas m_canvas;
};
