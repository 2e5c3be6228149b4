/// @file wincodec.h
/// The Imaging Component: decoders of picture files. Interfaces have their documented slots in their documented order;
/// the factory's end with the last one that is used.
#pragma once

#include <objbase.h>

struct IStream;
struct IEnumString;
struct IWICBitmapClipper;
struct IWICBitmapDecoderInfo;
struct IWICBitmapEncoder;
struct IWICBitmapScaler;
struct IWICColorContext;
struct IWICColorTransform;
struct IWICComponentInfo;
struct IWICStream;
struct PROPVARIANT;

using WICColor = UINT32; ///< 0xAARRGGBB
using WICPixelFormatGUID = GUID;
using REFWICPixelFormatGUID = REFGUID;

struct WICRect
{
    INT X;
    INT Y;
    INT Width;
    INT Height;
};

// ---- classes, containers, pixel formats --------------------------------------------------------------------------

inline constexpr CLSID CLSID_WICImagingFactory1{
    0xCACAF262U, 0x9370, 0x4615, {0xA1, 0x3B, 0x9F, 0x55, 0x39, 0xDA, 0x4C, 0x0A}};
inline constexpr CLSID CLSID_WICImagingFactory2{
    0x317D06E8U, 0x5F24, 0x433D, {0xBD, 0xF7, 0x79, 0xCE, 0x68, 0xD8, 0xAB, 0xC2}};

inline constexpr GUID GUID_ContainerFormatBmp{
    0x0AF1D87EU, 0xFCFE, 0x4188, {0xBD, 0xEB, 0xA7, 0x90, 0x64, 0x71, 0xCB, 0xE3}};
inline constexpr GUID GUID_ContainerFormatPng{
    0x1B7CFAF4U, 0x713F, 0x473C, {0xBB, 0xCD, 0x61, 0x37, 0x42, 0x5F, 0xAE, 0xAF}};
inline constexpr GUID GUID_ContainerFormatIco{
    0xA3A860C4U, 0x338F, 0x4C17, {0x91, 0x9A, 0xFB, 0xA4, 0xB5, 0x62, 0x8F, 0x21}};
inline constexpr GUID GUID_ContainerFormatJpeg{
    0x19E4A5AAU, 0x5662, 0x4FC5, {0xA0, 0xC0, 0x17, 0x58, 0x02, 0x8E, 0x10, 0x57}};
inline constexpr GUID GUID_ContainerFormatTiff{
    0x163BCC30U, 0xE2E9, 0x4F0B, {0x96, 0x1D, 0xA3, 0xE9, 0xFD, 0xB7, 0x88, 0xA3}};
inline constexpr GUID GUID_ContainerFormatGif{
    0x1F8A5601U, 0x7D4D, 0x4CBD, {0x9C, 0x82, 0x1B, 0xC8, 0xD4, 0xEE, 0xB9, 0xA5}};
inline constexpr GUID GUID_ContainerFormatWebp{
    0xE094B0E2U, 0x67F2, 0x45B3, {0xB0, 0xEA, 0x11, 0x53, 0x37, 0xCA, 0x7C, 0xF3}};

inline constexpr GUID GUID_WICPixelFormat24bppBGR{
    0x6FDDC324U, 0x4E03, 0x4BFE, {0xB1, 0x85, 0x3D, 0x77, 0x76, 0x8D, 0xC9, 0x0C}};
inline constexpr GUID GUID_WICPixelFormat32bppBGRA{
    0x6FDDC324U, 0x4E03, 0x4BFE, {0xB1, 0x85, 0x3D, 0x77, 0x76, 0x8D, 0xC9, 0x0F}}; ///< bytes B, G, R, A; straight

// ---- status codes ------------------------------------------------------------------------------------------------

inline constexpr HRESULT WINCODEC_ERR_VALUEOUTOFRANGE = static_cast<HRESULT>(0x88982F05U);
inline constexpr HRESULT WINCODEC_ERR_UNKNOWNIMAGEFORMAT = static_cast<HRESULT>(0x88982F07U);
inline constexpr HRESULT WINCODEC_ERR_NOTINITIALIZED = static_cast<HRESULT>(0x88982F0CU);
inline constexpr HRESULT WINCODEC_ERR_PROPERTYNOTFOUND = static_cast<HRESULT>(0x88982F40U);
inline constexpr HRESULT WINCODEC_ERR_CODECNOTHUMBNAIL = static_cast<HRESULT>(0x88982F44U);
inline constexpr HRESULT WINCODEC_ERR_PALETTEUNAVAILABLE = static_cast<HRESULT>(0x88982F45U);
inline constexpr HRESULT WINCODEC_ERR_COMPONENTNOTFOUND = static_cast<HRESULT>(0x88982F50U);
inline constexpr HRESULT WINCODEC_ERR_IMAGESIZEOUTOFRANGE = static_cast<HRESULT>(0x88982F51U);
inline constexpr HRESULT WINCODEC_ERR_BADIMAGE = static_cast<HRESULT>(0x88982F60U);
inline constexpr HRESULT WINCODEC_ERR_BADHEADER = static_cast<HRESULT>(0x88982F61U);
inline constexpr HRESULT WINCODEC_ERR_FRAMEMISSING = static_cast<HRESULT>(0x88982F62U);
inline constexpr HRESULT WINCODEC_ERR_UNSUPPORTEDPIXELFORMAT = static_cast<HRESULT>(0x88982F80U);
inline constexpr HRESULT WINCODEC_ERR_UNSUPPORTEDOPERATION = static_cast<HRESULT>(0x88982F81U);
inline constexpr HRESULT WINCODEC_ERR_INSUFFICIENTBUFFER = static_cast<HRESULT>(0x88982F8CU);

// ---- enumerations ------------------------------------------------------------------------------------------------

enum WICDecodeOptions : UINT32
{
    WICDecodeMetadataCacheOnDemand = 0,
    WICDecodeMetadataCacheOnLoad = 1
};

/// One rotation (clockwise), to which the flips may be added. Here the rotation comes first.
enum WICBitmapTransformOptions : UINT32
{
    WICBitmapTransformRotate0 = 0,
    WICBitmapTransformRotate90 = 0x1,
    WICBitmapTransformRotate180 = 0x2,
    WICBitmapTransformRotate270 = 0x3,
    WICBitmapTransformFlipHorizontal = 0x8, ///< left and right change places
    WICBitmapTransformFlipVertical = 0x10   ///< top and bottom change places
};

enum WICBitmapDitherType : UINT32
{
    WICBitmapDitherTypeNone = 0
};

enum WICBitmapPaletteType : UINT32
{
    WICBitmapPaletteTypeCustom = 0
};

// ---- interfaces --------------------------------------------------------------------------------------------------

struct IWICBitmapSource;

/// Up to 256 colours.
struct IWICPalette : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE InitializePredefined(WICBitmapPaletteType type, BOOL addTransparentColor) = 0;
    virtual HRESULT STDMETHODCALLTYPE InitializeCustom(WICColor* pColors, UINT count) = 0;
    virtual HRESULT STDMETHODCALLTYPE InitializeFromBitmap(IWICBitmapSource* pSource, UINT count,
                                                           BOOL addTransparentColor) = 0;
    virtual HRESULT STDMETHODCALLTYPE InitializeFromPalette(IWICPalette* pPalette) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetType(WICBitmapPaletteType* pType) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetColorCount(UINT* pCount) = 0;
    /// Copies at most @p count colours. @param pActual  [out] how many were copied
    virtual HRESULT STDMETHODCALLTYPE GetColors(UINT count, WICColor* pColors, UINT* pActual) = 0;
    virtual HRESULT STDMETHODCALLTYPE IsBlackWhite(BOOL* pResult) = 0;
    virtual HRESULT STDMETHODCALLTYPE IsGrayscale(BOOL* pResult) = 0;
    virtual HRESULT STDMETHODCALLTYPE HasAlpha(BOOL* pResult) = 0;

protected:
    ~IWICPalette() = default;
};
PAL_DECLARE_IID(IWICPalette, IID_IWICPalette, 0x00000040U, 0xA8F2, 0x4877, 0xBA, 0x0A, 0xFD, 0x2B, 0x66, 0x45, 0xFB,
                0x94);

/// A picture whose pixels can be asked for.
struct IWICBitmapSource : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE GetSize(UINT* pWidth, UINT* pHeight) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetPixelFormat(WICPixelFormatGUID* pFormat) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetResolution(double* pDpiX, double* pDpiY) = 0;
    virtual HRESULT STDMETHODCALLTYPE CopyPalette(IWICPalette* pPalette) = 0;
    /// @param pRect     part of the picture; null for all of it
    /// @param stride    bytes from one row of @p pBuffer to the next, at least the bytes of a row
    /// @param cbBuffer  bytes that may be written
    /// @retval E_INVALIDARG  a rectangle that is empty or reaches outside, a stride that is too small
    /// @retval WINCODEC_ERR_INSUFFICIENTBUFFER  the rows do not fit
    virtual HRESULT STDMETHODCALLTYPE CopyPixels(const WICRect* pRect, UINT stride, UINT cbBuffer, BYTE* pBuffer) = 0;

protected:
    ~IWICBitmapSource() = default;
};
PAL_DECLARE_IID(IWICBitmapSource, IID_IWICBitmapSource, 0x00000120U, 0xA8F2, 0x4877, 0xBA, 0x0A, 0xFD, 0x2B, 0x66, 0x45,
                0xFB, 0x94);

struct IWICFormatConverter : public IWICBitmapSource
{
    virtual HRESULT STDMETHODCALLTYPE Initialize(IWICBitmapSource* pSource, REFWICPixelFormatGUID format,
                                                 WICBitmapDitherType dither, IWICPalette* pPalette,
                                                 double alphaThresholdPercent, WICBitmapPaletteType paletteType) = 0;
    virtual HRESULT STDMETHODCALLTYPE CanConvert(REFWICPixelFormatGUID from, REFWICPixelFormatGUID to,
                                                 BOOL* pCanConvert) = 0;

protected:
    ~IWICFormatConverter() = default;
};
PAL_DECLARE_IID(IWICFormatConverter, IID_IWICFormatConverter, 0x00000301U, 0xA8F2, 0x4877, 0xBA, 0x0A, 0xFD, 0x2B, 0x66,
                0x45, 0xFB, 0x94);

struct IWICBitmapFlipRotator : public IWICBitmapSource
{
    virtual HRESULT STDMETHODCALLTYPE Initialize(IWICBitmapSource* pSource, WICBitmapTransformOptions options) = 0;

protected:
    ~IWICBitmapFlipRotator() = default;
};
PAL_DECLARE_IID(IWICBitmapFlipRotator, IID_IWICBitmapFlipRotator, 0x5009834FU, 0x2D6A, 0x41CE, 0x9E, 0x1B, 0x17, 0xC5,
                0xAF, 0xF7, 0xA7, 0x82);

/// Values that a file states beside its pixels, by name.
struct IWICMetadataQueryReader : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE GetContainerFormat(GUID* pFormat) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetLocation(UINT cchMax, WCHAR* pNamespace, UINT* pcchActual) = 0;
    /// @param pValue  [in, out] empty; the caller clears it. Null asks only whether there is such a value.
    /// @retval WINCODEC_ERR_PROPERTYNOTFOUND  the file does not say
    virtual HRESULT STDMETHODCALLTYPE GetMetadataByName(LPCWSTR name, PROPVARIANT* pValue) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetEnumerator(IEnumString** ppEnumerator) = 0;

protected:
    ~IWICMetadataQueryReader() = default;
};
PAL_DECLARE_IID(IWICMetadataQueryReader, IID_IWICMetadataQueryReader, 0x30989668U, 0xE1C9, 0x4597, 0xB3, 0x95, 0x45,
                0x8E, 0xED, 0xB8, 0x08, 0xDF);

struct IWICBitmapFrameDecode : public IWICBitmapSource
{
    virtual HRESULT STDMETHODCALLTYPE GetMetadataQueryReader(IWICMetadataQueryReader** ppReader) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetColorContexts(UINT count, IWICColorContext** ppContexts, UINT* pActual) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetThumbnail(IWICBitmapSource** ppThumbnail) = 0;

protected:
    ~IWICBitmapFrameDecode() = default;
};
PAL_DECLARE_IID(IWICBitmapFrameDecode, IID_IWICBitmapFrameDecode, 0x3B16811BU, 0x6A43, 0x4EC9, 0xA8, 0x13, 0x3D, 0x93,
                0x0C, 0x13, 0xB9, 0x40);

/// An open picture file. It and what it gives are used by one thread at a time.
struct IWICBitmapDecoder : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE QueryCapability(IStream* pStream, DWORD* pCapability) = 0;
    virtual HRESULT STDMETHODCALLTYPE Initialize(IStream* pStream, WICDecodeOptions options) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetContainerFormat(GUID* pFormat) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDecoderInfo(IWICBitmapDecoderInfo** ppInfo) = 0;
    /// The palette that holds for all frames. @retval WINCODEC_ERR_PALETTEUNAVAILABLE  there is none
    virtual HRESULT STDMETHODCALLTYPE CopyPalette(IWICPalette* pPalette) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetMetadataQueryReader(IWICMetadataQueryReader** ppReader) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetPreview(IWICBitmapSource** ppSource) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetColorContexts(UINT count, IWICColorContext** ppContexts, UINT* pActual) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetThumbnail(IWICBitmapSource** ppThumbnail) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetFrameCount(UINT* pCount) = 0;
    /// Decodes nothing: that happens with CopyPixels(). @retval WINCODEC_ERR_FRAMEMISSING  no such frame
    virtual HRESULT STDMETHODCALLTYPE GetFrame(UINT index, IWICBitmapFrameDecode** ppFrame) = 0;

protected:
    ~IWICBitmapDecoder() = default;
};
PAL_DECLARE_IID(IWICBitmapDecoder, IID_IWICBitmapDecoder, 0x9EDDE9E7U, 0x8DEE, 0x47EA, 0x99, 0xDF, 0xE6, 0xFA, 0xF2,
                0xED, 0x44, 0xBF);

struct IWICImagingFactory : public IUnknown
{
    /// @param access  GENERIC_READ
    /// @retval WINCODEC_ERR_COMPONENTNOTFOUND  no codec knows the file
    virtual HRESULT STDMETHODCALLTYPE CreateDecoderFromFilename(LPCWSTR fileName, const GUID* pVendor, DWORD access,
                                                                WICDecodeOptions options,
                                                                IWICBitmapDecoder** ppDecoder) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateDecoderFromStream(IStream* pStream, const GUID* pVendor,
                                                              WICDecodeOptions options,
                                                              IWICBitmapDecoder** ppDecoder) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateDecoderFromFileHandle(ULONG_PTR file, const GUID* pVendor,
                                                                  WICDecodeOptions options,
                                                                  IWICBitmapDecoder** ppDecoder) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateComponentInfo(REFCLSID component, IWICComponentInfo** ppInfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateDecoder(REFGUID format, const GUID* pVendor,
                                                    IWICBitmapDecoder** ppDecoder) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateEncoder(REFGUID format, const GUID* pVendor,
                                                    IWICBitmapEncoder** ppEncoder) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreatePalette(IWICPalette** ppPalette) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateFormatConverter(IWICFormatConverter** ppConverter) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateBitmapScaler(IWICBitmapScaler** ppScaler) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateBitmapClipper(IWICBitmapClipper** ppClipper) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateBitmapFlipRotator(IWICBitmapFlipRotator** ppRotator) = 0;

protected:
    ~IWICImagingFactory() = default;
};
PAL_DECLARE_IID(IWICImagingFactory, IID_IWICImagingFactory, 0xEC5EC8A9U, 0xC395, 0x4314, 0x9C, 0x77, 0x54, 0xD7, 0xA9,
                0x35, 0xFF, 0x70);

extern "C"
{
    /// @p pSource in another pixel format; itself, with a reference more, when it has it already.
    HRESULT WICConvertBitmapSource(REFWICPixelFormatGUID format, IWICBitmapSource* pSource,
                                   IWICBitmapSource** ppConverted);
}
