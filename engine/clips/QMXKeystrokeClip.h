/// @file QMXKeystrokeClip.h
/// A clip of pressed keys.
#pragma once

#include "engine/clips/QMXTextClip.h"
#include "engine/decoders/still/KeystrokeInfo.h"

#include <cstdint>
#include <vector>

class CKeystrokeDecoder;

/// Shows the keys that were pressed during a recording as labels, which it owns.
class QMX_API CQMXKeystrokeClip : public CQMXTextClip
{
public:
    CQMXKeystrokeClip();
    ~CQMXKeystrokeClip() override; ///< deletes the labels

    /// Of a keystroke clip also takes copies of its labels, which are added to those there are. The placement stays.
    void CopyFrom(IQMXBaseClip* source) override;
    /// Shows labels and placement as they are now; what is set later shows from the next Open() on.
    bool Open(const tagRenderProp& request) override;
    /// @return true also when the decoder has no picture (the result then holds null); false for a null @p out or
    ///         without a decoder.
    bool GetVideoFrame(std::uint64_t time, FrameResult* out) override;

    /// Slot 31: takes @p item over; null is ignored. Items are added in ascending order of their start times.
    virtual void AddKeystroke(tagQMXKeystrokeInfo* item);
    /// Slot 32: corner and length of the strip of labels, in fractions of the frame's width, height and width.
    virtual void SetLeftAndTopAndWidth(float left, float top, float width);
    virtual float GetKeystrokeTop();   ///< slot 33
    virtual float GetKeystrokeLeft();  ///< slot 34
    virtual float GetKeystrokeWidth(); ///< slot 35
    /// Slot 36: the labels into @p out, which it returns; they stay the clip's.
    virtual std::vector<tagQMXKeystrokeInfo*>& GetKeystrokes(std::vector<tagQMXKeystrokeInfo*>& out);

private:
    struct Placement
    {
        float left = 0;
        float top = 0;
        float width = 0;
    };

    CKeystrokeDecoder& Decoder(); ///< m_pVideoDecoder as what it is; not while that is null
    void PlaceStrip();

    Placement m_placement;
    std::vector<tagQMXKeystrokeInfo*> m_vecKeystrokes;      // owned
    std::vector<tagQMXKeystrokeInfo*> m_vecShownKeystrokes; ///< as they were when the clip was opened
    Placement m_shownPlacement;                             ///< likewise
};
