/// @file ClipType.h
/// Kinds of clips.
#pragma once

#include <cstdint>

/// What the clip factory makes, and what GetClipType() answers.
enum QMXClipType : std::uint32_t
{
    QMXClipType_Base = 0, ///< no media: no pictures, silence
    QMXClipType_Video = 1,
    QMXClipType_Camera = 2,
    QMXClipType_Audio = 3,
    QMXClipType_Image = 4,
    QMXClipType_Title = 5,
    QMXClipType_Color = 6,
    QMXClipType_Transition = 7,
    QMXClipType_Keystroke = 8
};
