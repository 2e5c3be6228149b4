#include "tests/decoders/still/FakeImaging.h"

#include "engine/platform/RefPtr.h"
#include "pal/kernel/ComObject.h"

#include <algorithm>
#include <cstring>

extern "C" HRESULT __real_CoCreateInstance(REFCLSID clsid, LPUNKNOWN pOuter, DWORD context, REFIID iid,
                                           LPVOID* ppObject);
extern "C" HRESULT __real_WICConvertBitmapSource(REFWICPixelFormatGUID format, IWICBitmapSource* pSource,
                                                 IWICBitmapSource** ppConverted);

namespace
{
struct FakeState
{
    std::map<std::wstring, const FakeImage*> files;
    int filesOpened = 0;
    int converted = 0;
    std::vector<UINT> framesCopied;
    std::vector<WICRect> rects;
    std::vector<UINT> rotations;
    bool factoryFails = false;
    bool conversionFails = false;
    int rotatorFails = 0;
};
FakeState g_state;
int g_live = 0;

/// Counts itself.
struct Counted
{
    Counted() { ++g_live; }
    ~Counted() { --g_live; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
};

void Store(const FakeValue& stored, PROPVARIANT& value)
{
    if (const auto* const pWord = std::get_if<CFakeWord>(&stored))
    {
        value.vt = VT_UI2;
        value.uiVal = pWord->value;
    }
    else if (const auto* const pByte = std::get_if<CFakeByte>(&stored))
    {
        value.vt = VT_UI1;
        value.bVal = pByte->value;
    }
    else if (const auto* const pLong = std::get_if<CFakeLong>(&stored))
    {
        value.vt = VT_I4;
        value.lVal = pLong->value;
    }
    else if (const auto* const pFlag = std::get_if<bool>(&stored))
    {
        value.vt = VT_BOOL;
        value.boolVal = *pFlag ? VARIANT_TRUE : VARIANT_FALSE;
    }
    else if (const auto* const pBytes = std::get_if<std::vector<BYTE>>(&stored))
    {
        value.vt = VT_VECTOR | VT_UI1;
        value.caub = {static_cast<ULONG>(pBytes->size()), static_cast<BYTE*>(CoTaskMemAlloc(pBytes->size()))};
        std::memcpy(value.caub.pElems, pBytes->data(), pBytes->size());
    }
}

class FakeReader final : public pal::ComObject<FakeReader, IWICMetadataQueryReader>, Counted
{
public:
    explicit FakeReader(const FakeMetadata& metadata) : m_metadata(metadata) {}
    HRESULT GetContainerFormat(GUID*) override { return E_NOTIMPL; }
    HRESULT GetLocation(UINT, WCHAR*, UINT*) override { return E_NOTIMPL; }
    HRESULT GetMetadataByName(LPCWSTR name, PROPVARIANT* pValue) override
    {
        const auto found = m_metadata.find(name);
        if (found == m_metadata.end())
            return WINCODEC_ERR_PROPERTYNOTFOUND;
        Store(found->second, *pValue);
        return S_OK;
    }
    HRESULT GetEnumerator(IEnumString**) override { return E_NOTIMPL; }

private:
    const FakeMetadata m_metadata;
};

template <class Derived, class Primary> class FakeSource : public pal::ComObject<Derived, Primary, IWICBitmapSource>
{
public:
    HRESULT GetResolution(double*, double*) override { return E_NOTIMPL; }
    HRESULT CopyPalette(IWICPalette*) override { return E_NOTIMPL; }

protected:
    ~FakeSource() = default;
};

class FakeFrame final : public FakeSource<FakeFrame, IWICBitmapFrameDecode>, Counted
{
public:
    FakeFrame(const FakeImageFrame& frame, UINT index) : m_frame(frame), m_index(index) {}
    HRESULT GetSize(UINT* pWidth, UINT* pHeight) override
    {
        *pWidth = m_frame.width;
        *pHeight = m_frame.height;
        return S_OK;
    }
    HRESULT GetPixelFormat(WICPixelFormatGUID* pFormat) override
    {
        *pFormat = m_frame.format;
        return S_OK;
    }
    HRESULT CopyPixels(const WICRect* pRect, UINT stride, UINT cb, BYTE* pBuffer) override
    {
        g_state.framesCopied.push_back(m_index);
        g_state.rects.push_back(*pRect);
        if (!m_frame.canBeCopied)
            return WINCODEC_ERR_BADIMAGE;
        const auto width = static_cast<UINT>(pRect->Width);
        const auto height = static_cast<UINT>(pRect->Height);
        if (stride < width * 4 || std::uint64_t{stride} * height > cb)
            return WINCODEC_ERR_INSUFFICIENTBUFFER;
        for (UINT y = 0; y < height; ++y)
            for (UINT x = 0; x < width; ++x)
                std::memcpy(pBuffer + std::size_t{y} * stride + std::size_t{x} * 4, &m_frame.color, 4);
        return S_OK;
    }
    HRESULT GetMetadataQueryReader(IWICMetadataQueryReader** ppReader) override
    {
        *ppReader = m_frame.hasReader ? new FakeReader(m_frame.metadata) : nullptr;
        return m_frame.hasReader ? S_OK : WINCODEC_ERR_UNSUPPORTEDOPERATION;
    }
    HRESULT GetColorContexts(UINT, IWICColorContext**, UINT*) override { return E_NOTIMPL; }
    HRESULT GetThumbnail(IWICBitmapSource**) override { return E_NOTIMPL; }

private:
    const FakeImageFrame m_frame;
    const UINT m_index;
};

/// Passes pixels on; what it is told is written down.
class FakeRotator final : public FakeSource<FakeRotator, IWICBitmapFlipRotator>, Counted
{
public:
    HRESULT Initialize(IWICBitmapSource* pSource, WICBitmapTransformOptions options) override
    {
        g_state.rotations.push_back(options);
        if (static_cast<int>(g_state.rotations.size()) == g_state.rotatorFails)
            return E_OUTOFMEMORY;
        m_pSource = ComPtr<IWICBitmapSource>::Retain(pSource);
        m_isQuarter = (options & WICBitmapTransformRotate90) != 0;
        return S_OK;
    }
    HRESULT GetSize(UINT* pWidth, UINT* pHeight) override
    {
        return m_isQuarter ? m_pSource->GetSize(pHeight, pWidth) : m_pSource->GetSize(pWidth, pHeight);
    }
    HRESULT GetPixelFormat(WICPixelFormatGUID* pFormat) override { return m_pSource->GetPixelFormat(pFormat); }
    HRESULT CopyPixels(const WICRect* pRect, UINT stride, UINT cb, BYTE* pBuffer) override
    {
        return m_pSource->CopyPixels(pRect, stride, cb, pBuffer);
    }

private:
    ComPtr<IWICBitmapSource> m_pSource;
    bool m_isQuarter = false;
};

class FakeConverter final : public FakeSource<FakeConverter, IWICFormatConverter>, Counted
{
public:
    HRESULT Initialize(IWICBitmapSource* pSource, REFWICPixelFormatGUID, WICBitmapDitherType, IWICPalette*, double,
                       WICBitmapPaletteType) override
    {
        m_pSource = ComPtr<IWICBitmapSource>::Retain(pSource);
        return S_OK;
    }
    HRESULT CanConvert(REFWICPixelFormatGUID, REFWICPixelFormatGUID, BOOL*) override { return E_NOTIMPL; }
    HRESULT GetSize(UINT* pWidth, UINT* pHeight) override { return m_pSource->GetSize(pWidth, pHeight); }
    HRESULT GetPixelFormat(WICPixelFormatGUID* pFormat) override
    {
        *pFormat = GUID_WICPixelFormat32bppBGRA;
        return S_OK;
    }
    HRESULT CopyPixels(const WICRect* pRect, UINT stride, UINT cb, BYTE* pBuffer) override
    {
        return m_pSource->CopyPixels(pRect, stride, cb, pBuffer);
    }

private:
    ComPtr<IWICBitmapSource> m_pSource;
};

class FakePalette final : public pal::ComObject<FakePalette, IWICPalette>, Counted
{
public:
    HRESULT InitializePredefined(WICBitmapPaletteType, BOOL) override { return E_NOTIMPL; }
    HRESULT InitializeCustom(WICColor* pColors, UINT count) override
    {
        m_colors.assign(pColors, pColors + count);
        return S_OK;
    }
    HRESULT InitializeFromBitmap(IWICBitmapSource*, UINT, BOOL) override { return E_NOTIMPL; }
    HRESULT InitializeFromPalette(IWICPalette*) override { return E_NOTIMPL; }
    HRESULT GetType(WICBitmapPaletteType*) override { return E_NOTIMPL; }
    HRESULT GetColorCount(UINT*) override { return E_NOTIMPL; }
    HRESULT GetColors(UINT count, WICColor* pColors, UINT* pActual) override
    {
        *pActual = std::min(count, static_cast<UINT>(m_colors.size()));
        std::copy_n(m_colors.begin(), *pActual, pColors);
        return S_OK;
    }
    HRESULT IsBlackWhite(BOOL*) override { return E_NOTIMPL; }
    HRESULT IsGrayscale(BOOL*) override { return E_NOTIMPL; }
    HRESULT HasAlpha(BOOL*) override { return E_NOTIMPL; }

private:
    std::vector<WICColor> m_colors;
};

class FakeDecoder final : public pal::ComObject<FakeDecoder, IWICBitmapDecoder>, Counted
{
public:
    explicit FakeDecoder(const FakeImage& image) : m_image(image) {}
    HRESULT QueryCapability(IStream*, DWORD*) override { return E_NOTIMPL; }
    HRESULT Initialize(IStream*, WICDecodeOptions) override { return E_NOTIMPL; }
    HRESULT GetContainerFormat(GUID*) override { return E_NOTIMPL; }
    HRESULT GetDecoderInfo(IWICBitmapDecoderInfo**) override { return E_NOTIMPL; }
    HRESULT CopyPalette(IWICPalette* pPalette) override
    {
        std::vector<WICColor> colors = m_image.palette;
        return colors.empty() ? WINCODEC_ERR_PALETTEUNAVAILABLE
                              : pPalette->InitializeCustom(colors.data(), static_cast<UINT>(colors.size()));
    }
    HRESULT GetMetadataQueryReader(IWICMetadataQueryReader** ppReader) override
    {
        *ppReader = m_image.hasReader ? new FakeReader(m_image.metadata) : nullptr;
        return m_image.hasReader ? S_OK : WINCODEC_ERR_UNSUPPORTEDOPERATION;
    }
    HRESULT GetPreview(IWICBitmapSource**) override { return E_NOTIMPL; }
    HRESULT GetColorContexts(UINT, IWICColorContext**, UINT*) override { return E_NOTIMPL; }
    HRESULT GetThumbnail(IWICBitmapSource**) override { return E_NOTIMPL; }
    HRESULT GetFrameCount(UINT* pCount) override
    {
        *pCount = static_cast<UINT>(m_image.frames.size());
        return S_OK;
    }
    HRESULT GetFrame(UINT index, IWICBitmapFrameDecode** ppFrame) override
    {
        *ppFrame = nullptr;
        if (index >= m_image.frames.size() || !m_image.frames[index].canBeGot)
            return WINCODEC_ERR_FRAMEMISSING;
        *ppFrame = new FakeFrame(m_image.frames[index], index);
        return S_OK;
    }

private:
    const FakeImage m_image;
};

class FakeFactory final : public pal::ComObject<FakeFactory, IWICImagingFactory>, Counted
{
public:
    HRESULT CreateDecoderFromFilename(LPCWSTR fileName, const GUID*, DWORD access, WICDecodeOptions options,
                                      IWICBitmapDecoder** ppDecoder) override
    {
        *ppDecoder = nullptr;
        const auto found = g_state.files.find(fileName);
        if (found == g_state.files.end() || access != GENERIC_READ || options != WICDecodeMetadataCacheOnLoad)
            return WINCODEC_ERR_COMPONENTNOTFOUND;
        ++g_state.filesOpened;
        *ppDecoder = new FakeDecoder(*found->second);
        return S_OK;
    }
    HRESULT CreateDecoderFromStream(IStream*, const GUID*, WICDecodeOptions, IWICBitmapDecoder**) override
    {
        return E_NOTIMPL;
    }
    HRESULT CreateDecoderFromFileHandle(ULONG_PTR, const GUID*, WICDecodeOptions, IWICBitmapDecoder**) override
    {
        return E_NOTIMPL;
    }
    HRESULT CreateComponentInfo(REFCLSID, IWICComponentInfo**) override { return E_NOTIMPL; }
    HRESULT CreateDecoder(REFGUID, const GUID*, IWICBitmapDecoder**) override { return E_NOTIMPL; }
    HRESULT CreateEncoder(REFGUID, const GUID*, IWICBitmapEncoder**) override { return E_NOTIMPL; }
    HRESULT CreatePalette(IWICPalette** ppPalette) override
    {
        *ppPalette = new FakePalette;
        return S_OK;
    }
    HRESULT CreateFormatConverter(IWICFormatConverter** ppConverter) override
    {
        *ppConverter = new FakeConverter;
        return S_OK;
    }
    HRESULT CreateBitmapScaler(IWICBitmapScaler**) override { return E_NOTIMPL; }
    HRESULT CreateBitmapClipper(IWICBitmapClipper**) override { return E_NOTIMPL; }
    HRESULT CreateBitmapFlipRotator(IWICBitmapFlipRotator** ppRotator) override
    {
        *ppRotator = new FakeRotator;
        return S_OK;
    }
};
} // namespace

extern "C" HRESULT __wrap_CoCreateInstance(REFCLSID clsid, LPUNKNOWN pOuter, DWORD context, REFIID iid,
                                           LPVOID* ppObject)
{
    if (g_state.factoryFails)
        return REGDB_E_CLASSNOTREG;
    if (g_state.files.empty())
        return __real_CoCreateInstance(clsid, pOuter, context, iid, ppObject);
    if (clsid != CLSID_WICImagingFactory2 || iid != IID_IWICImagingFactory || context != CLSCTX_INPROC_SERVER)
        return E_NOINTERFACE;
    *ppObject = static_cast<IWICImagingFactory*>(new FakeFactory);
    return S_OK;
}

extern "C" HRESULT __wrap_WICConvertBitmapSource(REFWICPixelFormatGUID format, IWICBitmapSource* pSource,
                                                 IWICBitmapSource** ppConverted)
{
    if (g_state.files.empty())
        return __real_WICConvertBitmapSource(format, pSource, ppConverted);
    ++g_state.converted;
    *ppConverted = nullptr;
    if (g_state.conversionFails)
        return WINCODEC_ERR_UNSUPPORTEDPIXELFORMAT;
    auto* const pConverter = new FakeConverter;
    pConverter->Initialize(pSource, format, WICBitmapDitherTypeNone, nullptr, 0, WICBitmapPaletteTypeCustom);
    *ppConverted = pConverter;
    return S_OK;
}

void CFakeImaging::Install(const std::wstring& path, const FakeImage* pImage)
{
    if (pImage != nullptr)
        g_state.files[path] = pImage;
    else
        g_state.files.erase(path);
}

void CFakeImaging::Reset()
{
    g_state = {};
}

int& CFakeImaging::FilesOpened()
{
    return g_state.filesOpened;
}

int& CFakeImaging::Converted()
{
    return g_state.converted;
}

int& CFakeImaging::LiveObjects()
{
    return g_live;
}

std::vector<UINT>& CFakeImaging::FramesCopied()
{
    return g_state.framesCopied;
}

std::vector<WICRect>& CFakeImaging::Rects()
{
    return g_state.rects;
}

std::vector<UINT>& CFakeImaging::Rotations()
{
    return g_state.rotations;
}

bool& CFakeImaging::FactoryFails()
{
    return g_state.factoryFails;
}

bool& CFakeImaging::ConversionFails()
{
    return g_state.conversionFails;
}

int& CFakeImaging::RotatorFails()
{
    return g_state.rotatorFails;
}
