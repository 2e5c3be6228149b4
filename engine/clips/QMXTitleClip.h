/// @file QMXTitleClip.h
/// A clip of texts.
#pragma once

#include "engine/clips/QMXBaseClip.h"
#include "engine/decoders/DecoderProp.h"
#include "engine/decoders/still/TitleTextInfo.h"

#include <cstdint>
#include <vector>

class CTitleDecoder;

/// Shows texts, which it owns, on transparent premultiplied frames, through a decoder of its own or one shared through
/// the cache. It is silent.
class QMX_API CQMXTitleClip : public CQMXBaseClip
{
public:
    CQMXTitleClip();
    ~CQMXTitleClip() override; ///< deletes the texts
    CQMXTitleClip(const CQMXTitleClip&) = delete;
    CQMXTitleClip& operator=(const CQMXTitleClip&) = delete;

    /// Takes the common settings; of a title clip also the reserved pointer, and copies of its texts, which are added
    /// to those there are. The text of an item whose textLength is 0 is left out.
    void CopyFrom(IQMXBaseClip* source) override;
    /// Shows the texts as they are now; those added later show from the next Open() on.
    bool Open(const tagRenderProp& request) override;
    /// @return true also when the decoder has no picture (the result then holds null); false for a null @p out or
    ///         without a decoder.
    bool GetVideoFrame(std::uint64_t time, FrameResult* out) override;
    bool Close() override;

    virtual void AddTitleText(tagQMXTitleTextInfo* item); ///< slot 31: takes @p item over; null is ignored
    /// Slot 32: the texts into @p out, which it returns; they stay the clip's.
    virtual std::vector<tagQMXTitleTextInfo*>& GetTitleTexts(std::vector<tagQMXTitleTextInfo*>& out);

private:
    void ReleaseDecoder();
    bool OpenSharedDecoder();
    void AttachTexts();

    std::uint32_t m_nOutputHeight = 0; ///< of the request that opened the clip
    std::uint32_t m_nOutputWidth = 0;
    void* m_pReserved = nullptr;                       ///< copied by CopyFrom(), not used otherwise
    std::vector<tagQMXTitleTextInfo*> m_vecTitleTexts; // owned
    std::vector<tagQMXTitleTextInfo*> m_vecShownTexts; ///< as they were when the clip was opened; of m_vecTitleTexts
    CTitleDecoder* m_pTitleDecoder = nullptr;          ///< m_pVideoDecoder as what it is
    tagDecProp m_decoderProp; ///< what this clip asks of its decoder; another clip's may stand in a shared one
};
