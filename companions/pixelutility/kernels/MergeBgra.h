/// @file MergeBgra.h
/// One row of pixels laid over another.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qmx::kernels
{
/// Source over target, both BGRA with straight alpha, in place. With alphas and colours from 0 to 1:
///
///   rest   = target's alpha * (1 - source's alpha)
///   alpha  = source's alpha + rest
///   colour = (source's colour * source's alpha + target's colour * rest) / alpha
///
/// each channel rounded to the nearest level, halves upwards. An opaque source pixel replaces the target's, and one
/// whose alpha is 0 leaves it as it is, to the bit.
/// @param pSource, pTarget  must not overlap
void MergeBgraRow(const std::uint8_t* pSource, std::uint8_t* pTarget, std::size_t count);

/// The scalar twin: the same results.
void MergeBgraRowScalar(const std::uint8_t* pSource, std::uint8_t* pTarget, std::size_t count);
} // namespace qmx::kernels
