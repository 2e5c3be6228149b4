/// @file KeystrokeInfo.h
/// One label of a keystroke overlay.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// A key, or several together, that were pressed during a recording. Allocated with new and owned by the keystroke clip
/// that it is added to. The layout is part of the exported interface.
struct tagQMXKeystrokeInfo
{
    std::uint64_t startTime = 0;        ///< 100 ns of the recording: shown from then on
    std::uint64_t endTime = 0;          ///< last time at which it can be the newest label; 0: for ever
    float fontSize = 12;                ///< pixels on a frame 288 pixels high; grows with the frame
    std::uint32_t textColor = 0xFFFFFF; ///< 0x00RRGGBB; the top byte has no effect
    std::uint32_t backColor = 0;        ///< of the box behind the text, likewise
    float textAlpha = 1;                ///< 0..1
    float backAlpha = 1;                ///< 0..1
    std::uint64_t hostData1 = 0;        ///< kept for the host
    std::uint64_t hostData2 = 0;        ///< kept for the host
    std::wstring text;                  ///< of the label
    std::wstring fontName;              ///< family; one that the system lacks is replaced by one that it has
};
static_assert(offsetof(tagQMXKeystrokeInfo, fontSize) == 16 && offsetof(tagQMXKeystrokeInfo, textColor) == 20 &&
                  offsetof(tagQMXKeystrokeInfo, hostData1) == 40 && offsetof(tagQMXKeystrokeInfo, text) == 56,
              "fixed by the exported interface");
