/// @file dwrite.h
/// DirectWrite: formats and layouts of text in the system's fonts.
#pragma once

#include <dcommon.h>

inline constexpr HRESULT DWRITE_E_NOFONT = static_cast<HRESULT>(0x88985002U);

enum DWRITE_FACTORY_TYPE : int
{
    DWRITE_FACTORY_TYPE_SHARED = 0,
    DWRITE_FACTORY_TYPE_ISOLATED = 1
};
/// Any number from 1 to 999 is a weight.
enum DWRITE_FONT_WEIGHT : int
{
    DWRITE_FONT_WEIGHT_THIN = 100,
    DWRITE_FONT_WEIGHT_NORMAL = 400,
    DWRITE_FONT_WEIGHT_BOLD = 700,
    DWRITE_FONT_WEIGHT_BLACK = 900
};
enum DWRITE_FONT_STYLE : int
{
    DWRITE_FONT_STYLE_NORMAL = 0,
    DWRITE_FONT_STYLE_OBLIQUE = 1,
    DWRITE_FONT_STYLE_ITALIC = 2
};
enum DWRITE_FONT_STRETCH : int
{
    DWRITE_FONT_STRETCH_ULTRA_CONDENSED = 1,
    DWRITE_FONT_STRETCH_NORMAL = 5,
    DWRITE_FONT_STRETCH_ULTRA_EXPANDED = 9
};
enum DWRITE_TEXT_ALIGNMENT : int
{
    DWRITE_TEXT_ALIGNMENT_LEADING = 0,
    DWRITE_TEXT_ALIGNMENT_TRAILING = 1,
    DWRITE_TEXT_ALIGNMENT_CENTER = 2,
    DWRITE_TEXT_ALIGNMENT_JUSTIFIED = 3
};

/// Characters of a text, counted in wchar_t.
struct DWRITE_TEXT_RANGE
{
    UINT32 startPosition;
    UINT32 length;
};

/// Pixels; a layout's box has its upper left corner at 0, 0.
struct DWRITE_TEXT_METRICS
{
    FLOAT left; ///< left edge of the leftmost line, glyphs' overhang not counted
    FLOAT top;
    FLOAT width; ///< of the text, without white space at the ends of lines
    FLOAT widthIncludingTrailingWhitespace;
    FLOAT height;      ///< sum of the lines' heights
    FLOAT layoutWidth; ///< as it was given
    FLOAT layoutHeight;
    UINT32 maxBidiReorderingDepth;
    UINT32 lineCount;
};

struct IDWriteFontCollection : public IUnknown
{
protected:
    ~IDWriteFontCollection() = default;
};
PAL_DECLARE_IID(IDWriteFontCollection, IID_IDWriteFontCollection, 0xA84CEE02U, 0x3EEA, 0x4EEE, 0xA8, 0x27, 0x87, 0xC1,
                0xA0, 0x2A, 0x0F, 0xCC);

struct IDWriteTextFormat : public IUnknown
{
    /// @retval E_INVALIDARG  no such alignment; nothing is changed then
    virtual HRESULT STDMETHODCALLTYPE SetTextAlignment(DWRITE_TEXT_ALIGNMENT textAlignment) = 0;

protected:
    ~IDWriteTextFormat() = default;
};
PAL_DECLARE_IID(IDWriteTextFormat, IID_IDWriteTextFormat, 0x9C906818U, 0x31D7, 0x4FD3, 0xA1, 0x51, 0x7C, 0x5E, 0x22,
                0x5D, 0xB5, 0x5A);

/// Text set in lines: left-to-right paragraphs, wrapped between words, and inside one that is wider than the box.
struct IDWriteTextLayout : public IDWriteTextFormat
{
    virtual HRESULT STDMETHODCALLTYPE SetUnderline(BOOL hasUnderline, DWRITE_TEXT_RANGE textRange) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetMetrics(DWRITE_TEXT_METRICS* pTextMetrics) = 0;

protected:
    ~IDWriteTextLayout() = default;
};
PAL_DECLARE_IID(IDWriteTextLayout, IID_IDWriteTextLayout, 0x53737037U, 0x6D14, 0x410B, 0x9B, 0xFE, 0x0B, 0x18, 0x2B,
                0xB7, 0x09, 0x61);

/// May be used from several threads; what it makes, from one at a time.
struct IDWriteFactory : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE GetSystemFontCollection(IDWriteFontCollection** ppFontCollection,
                                                              BOOL checkForUpdates = FALSE) = 0;
    /// @param familyName  a family that the system does not have is replaced by one that it has
    /// @param pFontCollection  null or the system's
    /// @param fontSize  of the em square, in pixels; greater than 0, at most 32,767 here
    /// @param localeName  language tag: chooses between regional forms of characters
    /// @retval E_INVALIDARG  a null name, a weight outside 1..999, no such style or stretch, a size out of range
    virtual HRESULT STDMETHODCALLTYPE CreateTextFormat(const WCHAR* familyName, IDWriteFontCollection* pFontCollection,
                                                       DWRITE_FONT_WEIGHT fontWeight, DWRITE_FONT_STYLE fontStyle,
                                                       DWRITE_FONT_STRETCH fontStretch, FLOAT fontSize,
                                                       const WCHAR* localeName, IDWriteTextFormat** ppTextFormat) = 0;
    /// @param pString  @p stringLength characters; may be null when there are none
    /// @param maxWidth, maxHeight  of the layout's box, pixels, not negative. Nothing is cut off at the box.
    /// @retval E_INVALIDARG  a size that is negative or no number, no text, or a format of another maker
    /// @retval DWRITE_E_NOFONT  the system has no fonts at all
    virtual HRESULT STDMETHODCALLTYPE CreateTextLayout(const WCHAR* pString, UINT32 stringLength,
                                                       IDWriteTextFormat* pTextFormat, FLOAT maxWidth, FLOAT maxHeight,
                                                       IDWriteTextLayout** ppTextLayout) = 0;

protected:
    ~IDWriteFactory() = default;
};
PAL_DECLARE_IID(IDWriteFactory, IID_IDWriteFactory, 0xB859EE5AU, 0xD838, 0x4B5B, 0xA2, 0xE8, 0x1A, 0xDC, 0x7D, 0x93,
                0xDB, 0x48);

extern "C" HRESULT DWriteCreateFactory(DWRITE_FACTORY_TYPE factoryType, REFIID iid, IUnknown** ppFactory);
