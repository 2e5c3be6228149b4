/// @file SampleInfo.h
/// The image descriptor through which pixels are handed to the companion libraries.
#pragma once

#include <cstddef>
#include <cstdint>

/// Borrowed view of one picture. The layout is part of the companions' binary interface.
struct tagSampleInfo
{
    std::uint8_t* pData = nullptr;    ///< first row
    std::uint8_t* pPlane1 = nullptr;  ///< further planes; null for BGRA
    std::uint8_t* pPlane2 = nullptr;  ///< likewise
    std::uint32_t nWidth = 0;         ///< pixels
    std::uint32_t nHeight = 0;        ///< rows
    std::uint32_t nStride = 0;        ///< bytes from one row to the next
    std::uint32_t nAspectX = 16;      ///< constant 16, whatever the picture's size
    std::uint32_t nAspectY = 9;       ///< constant 9
    std::uint32_t nBitsPerPixel = 32; ///< 32: BGRA
};
static_assert(sizeof(tagSampleInfo) == 48 && offsetof(tagSampleInfo, nWidth) == 24 &&
                  offsetof(tagSampleInfo, nBitsPerPixel) == 44,
              "fixed by the companions' binary interface");
