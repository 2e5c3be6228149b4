#include "companions/pixelutility/kernels/TurnBgra.h"

#include <cstring>

namespace qmx::kernels
{
void TransposeBgraScalar(const std::uint8_t* pSource, std::ptrdiff_t stride, std::uint8_t* pTarget,
                         std::ptrdiff_t strideTarget, std::size_t width, std::size_t rows)
{
    for (std::size_t y = 0; y < rows; ++y, pSource += stride, pTarget += 4)
        for (std::size_t x = 0; x < width; ++x)
            std::memcpy(pTarget + static_cast<std::ptrdiff_t>(x) * strideTarget, pSource + x * 4, 4);
}

void MirrorBgraScalar(const std::uint8_t* pSource, std::uint8_t* pTarget, std::size_t width)
{
    for (std::size_t x = 0; x < width; ++x)
        std::memcpy(pTarget + (width - 1 - x) * 4, pSource + x * 4, 4);
}
} // namespace qmx::kernels
