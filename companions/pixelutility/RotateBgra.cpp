#include "companions/pixelutility/RotateBgra.h"

#include "companions/pixelutility/Bands.h"
#include "companions/pixelutility/kernels/TurnBgra.h"

#include <cstddef>
#include <cstring>

using qmx::kernels::MirrorBgra;
using qmx::kernels::TransposeBgra;

bool IsQuarterTurn(std::uint32_t angle)
{
    return angle == 0 || angle == 90 || angle == 180 || angle == 270;
}

void TurnBand(const BgraPicture& band, std::uint32_t first, std::uint32_t height, const BgraPicture& target,
              std::uint32_t angle)
{
    const std::ptrdiff_t stride = band.Stride();
    const std::ptrdiff_t strideTarget = target.Stride();
    switch (angle)
    {
    case 90: // the band's last row becomes its first column
        TransposeBgra(band.Row(band.height - 1), -stride, target.pData + std::size_t{height - first - band.height} * 4,
                      strideTarget, band.width, band.height);
        break;
    case 180:
        for (std::uint32_t y = 0; y < band.height; ++y)
            MirrorBgra(band.Row(y), target.Row(height - 1 - first - y), band.width);
        break;
    case 270: // the band's last column becomes the first row
        TransposeBgra(band.pData, stride, target.Row(band.width - 1) + std::size_t{first} * 4, -strideTarget,
                      band.width, band.height);
        break;
    default:
        for (std::uint32_t y = 0; y < band.height; ++y)
            std::memcpy(target.Row(first + y), band.Row(y), band.RowBytes());
    }
}

void TurnPicture(const BgraPicture& source, const BgraPicture& target, std::uint32_t angle)
{
    const std::uint32_t count = BandCount(source.height, source.Pixels());
    ForEachBand(source.height, count,
                [&](std::uint32_t /*index*/, std::uint32_t first, std::uint32_t end)
                {
                    const BgraPicture band{source.Row(first), source.width, end - first, source.stride};
                    TurnBand(band, first, source.height, target, angle);
                });
}
