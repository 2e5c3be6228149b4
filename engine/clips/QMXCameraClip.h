/// @file QMXCameraClip.h
/// A clip that shows a camera recording.
#pragma once

#include "engine/clips/QMXVideoClip.h"

#include <cstdint>
#include <string>

/// A video clip over a camera recording, which it asks for frames by number. Frames are keyed on every path, also those
/// of an attached clip, and the alpha flag of a frame never depends on a file's name.
class QMX_API CQMXCameraClip : public CQMXVideoClip
{
public:
    CQMXCameraClip();
    ~CQMXCameraClip() override;

    /// Takes settings, rotation and frame rate of another camera clip; every other kind changes nothing.
    void CopyFrom(IQMXBaseClip* source) override;
    /// @return false, with everything as it was, when the clip has no path; false when the recording cannot be opened.
    bool Open(const tagRenderProp& request) override;
    /// @return true also when the decoder has no picture (the result then holds null); false for a null @p out or
    ///         when an attached clip has no picture.
    bool GetVideoFrame(std::uint64_t time, FrameResult* out) override;

private:
    std::wstring m_strUnused; ///< part of the record; nothing reads or writes it
};
