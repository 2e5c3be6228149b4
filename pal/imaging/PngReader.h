/// @file PngReader.h
/// One pass of libpng over a file in memory.
#pragma once

#include "pal/imaging/ImageCodec.h"

#include <png.h>

namespace pal
{
/// The library reports errors by jumping out; no jump leaves this class. Its steps keep what they need in members,
/// because a jump skips destructors and spoils local variables.
class PngReader
{
public:
    explicit PngReader(const ImageBytes& bytes);
    ~PngReader();
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;

    /// Reads up to the first pixels. @return false when the file is damaged or memory is short
    bool ReadHeader(ImageSize& size);
    /// Reads all rows as BGRA; after ReadHeader(). Rows that cannot be read become transparent black.
    /// @return false when no row can be read
    bool ReadRows(BYTE* pTarget, std::size_t stride);

private:
    static void OnError(png_structp pPng, png_const_charp);
    static void OnWarning(png_structp, png_const_charp) {}
    static void OnRead(png_structp pPng, png_bytep pTarget, std::size_t cb);
    void AskForBgra();

    ImageBytes m_bytes;
    std::size_t m_at = 0;
    png_structp m_pPng = nullptr; // owned
    png_infop m_pInfo = nullptr;  // owned
    ImageSize m_size;
    int m_passes = 1;
    UINT m_row = 0;
    int m_pass = 0;
};
} // namespace pal
