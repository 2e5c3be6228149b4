#include "pal/imaging/ImagingFactory.h"

#include "pal/imaging/BitmapDecoder.h"
#include "pal/imaging/FlipRotator.h"
#include "pal/imaging/FormatConverter.h"
#include "pal/imaging/Palette.h"

#include <cstdlib>
#include <new>

namespace pal
{
namespace
{
template <class Object, class Interface> HRESULT Make(Interface** ppObject)
{
    if (ppObject == nullptr)
        return E_INVALIDARG;
    *ppObject = new (std::nothrow) Object;
    return *ppObject != nullptr ? S_OK : E_OUTOFMEMORY;
}
} // namespace

HRESULT ImagingFactory::CreateDecoderFromFilename(LPCWSTR fileName, const GUID*, DWORD access, WICDecodeOptions,
                                                  IWICBitmapDecoder** ppDecoder)
{
    if (ppDecoder == nullptr)
        return E_INVALIDARG;
    *ppDecoder = nullptr;
    if (fileName == nullptr || access != GENERIC_READ)
        return E_INVALIDARG;
    try
    {
        ImageBytes bytes;
        ImageCodecPtr pCodec;
        HRESULT hr = ImageBytes::ReadFile(fileName, bytes);
        if (SUCCEEDED(hr))
            hr = OpenImageCodec(bytes, pCodec);
        if (SUCCEEDED(hr))
            *ppDecoder = new BitmapDecoder(std::move(pCodec));
        return hr;
    }
    catch (const std::bad_alloc&)
    {
        return E_OUTOFMEMORY;
    }
}

HRESULT ImagingFactory::CreatePalette(IWICPalette** ppPalette)
{
    return Make<Palette>(ppPalette);
}

HRESULT ImagingFactory::CreateFormatConverter(IWICFormatConverter** ppConverter)
{
    return Make<FormatConverter>(ppConverter);
}

HRESULT ImagingFactory::CreateBitmapFlipRotator(IWICBitmapFlipRotator** ppRotator)
{
    return Make<FlipRotator>(ppRotator);
}
} // namespace pal

extern "C" HRESULT CoCreateInstance(REFCLSID clsid, LPUNKNOWN pOuter, DWORD context, REFIID iid, LPVOID* ppObject)
{
    if (ppObject == nullptr)
        return E_POINTER;
    *ppObject = nullptr;
    if (pOuter != nullptr)
        return CLASS_E_NOAGGREGATION;
    if ((clsid != CLSID_WICImagingFactory1 && clsid != CLSID_WICImagingFactory2) ||
        (context & CLSCTX_INPROC_SERVER) == 0)
        return REGDB_E_CLASSNOTREG;
    auto* const pFactory = new (std::nothrow) pal::ImagingFactory;
    if (pFactory == nullptr)
        return E_OUTOFMEMORY;
    const HRESULT hr = pFactory->QueryInterface(iid, ppObject);
    pFactory->Release();
    return hr;
}

extern "C" LPVOID CoTaskMemAlloc(SIZE_T cb)
{
    return std::malloc(cb);
}

extern "C" void CoTaskMemFree(LPVOID p)
{
    std::free(p);
}

extern "C" HRESULT WICConvertBitmapSource(REFWICPixelFormatGUID format, IWICBitmapSource* pSource,
                                          IWICBitmapSource** ppConverted)
{
    if (ppConverted == nullptr)
        return E_INVALIDARG;
    *ppConverted = nullptr;
    if (pSource == nullptr)
        return E_INVALIDARG;
    WICPixelFormatGUID own = GUID_NULL;
    const HRESULT hr = pSource->GetPixelFormat(&own);
    if (FAILED(hr))
        return hr;
    if (own != format)
        return WINCODEC_ERR_UNSUPPORTEDPIXELFORMAT; // there is one format here
    pSource->AddRef();
    *ppConverted = pSource;
    return S_OK;
}
