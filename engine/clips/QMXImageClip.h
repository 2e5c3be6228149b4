/// @file QMXImageClip.h
/// A clip that shows a still picture or an animated GIF.
#pragma once

#include "engine/clips/Attachment.h"
#include "engine/clips/QMXBaseClip.h"
#include "engine/decoders/DecoderProp.h"

#include <cstdint>

/// Shows a picture file through a decoder of its own or one shared through the cache, or, while a clip is attached that
/// has pictures, that clip's last frame. The extension "gif" makes it an animation, every other one a still picture.
/// Silent.
class QMX_API CQMXImageClip : public CQMXBaseClip
{
public:
    CQMXImageClip();
    ~CQMXImageClip() override;

    /// Takes the settings of any clip, and its rotation where it is a clip that has one.
    void CopyFrom(IQMXBaseClip* source) override;
    /// @return true also when the file cannot be decoded: the clip then gives no pictures.
    bool Open(const tagRenderProp& request) override;
    /// The result's flag tells that @p time lies outside the clip's span.
    /// @return true also when there is no picture (the result then holds null); false for a null @p out, for a clip
    ///         that is not open, or when an attached clip has no picture.
    bool GetVideoFrame(std::uint64_t time, FrameResult* out) override;
    bool Close() override;
    bool IsVideoOpened() override;
    ISampleBuffer* GetLastFrame() override;
    void SetAttachment(int index, IQMXBaseClip* clip) override;

    virtual std::uint32_t GetRotation();             ///< slot 31: degrees clockwise
    virtual void SetRotation(std::uint32_t degrees); ///< slot 32: counts from the next Open()

private:
    tagDecProp MakeDecoderProp(const tagRenderProp& request);
    bool OpenSharedDecoder();
    void ReleaseDecoder();

    std::uint32_t m_nRotation = 0;
    CAttachment m_attachment;
    tagDecProp m_decoderProp; ///< what this clip asks of its decoder; another clip's may stand in a shared one
};
