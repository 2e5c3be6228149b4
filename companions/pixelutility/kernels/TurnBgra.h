/// @file TurnBgra.h
/// Moving the pixels of BGRA pictures, from which all turns are made.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qmx::kernels
{
/// Rows become columns: pixel (x, y) of the source goes to (y, x) of the target. With a negative stride on one side
/// this is a turn by 90 degrees.
/// @param width,rows  of the source  @param stride,strideTarget  bytes, of any sign and alignment
void TransposeBgra(const std::uint8_t* pSource, std::ptrdiff_t stride, std::uint8_t* pTarget,
                   std::ptrdiff_t strideTarget, std::size_t width, std::size_t rows);

/// The scalar twin.
void TransposeBgraScalar(const std::uint8_t* pSource, std::ptrdiff_t stride, std::uint8_t* pTarget,
                         std::ptrdiff_t strideTarget, std::size_t width, std::size_t rows);

/// Writes the pixels of one row in reverse order.
void MirrorBgra(const std::uint8_t* pSource, std::uint8_t* pTarget, std::size_t width);

/// The scalar twin.
void MirrorBgraScalar(const std::uint8_t* pSource, std::uint8_t* pTarget, std::size_t width);
} // namespace qmx::kernels
