/// @file KeystrokeDecoder.h
/// Frames of a keystroke overlay.
#pragma once

#include "engine/decoders/still/KeystrokeInfo.h"
#include "engine/decoders/still/TextDecoder.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/// Draws the keys that were pressed lately as labels on boxes, from left to right in a strip, on transparent frames of
/// the property record's size. Times are those of the recording, in 100 ns. There is no last frame.
///
/// Shown are the newest label that is active and those before it that began at most two seconds apart from each other.
/// A label that would reach past the end of the strip starts it anew.
class QMX_API CKeystrokeDecoder : public CTextDecoder
{
public:
    CKeystrokeDecoder() = default;
    /// As the base copies: never a decoder that is open.
    CKeystrokeDecoder(const CKeystrokeDecoder& other) = default;
    CKeystrokeDecoder& operator=(const CKeystrokeDecoder& other) = default; ///< likewise

    /// Forgets the labels and the strip's corner, too.
    bool Initialize(const tagDecProp& prop) override;
    void SetDecoderProperty(const tagDecProp& prop) override; ///< the base's, exported under this class's name
    /// @return one reference to a new premultiplied frame; null when the record has no size or memory is short.
    ISampleBuffer* GetClipVideoFrame(std::uint64_t time, bool& flag) override;

    /// Replaces the labels. @param items  ascending by start time; borrowed, they must live while frames are asked for.
    /// @param startTime  of the clip; kept. @return false when memory is short
    bool InitializeKeystrokeText(const std::vector<tagQMXKeystrokeInfo*>& items, std::uint64_t startTime);
    /// Places the strip, in fractions of the frame's width, height and width. @return true
    bool InitializeLeftAndTopAndWidth(float left, float top, float width);
    /// True when these labels were given last.
    bool IsShowing(const std::vector<tagQMXKeystrokeInfo*>& items) const;

protected:
    ~CKeystrokeDecoder() override;

private:
    friend class CQMXKeystrokeClip; // places the strip

    /// Labels to draw, both ends included; none while last is -1.
    struct Group
    {
        std::ptrdiff_t first = -1;
        std::ptrdiff_t last = -1;
    };
    Group _FindGroup(std::uint64_t time) const;
    void _DrawLabels(const Group& group);

    float m_fLeft = 0;                               ///< of the strip, fraction of the width
    float m_fTop = 0;                                ///< fraction of the height
    float m_fAreaWidth = 0;                          ///< fraction of the width
    std::vector<tagQMXKeystrokeInfo*> m_vecKeyInfos; // borrowed
};
