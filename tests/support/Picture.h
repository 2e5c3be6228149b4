/// @file Picture.h
/// A picture in memory as the tests compare it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

class ISampleBuffer;

namespace test_support
{
/// Rows of B, G, R, A bytes without padding, top-down; straight alpha.
struct Picture
{
    std::uint32_t width = 0, height = 0;
    std::vector<std::uint8_t> bgra;

    bool IsEmpty() const { return bgra.empty(); }
    /// First byte of a pixel inside the picture.
    const std::uint8_t* At(std::uint32_t x, std::uint32_t y) const
    {
        return bgra.data() + (static_cast<std::size_t>(y) * width + x) * 4;
    }
};

/// A copy of the pixels that @p pBuffer declares; empty for null. The reference stays the caller's.
Picture PictureOf(ISampleBuffer* pBuffer);

/// Mean of each colour channel, transparency not looked at.
struct MeanColour
{
    double r = 0, g = 0, b = 0;
};
MeanColour MeanOf(const Picture& picture);

/// @return false when the file cannot be written.
bool WritePng(const std::filesystem::path& path, const Picture& picture);
/// Any PNG as 8-bit BGRA; nothing when it cannot be read.
std::optional<Picture> ReadPng(const std::filesystem::path& path);
} // namespace test_support
