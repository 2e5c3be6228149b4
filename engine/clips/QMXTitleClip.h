/// @file QMXTitleClip.h
/// A clip of texts.
#pragma once

#include "engine/clips/QMXTextClip.h"
#include "engine/decoders/still/TitleTextInfo.h"

#include <cstdint>
#include <vector>

class CTitleDecoder;

/// Shows texts, which it owns.
class QMX_API CQMXTitleClip : public CQMXTextClip
{
public:
    CQMXTitleClip();
    ~CQMXTitleClip() override; ///< deletes the texts

    /// Of a title clip also takes copies of its texts, which are added to those there are. The text of an item whose
    /// textLength is 0 is left out.
    void CopyFrom(IQMXBaseClip* source) override;
    /// Shows the texts as they are now; those added later show from the next Open() on.
    bool Open(const tagRenderProp& request) override;
    /// @return true also when the decoder has no picture (the result then holds null); false for a null @p out or
    ///         without a decoder.
    bool GetVideoFrame(std::uint64_t time, FrameResult* out) override;

    virtual void AddTitleText(tagQMXTitleTextInfo* item); ///< slot 31: takes @p item over; null is ignored
    /// Slot 32: the texts into @p out, which it returns; they stay the clip's.
    virtual std::vector<tagQMXTitleTextInfo*>& GetTitleTexts(std::vector<tagQMXTitleTextInfo*>& out);

private:
    CTitleDecoder& Decoder(); ///< m_pVideoDecoder as what it is; not while that is null

    std::vector<tagQMXTitleTextInfo*> m_vecTitleTexts; // owned
    std::vector<tagQMXTitleTextInfo*> m_vecShownTexts; ///< as they were when the clip was opened
};
