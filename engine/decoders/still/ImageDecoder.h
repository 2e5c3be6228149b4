/// @file ImageDecoder.h
/// The picture of a still image file.
#pragma once

#include "engine/decoders/Decoder.h"

#include <windows.h>

#include <cstdint>
#include <string>

struct IWICBitmapDecoder;
struct IWICBitmapSource;
struct IWICImagingFactory;

/// Decodes a file through the Imaging Component, turns it upright as its EXIF orientation says, fits it into a square
/// whose side is the property record's width, and turns it by the record's rotation. The frame is made once and handed
/// out for every time, until a change of path, rotation, width or height in the record calls for another.
///
/// Sides are even, rounded down. A picture that fits already is not scaled. The orientations that EXIF defines as left
/// and right exchanged are shown with top and bottom exchanged instead.
class QMX_API CImageDecoder : public CDecoder
{
public:
    CImageDecoder() = default;
    /// Copies the frames as plain pointers, without references: only for decoders that hold none.
    CImageDecoder(const CImageDecoder& other);
    CImageDecoder& operator=(const CImageDecoder& other); ///< likewise

    /// Opens the file and decodes no pixels. @return false when it is no picture that can be read
    bool Initialize(const tagDecProp& prop) override;
    /// Only a change of path, rotation, width or height counts.
    void SetDecoderProperty(const tagDecProp& prop) override;
    /// @param time  not looked at.  @param flag  not written.
    /// @return one reference for the caller. With rotation 90 or 270 the frame's declared size is exchanged. Null when
    ///         there is no frame to decode, or nothing is left of its size; a frame whose pixels cannot be decoded is
    ///         transparent black.
    ISampleBuffer* GetClipVideoFrame(std::uint64_t time, bool& flag) override;
    ISampleBuffer* GetLastFrame() override;

protected:
    ~CImageDecoder() override;

    /// Slot 8: the picture has to be scaled to the record's width.
    virtual bool IsNeedProcess();

    /// Frame @p index of the file as 32bppBGRA, upright. @return one reference for the caller, or null
    IWICBitmapSource* GetFrame(unsigned int index);
    /// Makes the finished frame of the raw one. @param keepRaw  the raw frame stays for the next time
    void ProcessFrame(bool keepRaw);
    /// @p source turned as EXIF @p orientation asks. Takes the caller's reference. @return one reference
    static IWICBitmapSource* _Rotate(IWICImagingFactory* factory, IWICBitmapSource* source, std::uint16_t orientation);
    /// Copies the first @p width x @p height pixels of @p source into a new buffer whose display aspect is that size in
    /// lowest terms.
    /// @param ppBuffer  [out] one reference for the caller; null for an empty or over-large size or when memory is
    /// short
    /// @return a failure, too, when the pixels cannot be decoded: the buffer is then black and transparent
    static HRESULT CopyToBuffer(IWICBitmapSource& source, std::uint32_t width, std::uint32_t height,
                                ISampleBuffer** ppBuffer);
    /// True when the record names another file than the one that is open.
    bool IsPathChanged() const { return m_strOpenPath != m_prop.filePath; }

    ISampleBuffer* m_pProcessed = nullptr; ///< owns one reference; the finished frame
    ISampleBuffer* m_pRaw = nullptr; ///< owns one reference; upright, at its own size (even sides), before scaling
    IWICImagingFactory* m_pFactory = nullptr;      ///< owns one reference
    IWICBitmapDecoder* m_pBitmapDecoder = nullptr; ///< owns one reference
    bool m_bPropertyChanged = false;               ///< the finished frame was made for another record

private:
    std::wstring m_strOpenPath; ///< path that Initialize() was last asked to open
};
