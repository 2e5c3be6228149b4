/// @file TitleTextInfo.h
/// One text of a title.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// How a text moves. What is none of these stands still.
enum QMXTitleAnimation : std::uint32_t
{
    QMXTitleAnimation_None = 0,
    QMXTitleAnimation_LeftToRight = 1,
    QMXTitleAnimation_TopToBottom = 2,
    QMXTitleAnimation_RightToLeft = 3,
    QMXTitleAnimation_BottomToTop = 4
};

/// One text of a title. Allocated with new and owned by the title clip that it is added to. The layout is part of the
/// exported interface.
struct tagQMXTitleTextInfo
{
    float fontSize = 24;            ///< pixels on a frame 288 pixels high; grows with the frame
    std::uint32_t color = 0xFFFFFF; ///< 0x00RRGGBB; the top byte has no effect
    float opacity = 1;              ///< 0..1
    std::uint32_t fontWeight = 400; ///< 100..900; 400 normal, 700 bold
    bool italic = false;            ///< slanted
    bool underline = false;         ///< of the whole text
    std::uint32_t textLength = 0;   ///< characters (wchar_t) of the text that are shown
    double x = 0;                   ///< left edge, fraction of the frame's width
    double y = 0;                   ///< upper edge, fraction of the frame's height
    std::uint32_t speed = 0;        ///< one pass of an animation lasts 15 - 2 * speed seconds; negative from 8 on
    std::uint32_t alignment = 0;    ///< of the lines to each other: 0 leading, 1 trailing, 2 centre, 3 justified
    std::wstring fontName;          ///< family; one that the system lacks is replaced by one that it has
    std::wstring text;              ///< may have line ends; wraps at twice the frame's width
    std::uint32_t animation = QMXTitleAnimation_None; ///< a QMXTitleAnimation
};
static_assert(offsetof(tagQMXTitleTextInfo, italic) == 16 && offsetof(tagQMXTitleTextInfo, textLength) == 20 &&
                  offsetof(tagQMXTitleTextInfo, x) == 24 && offsetof(tagQMXTitleTextInfo, alignment) == 44 &&
                  offsetof(tagQMXTitleTextInfo, fontName) == 48,
              "fixed by the exported interface");
