/// @file TransparentColorInfo.h
/// Settings of the colour key of video clips.
#pragma once

#include <cstddef>
#include <cstdint>

class ISampleBuffer;

/// The layout is part of the exported interface.
struct tagTransparentColorInfo
{
    bool operator==(const tagTransparentColorInfo&) const = default; ///< every field

    ISampleBuffer* pBackground = nullptr; ///< picture to show through; the record holds one reference; may be null
    double dSimilarity = 0;             ///< handed to ReplaceToTransparent(): chroma distance that is keyed fully, 0..1
    double dSmoothness = 0;             ///< likewise: width of the ramp from keyed to kept, 0..1
    double dSpill = 0;                  ///< likewise: strength of the spill suppression, 0..1
    std::uint8_t nColor[3] = {0, 0, 0}; ///< key colour R, G, B; handed on as B, G, R
    std::uint32_t nReserved36 = 0;      ///< kept for the host
    std::uint32_t nReserved40 = 0;      ///< kept for the host
    std::uint8_t nReserved44 = 0;       ///< kept for the host
    std::uint8_t bKeyOnly = 0;          ///< not 0: without a prepared background keyed pixels become transparent
    std::uint8_t nOption = 0;           ///< handed to ReplaceToTransparent(): not 0 runs the spill pass
};
static_assert(sizeof(tagTransparentColorInfo) == 48 && offsetof(tagTransparentColorInfo, dSimilarity) == 8 &&
                  offsetof(tagTransparentColorInfo, nColor) == 32 &&
                  offsetof(tagTransparentColorInfo, nReserved36) == 36 &&
                  offsetof(tagTransparentColorInfo, nReserved44) == 44 &&
                  offsetof(tagTransparentColorInfo, bKeyOnly) == 45 && offsetof(tagTransparentColorInfo, nOption) == 46,
              "fixed by the exported interface");
