/// @file Container.h
/// The file around a movie: its signature, its packing and its header.
#pragma once

#include "companions/swfrenderer/Geometry.h"

#include <cstdint>
#include <span>
#include <vector>

namespace swf
{
/// A movie unpacked.
struct Container
{
    std::uint32_t version = 0;
    Rect stage;                     ///< twips
    double frameRate = 0;           ///< frames per second, above 0
    std::uint32_t frameCount = 0;   ///< as the header claims
    std::size_t tagsAt = 0;         ///< offset of the first tag in body
    std::vector<std::uint8_t> body; ///< what follows the eight bytes of signature and length
};

/// Opens @p file: plain (FWS), zlib (CWS) or LZMA (ZWS). Never unpacks more than the length that the header states; a
/// stream that breaks off gives what came before.
/// @return false for anything else, an unknown version, a length above the limit, a stage without area. Throws
/// bad_alloc.
bool OpenContainer(std::span<const std::uint8_t> file, Container& movie);
} // namespace swf
