/// @file SwfRenderer.h
/// Frames of Flash movies, from the Flash renderer library.
#pragma once

#include "engine/platform/Export.h"

#include <windows.h>

#include <cstddef>
#include <cstdint>

#pragma pack(push, 4)
/// What a movie says about itself. The layout is part of the library's binary interface.
struct tagSWFMovieInfo
{
    std::uint32_t cbSize = 64;       ///< 64, set by the caller
    std::uint32_t nVersion = 0;      ///< of the format
    std::uint32_t nFrameCount = 0;   ///< of the root
    double dWidth = 0;               ///< pixels
    double dHeight = 0;              ///< pixels
    double dFrameRate = 0;           ///< frames per second
    std::uint32_t nReserved[7] = {}; ///< 0
};
#pragma pack(pop)
static_assert(sizeof(tagSWFMovieInfo) == 64 && offsetof(tagSWFMovieInfo, dWidth) == 12 &&
                  offsetof(tagSWFMovieInfo, dHeight) == 20 && offsetof(tagSWFMovieInfo, dFrameRate) == 28,
              "fixed by the library's binary interface");

/// A frame that has been rendered.
struct tagSWFFrameInfo
{
    std::uint32_t nFrame = 0;  ///< index that was asked for
    std::uint32_t nWidth = 0;  ///< pixels
    std::uint32_t nHeight = 0; ///< rows
    std::uint32_t nStride = 0; ///< bytes: width * 4
};
static_assert(offsetof(tagSWFFrameInfo, nWidth) == 4 && offsetof(tagSWFFrameInfo, nHeight) == 8,
              "fixed by the library's binary interface");

inline constexpr std::uint32_t kSWFRenderHalfTurn = 1; ///< rows come turned by half a turn

/// One movie.
/// Lifetime : born with one reference; ends with the last Release().
/// Threads  : AddRef/Release from any thread; everything else from one thread at a time.
/// Slots    : the order of the declarations is part of the binary interface.
class ISWFRenderObj
{
protected:
    virtual ~ISWFRenderObj() = default; ///< slot 0; an object ends through Release() only
public:
    virtual std::uint32_t AddRef() = 0;  ///< slot 1. @return the new count
    virtual std::uint32_t Release() = 0; ///< slot 2. @return the new count; 0 when the object is gone
    virtual void CloseMovie() = 0;       ///< slot 3: back to the state of a new object, but for sizes and flags
    /// Slot 4. Reads the movie at @p path; one that was open is closed first.
    /// @retval E_INVALIDARG  no path  @retval E_FAIL  no movie can be read there  @retval E_OUTOFMEMORY
    virtual HRESULT OpenMovie(const wchar_t* path) = 0;
    /// Slot 5. Fills the record in; its cbSize has to be 64.
    /// @retval E_INVALIDARG  null, or another size  @retval E_FAIL  no movie is open: the record stays as it is
    virtual HRESULT GetMovieInfo(tagSWFMovieInfo* pInfo) = 0;
    /// Slot 6. Pixels of the frames to come; 0 for the movie's own size, rounded up. The stage fills all of it.
    virtual void SetRenderSize(std::uint32_t width, std::uint32_t height) = 0;
    virtual std::uint32_t GetRenderFlag() = 0; ///< slot 7
    /// Slot 8. @param value  0 or kSWFRenderHalfTurn
    virtual void SetRenderFlag(std::uint32_t value) = 0;
    /// Slot 9. Whether edges are smoothed (they are at first), or pixels belong to what covers their centre.
    virtual void SetSmoothEdges(bool smooth) = 0;
    virtual std::uint32_t GetFrameCount() = 0; ///< slot 10: of the root; 0 when no movie is open
    /// Slot 11. The picture that a player shows @p index ticks after the movie's first: the root and its sprites play
    /// on and begin again behind their ends, the background is part of it. It does not depend on what was asked before.
    /// @param ppInfo    [out] size of the picture; borrowed until the next call
    /// @param ppPixels  [out] BGRA rows of width * 4 bytes, opaque; borrowed until the next call
    /// @retval E_POINTER  a null parameter  @retval E_FAIL  no movie is open, or the size is beyond the limits
    /// @retval E_OUTOFMEMORY  On every failure both are null.
    virtual HRESULT RenderFrame(std::uint32_t index, const tagSWFFrameInfo** ppInfo, const std::uint8_t** ppPixels) = 0;
};

extern "C"
{
    /// @return one reference, or null when memory is short.
    QMX_SWFRENDERER_API ISWFRenderObj* CreateSWFRenderObj();
}
