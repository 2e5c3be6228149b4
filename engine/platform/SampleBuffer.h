/// @file SampleBuffer.h
/// Frame buffers of the sample-buffer library.
#pragma once

#include "engine/platform/Export.h"
#include "engine/platform/RefPtr.h"
#include "engine/platform/SampleInfo.h"

#include <cstdint>

/// A reference-counted picture.
/// Lifetime : born with one reference; storage returns to the library's pool with the last Release().
/// Threads  : AddRef/Release from any thread; everything else from one thread at a time.
/// Slots    : the order of the declarations is part of the binary interface.
class ISampleBuffer
{
protected:
    virtual ~ISampleBuffer() = default; ///< slot 0; a buffer ends through Release() only
public:
    /// @param ppData     [out] first row, 64-byte aligned; for NV12 the interleaved UV rows follow the Y rows directly
    /// @param pcbLength  [out] bytes of all rows of the declared size; may be null
    /// @return false and nothing written when @p ppData is null.
    virtual bool GetBuffer(std::uint8_t** ppData, std::uint32_t* pcbLength) = 0; ///< slot 1
    virtual std::uint32_t GetStride() = 0;       ///< slot 2: declared width * 4 bytes; NV12: declared width (Y rows)
    virtual std::uint32_t GetFlag() = 0;         ///< slot 3: creation flag: 0 straight alpha, 1 premultiplied
    virtual void Reserved4() = 0;                ///< the library's own
    virtual void Reserved5() = 0;                ///< the library's own
    virtual void Reserved6() = 0;                ///< the library's own
    virtual void Reserved7() = 0;                ///< the library's own
    virtual void Reserved8() = 0;                ///< the library's own
    virtual void Reserved9() = 0;                ///< the library's own
    virtual void Reserved10() = 0;               ///< the library's own
    virtual std::uint32_t GetWidth() = 0;        ///< slot 11: declared width, in pixels
    virtual std::uint32_t GetHeight() = 0;       ///< slot 12: declared height, in rows
    virtual std::uint32_t GetRatioX() = 0;       ///< slot 13: display aspect, horizontal part
    virtual std::uint32_t GetRatioY() = 0;       ///< slot 14: display aspect, vertical part
    virtual void SetRatioX(std::uint32_t x) = 0; ///< slot 15
    virtual void SetRatioY(std::uint32_t y) = 0; ///< slot 16
    /// Slot 17: declares another size for the same storage (rows of width * 4 bytes for BGRA). A size that is
    /// zero or does not fit the bytes the buffer was made with is ignored. The display aspect stays as it is.
    virtual void SetSize(std::uint32_t width, std::uint32_t height) = 0;
    virtual void Reserved18() = 0;         ///< the library's own
    virtual std::uint32_t GetFormat() = 0; ///< slot 19: 32 (BGRA) or the FOURCC NV12
    virtual void Reserved20() = 0;         ///< the library's own
    /// Slot 21: takes the pixels (and nothing else) of a buffer of equal declared size and format; false and nothing
    /// changed otherwise.
    virtual bool CopyFrom(ISampleBuffer* pOther) = 0;
    virtual std::uint32_t AddRef() = 0;           ///< slot 22. @return the new count
    virtual std::uint32_t Release() = 0;          ///< slot 23. @return the new count; 0 when the buffer is gone
    virtual void SetAlphaFlag(bool hasAlpha) = 0; ///< slot 24: the picture is to be composited with its alpha
    virtual bool GetAlphaFlag() = 0;              ///< slot 25
};

using SampleBufferPtr = RefPtr<ISampleBuffer>; ///< holds one reference

inline constexpr std::uint32_t kSampleFormatBgra = 32; ///< BGRA, 8 bits each, rows of width * 4 bytes
/// FOURCC "NV12": Y plane, then interleaved UV. Odd sizes have chroma for the last column and row too: a UV row has
/// (width + 1) / 2 pairs, and there are (height + 1) / 2 of them.
inline constexpr std::uint32_t kSampleFormatNv12 = 0x3231564EU;

/// What the pool of frame storage has done since the library was loaded; for tests and benchmarks. At most 256 MiB rest
/// in the pool, and nothing that the last 600 returns have passed over.
struct tagSampleBufferPoolInfo
{
    std::uint64_t nHits = 0;    ///< pieces of storage (of buffers or AllocateSamplePixels()) that were recycled
    std::uint64_t nMisses = 0;  ///< pieces of storage that came from the system
    std::uint64_t nLive = 0;    ///< buffers alive now
    std::uint64_t cbPooled = 0; ///< bytes resting in the pool now
};

extern "C"
{
    /// Makes a picture with unspecified pixels, alpha flag off and its size as display aspect.
    /// @return one reference, or null: unknown format, a zero or over-large size (side > 32,767, more than 1 GiB),
    ///         memory is short.
    QMX_SAMPLEBUFFER_API ISampleBuffer* CreateSampleBuffer(std::uint32_t format, std::uint32_t width,
                                                           std::uint32_t height, std::uint32_t flag);
    /// Adopts the pixels that @p pInfo names: BGRA, nStride = nWidth * 4, memory from AllocateSamplePixels(). The
    /// buffer has straight alpha (flag 0), the alpha flag off and its size as display aspect, whatever the record's
    /// says.
    /// @return one reference that owns the pixels, or null (another format or stride, a size that is refused above or
    ///         that does not fit the memory): the caller keeps them.
    QMX_SAMPLEBUFFER_API ISampleBuffer* CreateSampleBufferEx(std::uint32_t format, tagSampleInfo* pInfo);
    /// Pixel memory that CreateSampleBufferEx() can adopt: 64-byte aligned, padded for SIMD overrun. Null when
    /// @p cb is 0 or above 1 GiB, or memory is short.
    QMX_SAMPLEBUFFER_API std::uint8_t* AllocateSamplePixels(std::size_t cb);
    /// For pixels that no buffer has adopted. Null is allowed.
    QMX_SAMPLEBUFFER_API void FreeSamplePixels(std::uint8_t* pPixels);
    /// Null is allowed.
    QMX_SAMPLEBUFFER_API void GetSampleBufferPoolInfo(tagSampleBufferPoolInfo* pInfo);
}
