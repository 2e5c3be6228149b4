/// @file TextCanvas.h
/// Where titles and keystroke labels are drawn.
#pragma once

#include "engine/platform/Export.h"
#include "engine/platform/SampleBuffer.h"

#include <windows.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

struct ID2D1Factory;
struct ID2D1RenderTarget;
struct ID3D11Device;
struct ID3D11DeviceContext;
struct ID3D11Texture2D;
struct IDWriteFactory4;
struct IDWriteTextFormat;
struct IDWriteTextLayout;
struct IDXGISurface;

inline constexpr float kTextReferenceHeight = 288; ///< rows of the frame that text sizes and paddings are given for

/// Everything that a layout depends on beside its text and its family.
struct TextFace
{
    bool operator==(const TextFace&) const = default; ///< every field

    float size = 0;              ///< pixels to the em
    std::uint32_t weight = 400;  ///< 1..999: 400 normal, 700 bold
    bool italic = false;         ///< slanted
    bool underline = false;      ///< of the whole text
    std::uint32_t alignment = 0; ///< as tagQMXTitleTextInfo has it
    float maxWidth = 0;          ///< pixels at which lines wrap
    float maxHeight = 0;         ///< pixels
};

/// A text that has been set in lines; sizes in pixels.
struct SetText
{
    IDWriteTextLayout* pLayout = nullptr; ///< borrowed until the frame ends; null when the text cannot be set
    float left = 0;                       ///< of the leftmost line in the layout's box
    float width = 0;                      ///< of the longest line
    float height = 0;                     ///< of all lines
};

/// Draws frames of text through Direct2D and DirectWrite onto a Direct3D texture, and hands their pixels out as sample
/// buffers. Devices, textures and the render target are made once for a size; layouts are kept from frame to frame
/// while they are used. A frame first collects what is to be drawn: where that is what the texture shows already,
/// nothing is drawn, and the pixels are only copied. A missing device, font or service makes frames transparent.
/// Copying copies the pointers as plain values, without references: never copy a canvas that is open.
class QMX_API CTextCanvas
{
public:
    CTextCanvas();
    CTextCanvas(const CTextCanvas& other);            ///< see above
    CTextCanvas& operator=(const CTextCanvas& other); ///< see above
    ~CTextCanvas(); ///< leaves an open canvas's services alone; its owner calls Close()

    /// Makes what frames of @p width x @p height pixels are drawn with. What cannot be made stays missing.
    void Open(std::uint32_t width, std::uint32_t height);
    void Close(); ///< gives back what Open() has made

    /// Starts a frame with nothing on it.
    void BeginFrame();
    /// Takes away what has been drawn since BeginFrame().
    void ClearFrame();
    /// Throws std::bad_alloc.
    SetText LayOut(std::wstring_view text, const std::wstring& fontName, const TextFace& face);
    /// Each adds to what the frame draws, over what it has. Colours are 0x00RRGGBB; the top byte has no effect. Alphas
    /// are 0..1. Both throw std::bad_alloc.
    void AddRectangle(float left, float top, float right, float bottom, std::uint32_t color, float alpha);
    /// Likewise: @p text with the upper left corner of its layout's box at @p left, @p top.
    void AddText(const SetText& text, float left, float top, std::uint32_t color, float alpha, float opacity);
    /// Draws the frame where it differs from the one before. Layouts that it has not used are dropped.
    /// @return one reference to a new premultiplied buffer, or null: no size, or memory is short
    ISampleBuffer* EndFrame();

private:
    struct Command;
    struct KeptText;

    bool CreateDeviceAndFactories();
    void CreateTargets();
    void Release();
    KeptText* FindText(std::wstring_view text, const std::wstring& fontName, const TextFace& face);
    [[nodiscard]] HRESULT CreateLayout(KeptText& kept);
    [[nodiscard]] HRESULT CreateFormat(const KeptText& kept, IDWriteTextFormat** ppFormat);
    [[nodiscard]] HRESULT DrawFrame();
    void Execute(const Command& command);
    bool ShowFrame();
    bool CopyPixels(ISampleBuffer& frame);

    ID2D1Factory* m_pD2DFactory = nullptr;        // each owns one reference while the canvas is open, or is null
    ID2D1RenderTarget* m_pRenderTarget = nullptr; ///< over m_pRenderSurface
    ID3D11Device* m_pDevice = nullptr;
    ID3D11DeviceContext* m_pContext = nullptr;
    ID3D11Texture2D* m_pRenderTexture = nullptr;  ///< drawn into
    ID3D11Texture2D* m_pStagingTexture = nullptr; ///< read from
    IDWriteFactory4* m_pDWriteFactory = nullptr;
    IDXGISurface* m_pRenderSurface = nullptr;  ///< of m_pRenderTexture
    IDXGISurface* m_pStagingSurface = nullptr; ///< of m_pStagingTexture

    std::uint32_t m_nWidth = 0;
    std::uint32_t m_nHeight = 0;
    std::wstring m_strLocale;         ///< of the layouts
    std::vector<KeptText> m_vecTexts; ///< layouts of the frame before and of this one
    std::size_t m_nNextText = 0;      ///< where the next layout most likely is: frames mostly ask in one order
    std::vector<Command> m_vecFrame;  ///< what this frame draws
    std::vector<Command> m_vecShown;  ///< what the staging texture shows
    bool m_bShown = false;            ///< m_vecShown holds
    std::uint32_t m_nFrame = 0;       ///< counts frames, to tell used layouts from unused ones
};
