/// @file TestJpeg.h
/// JPEG pictures made for a test.
#pragma once

#include <turbojpeg.h>

#include <cstdint>
#include <functional>
#include <vector>

/// Compresses what @p paint says of every pixel, 0xRRGGBB.
/// @param subsampling  TJSAMP_…  @param flags  TJFLAG_…
inline std::vector<std::uint8_t> MakeJpeg(std::uint32_t width, std::uint32_t height,
                                          const std::function<std::uint32_t(std::uint32_t, std::uint32_t)>& paint,
                                          int subsampling = TJSAMP_420, int flags = 0, int quality = 95)
{
    std::vector<std::uint8_t> bgra(std::size_t{width} * height * 4);
    for (std::uint32_t y = 0; y < height; ++y)
    {
        for (std::uint32_t x = 0; x < width; ++x)
        {
            const std::uint32_t colour = paint(x, y);
            std::uint8_t* const pPixel = bgra.data() + (std::size_t{y} * width + x) * 4;
            pPixel[0] = static_cast<std::uint8_t>(colour);
            pPixel[1] = static_cast<std::uint8_t>(colour >> 8);
            pPixel[2] = static_cast<std::uint8_t>(colour >> 16);
        }
    }
    const tjhandle handle = tjInitCompress();
    unsigned char* pJpeg = nullptr;
    unsigned long cb = 0;
    std::vector<std::uint8_t> jpeg;
    if (tjCompress2(handle, bgra.data(), static_cast<int>(width), 0, static_cast<int>(height), TJPF_BGRX, &pJpeg, &cb,
                    subsampling, quality, flags) == 0)
        jpeg.assign(pJpeg, pJpeg + cb);
    tjFree(pJpeg);
    tjDestroy(handle);
    return jpeg;
}
