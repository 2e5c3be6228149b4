/// @file OpenedImage.h
/// Picture files through the Imaging Component, as the tests look at them.
#pragma once

#include "engine/platform/RefPtr.h"
#include "tests/support/Picture.h"

#include <wincodec.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

/// The imaging factory; the test has failed when it is null.
ComPtr<IWICImagingFactory> MakeImagingFactory();

/// A file opened by its name.
class OpenedImage
{
public:
    explicit OpenedImage(const std::filesystem::path& path);
    /// Bytes, which are written to a file first.
    explicit OpenedImage(const std::vector<std::uint8_t>& bytes);

    HRESULT Result() const { return m_result; } ///< of opening
    bool IsOpen() const { return static_cast<bool>(m_pDecoder); }
    IWICBitmapDecoder* operator->() const { return m_pDecoder.Get(); }
    UINT FrameCount() const;
    ComPtr<IWICBitmapFrameDecode> Frame(UINT index = 0) const;
    /// Pixels of a whole frame, empty when it cannot be decoded.
    test_support::Picture Pixels(UINT index = 0) const;
    /// Answer to "System.Photo.Orientation", 0 when there is none.
    USHORT Orientation(UINT index = 0) const;

private:
    void Open(const std::filesystem::path& path);

    HRESULT m_result = E_FAIL;
    ComPtr<IWICBitmapDecoder> m_pDecoder;
};

/// All pixels of @p source; empty when they cannot be copied.
test_support::Picture PixelsOf(IWICBitmapSource& source);
