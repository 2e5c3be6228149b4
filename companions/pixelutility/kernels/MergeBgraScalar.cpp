#include "companions/pixelutility/kernels/MergeBgra.h"

#include <cstring>

namespace qmx::kernels
{
namespace
{
constexpr float kOne = 255.0F;
constexpr float kHalf = 0.5F;

/// Both alphas count from 0 to 255; neither is at an end of the range on the source's side.
void MergePixel(const std::uint8_t* pSource, std::uint8_t* pTarget)
{
    // In the order of the kernel's: floating-point results depend on it.
    const auto front = static_cast<float>(pSource[3]);
    const float rest = static_cast<float>(pTarget[3]) * (kOne - front) * (1.0F / kOne);
    const float alpha = front + rest;
    for (int channel = 0; channel < 3; ++channel)
    {
        const float sum = static_cast<float>(pSource[channel]) * front + static_cast<float>(pTarget[channel]) * rest;
        pTarget[channel] = static_cast<std::uint8_t>(sum / alpha + kHalf);
    }
    pTarget[3] = static_cast<std::uint8_t>(alpha + kHalf);
}
} // namespace

void MergeBgraRowScalar(const std::uint8_t* pSource, std::uint8_t* pTarget, std::size_t count)
{
    for (; count > 0; --count, pSource += 4, pTarget += 4)
    {
        if (pSource[3] == 0xFF)
            std::memcpy(pTarget, pSource, 4);
        else if (pSource[3] != 0)
            MergePixel(pSource, pTarget);
    }
}
} // namespace qmx::kernels
