/// @file TitleDecoder.h
/// Frames of a title.
#pragma once

#include "engine/decoders/still/TextDecoder.h"
#include "engine/decoders/still/TitleTextInfo.h"

#include <cstdint>
#include <vector>

/// Draws texts, each with a font, a colour, a place and a movement of its own, on transparent frames of the property
/// record's size. Times count in 100 ns from the clip's start. There is no last frame.
class QMX_API CTitleDecoder : public CTextDecoder
{
public:
    CTitleDecoder() = default;
    /// As the base copies: never a decoder that is open.
    CTitleDecoder(const CTitleDecoder& other) = default;
    CTitleDecoder& operator=(const CTitleDecoder& other) = default; ///< likewise

    /// Forgets the texts, too.
    bool Initialize(const tagDecProp& prop) override;
    void SetDecoderProperty(const tagDecProp& prop) override; ///< the base's, exported under this class's name
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

    std::vector<tagQMXTitleTextInfo*> m_vecTextInfos; // borrowed
};
