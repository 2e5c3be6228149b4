/// @file Attachment.h
/// The clip whose pictures another clip shows.
#pragma once

#include "engine/clips/IQMXBaseClip.h"
#include "engine/platform/SampleBuffer.h"

#include <cstdint>

/// What a clip knows of the clip that is attached to it.
class CAttachment
{
public:
    /// Takes @p clip (borrowed; null for none) when @p index is 0; other indexes are ignored.
    void Set(int index, IQMXBaseClip* clip);
    /// True when the pictures are those of the attached clip: there is one, it is open, and the request's @p flags do
    /// not forbid it. A ring of clips that are attached to each other has no pictures.
    bool IsShown(std::uint64_t flags);
    /// The attached clip's last picture, or null. IsShown() must hold.
    SampleBufferPtr LastFrame() { return SampleBufferPtr::Adopt(m_pClip->GetLastFrame()); }

private:
    IQMXBaseClip* m_pClip = nullptr; // borrowed
    bool m_bAsking = false;          ///< set while the attached clip is asked, so that a ring of clips ends
};
