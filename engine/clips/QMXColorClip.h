/// @file QMXColorClip.h
/// A clip of one colour.
#pragma once

#include "engine/clips/QMXBaseClip.h"

/// Opaque black at the size of the request. One frame is made and handed out for every time; Close() keeps it.
class QMX_API CQMXColorClip : public CQMXBaseClip
{
public:
    CQMXColorClip();
    ~CQMXColorClip() override;

    /// Takes the common settings and shares the frame of @p source where that is a colour clip.
    void CopyFrom(IQMXBaseClip* source) override;
    bool Open(const tagRenderProp& request) override;
    /// The result's flag tells that @p time lies outside the clip's span.
    bool GetVideoFrame(std::uint64_t time, FrameResult* out) override;
    bool IsVideoOpened() override;

private:
    SampleBufferPtr m_pColorFrame; ///< null until opened
};
