/// @file Layout.h
/// Where a picture goes: boxes on the canvas, and the size to ask a video for so that it fits its box.
#pragma once

#include "host/compose/Canvas.h"
#include "host/project/Project.h"

#include <cstdint>
#include <optional>

namespace qmx::host
{
/// @p box in pixels of a canvas. Each edge is rounded by itself, so boxes that share an edge leave no seam. The result
/// may reach outside the canvas and may be empty.
PixelBox BoxOnCanvas(const BoxFractions& box, std::uint32_t width, std::uint32_t height);

/// A box of the given size in the middle of @p box, the odd pixel to the right and below.
PixelBox Centred(const PixelBox& box, std::uint32_t width, std::uint32_t height);

/// The stored shape of a video once it is upright.
struct VideoShape
{
    std::uint32_t width = 0; ///< pixels
    std::uint32_t height = 0;
    std::uint32_t pixelAspectX = 1; ///< a pixel's width against …
    std::uint32_t pixelAspectY = 1; ///< … its height
    bool evenRows = true;           ///< what the video decoder makes; camera recordings keep odd ones
};

/// Size of a picture before it is rotated.
struct PictureSize
{
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    friend constexpr bool operator==(const PictureSize&, const PictureSize&) = default;
};

/// Rows that the engine's decoder makes for a request of @p width pixels: trunc(width / display aspect), even where the
/// shape says so.
std::uint32_t VideoHeightForWidth(const VideoShape& shape, std::uint32_t width);

/// The largest request whose picture, turned by @p rotation, keeps its display aspect and lies inside a box.
/// @param rotation  degrees: 0, 90, 180 or 270
/// @return nothing when no such picture has at least two rows: the box is too small, or the video too narrow
std::optional<PictureSize> FitVideo(const VideoShape& shape, std::uint32_t rotation, std::uint32_t boxWidth,
                                    std::uint32_t boxHeight);

/// The request for a picture of @p width x @p height pixels whose frame, turned by @p rotation, lies inside a box: the
/// length of its longer side. A picture is not enlarged, so that an animation has one size whether a frame of it is
/// composed or shown again.
/// @param rotation  degrees: 0, 90, 180 or 270
/// @return nothing when no such frame has two pixels each way
std::optional<std::uint32_t> FitImage(std::uint32_t width, std::uint32_t height, std::uint32_t rotation,
                                      std::uint32_t boxWidth, std::uint32_t boxHeight);
} // namespace qmx::host
