/// @file GifCodec.h
/// GIF files through giflib, record by record: the raw frames, not what a viewer composes of them.
#pragma once

#include "pal/imaging/ImageCodec.h"

#include <gif_lib.h>

#include <optional>
#include <vector>

namespace pal
{
/// Frames have the size of their own rectangle. Pixels of the transparent index, of an index beyond the palette, and
/// those that a damaged frame lacks are transparent black; all others are opaque. Answers the queries
/// /logscrdesc/{Width, Height, PixelAspectRatio, GlobalColorTableFlag, BackgroundColorIndex},
/// /appext/{application, data} (the file's first application extension), and for a frame
/// /imgdesc/{Left, Top, Width, Height} and /grctlext/{Delay, Disposal}.
class GifCodec final : public ImageCodec
{
public:
    static HRESULT Open(const ImageBytes& bytes, ImageCodecPtr& pCodec);
    ~GifCodec() override;

    const GUID& ContainerFormat() const override { return GUID_ContainerFormatGif; }
    UINT FrameCount() const override { return static_cast<UINT>(m_frames.size()); }
    HRESULT GetFrameSize(UINT frame, ImageSize& size) override;
    HRESULT Decode(UINT frame, BYTE* pTarget, std::size_t stride) override;
    std::vector<WICColor> GlobalPalette() const override;
    USHORT Orientation(UINT) const override { return 0; }
    HRESULT Query(const UINT* pFrame, LPCWSTR name, PROPVARIANT& value) const override;

private:
    /// A graphic control extension.
    struct Control
    {
        USHORT delay = 0; ///< hundredths of a second
        BYTE disposal = 0;
        int transparent = NO_TRANSPARENT_COLOR; ///< palette index
    };
    struct Frame
    {
        std::size_t offset = 0; ///< of the image descriptor, behind its introducer
        USHORT left = 0;
        USHORT top = 0;
        USHORT width = 0;
        USHORT height = 0;
        std::optional<Control> control;
    };

    explicit GifCodec(const ImageBytes& bytes) : m_bytes(bytes) {}
    static int OnRead(GifFileType* pGif, GifByteType* pTarget, int cb);
    void ReadRecords();
    bool ReadFrame(std::optional<Control>& control);
    bool ReadExtension(std::optional<Control>& control);
    bool ReadApplication(const GifByteType* pBlock);
    bool BeginFrame(const Frame& frame);
    UINT ReadBrokenRow(const Frame& frame, UINT firstRows, GifByteType* pRow);
    HRESULT QueryFile(LPCWSTR name, PROPVARIANT& value) const;
    HRESULT QueryFrame(const Frame& frame, LPCWSTR name, PROPVARIANT& value) const;

    const ImageBytes m_bytes;
    std::size_t m_at = 0;          ///< where the library reads next
    GifFileType* m_pGif = nullptr; // owned
    std::vector<Frame> m_frames;
    std::vector<BYTE> m_application;     ///< identifier of the first application extension; empty for none
    std::vector<BYTE> m_applicationData; ///< its blocks with their lengths, and the 0 that ends them
    std::vector<GifByteType> m_row;      ///< indices of one row
};
} // namespace pal
