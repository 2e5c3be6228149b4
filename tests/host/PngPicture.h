/// @file PngPicture.h
/// PNG files read back, independently of what wrote them.
#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace qmx::host
{
/// A file as 8-bit BGRA; width 0 when it cannot be read.
struct PngPicture
{
    explicit PngPicture(const std::filesystem::path& file);

    std::uint32_t width = 0;
    std::uint32_t height = 0;
    bool hasAlpha = false;             ///< in the file
    std::vector<std::uint32_t> pixels; ///< 0xAARRGGBB, rows from the top

    std::uint32_t At(std::uint32_t x, std::uint32_t y) const { return pixels.at(std::size_t{y} * width + x); }
};
} // namespace qmx::host
