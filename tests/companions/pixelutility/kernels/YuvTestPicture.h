/// @file YuvTestPicture.h
/// YUV pictures for the kernel tests, and the conversion's formula in double precision.
#pragma once

#include "companions/pixelutility/kernels/YuvToBgra.h"

#include <array>
#include <cstdint>
#include <vector>

/// One way of storing samples.
struct YuvStorage
{
    int bitDepth = 8;
    bool highBits = false;
    bool interleaved = false;
    int shiftX = 1;
    int shiftY = 1;
    bool alpha = false;
};

/// A picture that owns its planes. Planes start `misalignment` bytes behind an aligned address, rows lie `rowGap` bytes
/// apart, and a picture may be stored bottom-up, which makes its strides negative.
class YuvTestPicture
{
public:
    YuvTestPicture(int width, int height, const YuvStorage& storage, std::size_t misalignment = 0,
                   std::size_t rowGap = 0, bool bottomUp = false);

    /// Writes one sample. @param plane 0 Y, 1 U, 2 V, 3 alpha  @param value  below 2^bitDepth
    void Set(int plane, int x, int y, std::uint32_t value);
    int PlaneWidth(int plane) const;
    int PlaneHeight(int plane) const;
    std::uint32_t Maximum() const { return (1U << m_storage.bitDepth) - 1U; }

    qmx::kernels::YuvPicture view;

private:
    std::uint8_t* At(int plane, int x, int y);

    YuvStorage m_storage;
    std::array<std::vector<std::uint8_t>, 4> m_planes;
};

/// The exact result, B, G, R, neither rounded nor replaced by an approximation: clamped to 0..255 only.
std::array<double, 3> ExactBgr(const qmx::kernels::YuvPicture& picture, std::uint32_t y, std::uint32_t u,
                               std::uint32_t v);
