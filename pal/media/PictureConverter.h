/// @file PictureConverter.h
/// Decoded pictures to the pixels that a reader's client asked for.
#pragma once

#include "pal/media/AvPointers.h"
#include "pal/media/PixelPool.h"

#include <cstdint>
#include <mutex>

namespace pal
{
enum class PixelLayout
{
    Bgra, ///< B, G, R, A with straight alpha; opaque when the source has none
    Bgrx, ///< B, G, R, 255
    Nv12  ///< Y plane, then interleaved U and V rows, contiguous
};

/// What a reader delivers.
struct PictureFormat
{
    PixelLayout layout = PixelLayout::Bgra;
    int width = 0; ///< of the delivered picture, after the turn
    int height = 0;
    std::uint32_t rotation = 0; ///< clockwise turn applied to the stored picture: 0, 90, 180, 270

    std::size_t Stride() const { return static_cast<std::size_t>(width) * (layout == PixelLayout::Nv12 ? 1 : 4); }
    std::size_t Bytes() const
    {
        const auto rows = static_cast<std::size_t>(height);
        return layout == PixelLayout::Nv12 ? Stride() * rows + (Stride() + 1) / 2 * 2 * ((rows + 1) / 2)
                                           : Stride() * rows;
    }
};

/// Converts with the matrix and range that the picture states, else BT.709 from 720 lines up and BT.601 below.
/// A picture whose size changed in mid-stream is scaled to the format's.
/// Threads : any; conversions that need the general scaler wait for each other.
class PictureConverter
{
public:
    explicit PictureConverter(const PictureFormat& format) : m_format(format) {}

    const PictureFormat& GetFormat() const { return m_format; }
    PixelPool& GetPool() { return m_pool; }
    /// @param pTarget  GetFormat().Bytes() bytes
    /// @return false when the picture cannot be converted; the target's content is then unspecified
    bool Convert(const AVFrame& frame, std::uint8_t* pTarget);

private:
    bool ConvertUpright(const AVFrame& frame, std::uint8_t* pTarget, int width, int height);
    bool ToBgra(const AVFrame& frame, std::uint8_t* pTarget, int stride);
    bool ToBgraByScaler(const AVFrame& frame, std::uint8_t* pTarget, int stride);
    bool ToNv12(const AVFrame& frame, std::uint8_t* pTarget, int width, int height);
    bool ScaleWithLibrary(const AVFrame& frame, AVPixelFormat format, int width, int height,
                          std::uint8_t* const* ppTarget, const int* pStrides);

    const PictureFormat m_format;
    PixelPool m_pool;
    std::mutex m_lock; // guards the scaler and the scratch picture
    SwsPtr m_pScaler;
    AvFramePtr m_pScratch;
};
} // namespace pal
