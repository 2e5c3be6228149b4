#include "engine/decoders/still/ImageDecoder.h"

#include "engine/platform/FramePixels.h"
#include "engine/platform/NullReference.h"
#include "engine/platform/PixelUtility.h"
#include "engine/platform/PropVariantElement.h"
#include "engine/platform/ReleaseAndClear.h"

#include <objbase.h>
#include <wincodec.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <numeric>

namespace
{
constexpr std::uint32_t kOrientationsWithFlip = 0xB4; ///< bit n: orientation n

/// The turn that an orientation asks for, before the flip.
WICBitmapTransformOptions TurnOf(std::uint16_t orientation)
{
    switch (orientation)
    {
    case 3:
    case 4:
        return WICBitmapTransformRotate180;
    case 5:
    case 6:
        return WICBitmapTransformRotate90;
    case 7:
    case 8:
        return WICBitmapTransformRotate270;
    default:
        return WICBitmapTransformRotate0;
    }
}

/// Puts a flip-rotator over @p source; on failure it stays as it is.
void Transform(IWICImagingFactory& factory, ComPtr<IWICBitmapSource>& source, WICBitmapTransformOptions options)
{
    ComPtr<IWICBitmapFlipRotator> pRotator;
    if (FAILED(factory.CreateBitmapFlipRotator(pRotator.Put())) || !pRotator ||
        FAILED(pRotator->Initialize(source.Get(), options)))
        return;
    source = ComPtr<IWICBitmapSource>::Adopt(pRotator.Detach());
}

std::uint16_t ReadOrientation(IWICBitmapFrameDecode& frame)
{
    constexpr std::uint16_t kUpright = 1;
    ComPtr<IWICMetadataQueryReader> pReader;
    if (FAILED(frame.GetMetadataQueryReader(pReader.Put())) || !pReader)
        return kUpright;
    PROPVARIANT value;
    PropVariantInit(&value);
    USHORT orientation = kUpright;
    if (SUCCEEDED(pReader->GetMetadataByName(L"System.Photo.Orientation", &value)) &&
        FAILED(PropVariantGetUInt16Elem(value, 0, &orientation)))
        orientation = kUpright;
    PropVariantClear(&value);
    return orientation;
}

/// The other side of a picture whose larger side becomes @p limit.
std::uint32_t ScaledSide(std::uint32_t side, std::uint32_t larger, std::uint32_t limit)
{
    if (larger == limit)
        return side; // what the quotient below may miss by its rounding
    return static_cast<std::uint32_t>(static_cast<double>(side) / larger * limit);
}

void SetAspect(ISampleBuffer& buffer, std::uint32_t width, std::uint32_t height)
{
    const std::uint32_t divisor = std::max(std::gcd(width, height), 1U);
    buffer.SetRatioX(width / divisor);
    buffer.SetRatioY(height / divisor);
}
} // namespace

CImageDecoder::CImageDecoder(const CImageDecoder& other)
    : CDecoder(other), m_pProcessed(other.m_pProcessed), m_pRaw(other.m_pRaw),
      m_pFactory(ComPtr<IWICImagingFactory>::Retain(other.m_pFactory).Detach()),
      m_pBitmapDecoder(ComPtr<IWICBitmapDecoder>::Retain(other.m_pBitmapDecoder).Detach()),
      m_bPropertyChanged(other.m_bPropertyChanged), m_strOpenPath(other.m_strOpenPath)
{
}

CImageDecoder& CImageDecoder::operator=(const CImageDecoder& other)
{
    if (this == &other)
        return *this;
    CDecoder::operator=(other);
    m_strOpenPath = other.m_strOpenPath;
    m_pProcessed = other.m_pProcessed;
    m_pRaw = other.m_pRaw;
    ReleaseAndClear(m_pFactory);
    m_pFactory = ComPtr<IWICImagingFactory>::Retain(other.m_pFactory).Detach();
    ReleaseAndClear(m_pBitmapDecoder);
    m_pBitmapDecoder = ComPtr<IWICBitmapDecoder>::Retain(other.m_pBitmapDecoder).Detach();
    m_bPropertyChanged = other.m_bPropertyChanged;
    return *this;
}

CImageDecoder::~CImageDecoder()
{
    ReleaseAndClear(m_pProcessed);
    ReleaseAndClear(m_pRaw);
    ReleaseAndClear(m_pBitmapDecoder);
    ReleaseAndClear(m_pFactory);
}

bool CImageDecoder::Initialize(const tagDecProp& prop)
{
    ReleaseAndClear(m_pBitmapDecoder);
    ReleaseAndClear(m_pFactory);
    try
    {
        if (!CDecoder::Initialize(prop))
            return false;
        m_strOpenPath = m_prop.filePath;
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
    return SUCCEEDED(
               CoCreateInstance(CLSID_WICImagingFactory2, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&m_pFactory))) &&
           SUCCEEDED(m_pFactory->CreateDecoderFromFilename(m_prop.filePath.c_str(), nullptr, GENERIC_READ,
                                                           WICDecodeMetadataCacheOnLoad, &m_pBitmapDecoder));
}

void CImageDecoder::SetDecoderProperty(const tagDecProp& prop)
{
    if (IsNullReference(&prop) || &prop == &m_prop)
        return;
    if (prop.filePath == m_prop.filePath && prop.rotation == m_prop.rotation && prop.width == m_prop.width &&
        prop.height == m_prop.height)
        return;
    CDecoder::SetDecoderProperty(prop);
    m_bPropertyChanged = true;
}

ISampleBuffer* CImageDecoder::GetClipVideoFrame(std::uint64_t /*time*/, bool& /*flag*/)
{
    if (m_pProcessed != nullptr && !m_bPropertyChanged)
        return GetLastFrame();
    ReleaseAndClear(m_pProcessed);
    if (IsPathChanged())
        Initialize(m_prop);
    const ComPtr<IWICBitmapSource> source = ComPtr<IWICBitmapSource>::Adopt(GetFrame(0));
    UINT width = 0;
    UINT height = 0;
    if (!source || FAILED(source->GetSize(&width, &height)))
        return nullptr;
    ReleaseAndClear(m_pRaw);
    CopyToBuffer(*source.Get(), width & ~1U, height & ~1U, &m_pRaw);
    ProcessFrame(false);
    m_bPropertyChanged = false;
    return GetLastFrame();
}

ISampleBuffer* CImageDecoder::GetLastFrame()
{
    return SampleBufferPtr::Retain(m_pProcessed).Detach();
}

bool CImageDecoder::IsNeedProcess()
{
    return m_pRaw != nullptr && std::max(m_pRaw->GetWidth(), m_pRaw->GetHeight()) > m_prop.width;
}

IWICBitmapSource* CImageDecoder::GetFrame(unsigned int index)
{
    ComPtr<IWICBitmapFrameDecode> pFrame;
    if (m_pBitmapDecoder == nullptr || FAILED(m_pBitmapDecoder->GetFrame(index, pFrame.Put())) || !pFrame)
        return nullptr;
    ComPtr<IWICBitmapSource> source = ComPtr<IWICBitmapSource>::Retain(pFrame.Get());
    WICPixelFormatGUID format{};
    if (FAILED(pFrame->GetPixelFormat(&format)) || format != GUID_WICPixelFormat32bppBGRA)
    {
        ComPtr<IWICBitmapSource> pConverted;
        if (SUCCEEDED(WICConvertBitmapSource(GUID_WICPixelFormat32bppBGRA, pFrame.Get(), pConverted.Put())) &&
            pConverted)
            source = pConverted;
    }
    const std::uint16_t orientation = ReadOrientation(*pFrame.Get());
    return _Rotate(m_pFactory, source.Detach(), orientation);
}

IWICBitmapSource* CImageDecoder::_Rotate(IWICImagingFactory* factory, IWICBitmapSource* source,
                                         std::uint16_t orientation)
{
    if (orientation == 1 || factory == nullptr || source == nullptr)
        return source;
    ComPtr<IWICBitmapSource> turned = ComPtr<IWICBitmapSource>::Adopt(source);
    Transform(*factory, turned, TurnOf(orientation));
    if (orientation < 8 && (kOrientationsWithFlip >> orientation & 1) != 0)
        Transform(*factory, turned, WICBitmapTransformFlipVertical);
    return turned.Detach();
}

HRESULT CImageDecoder::CopyToBuffer(IWICBitmapSource& source, std::uint32_t width, std::uint32_t height,
                                    ISampleBuffer** ppBuffer)
{
    *ppBuffer = nullptr;
    SampleBufferPtr buffer = SampleBufferPtr::Adopt(CreateSampleBuffer(kSampleFormatBgra, width, height, 0));
    std::uint8_t* pixels = nullptr;
    std::uint32_t cb = 0;
    if (!buffer || !buffer->GetBuffer(&pixels, &cb) || pixels == nullptr)
        return E_OUTOFMEMORY;
    const WICRect rect{0, 0, static_cast<INT>(width), static_cast<INT>(height)};
    const HRESULT hr = source.CopyPixels(&rect, cb / height, cb, pixels);
    if (FAILED(hr))
        std::memset(pixels, 0, cb); // not what the memory held before
    SetAspect(*buffer.Get(), width, height);
    *ppBuffer = buffer.Detach();
    return hr;
}

void CImageDecoder::ProcessFrame(bool keepRaw)
{
    if (m_pRaw == nullptr)
        return;
    std::uint32_t width = m_pRaw->GetWidth();
    std::uint32_t height = m_pRaw->GetHeight();
    if (IsNeedProcess())
    {
        const std::uint32_t limit = m_prop.width;
        const std::uint32_t larger = std::max(width, height);
        // A side of a multiple of the other beyond all limits ends as an empty frame below.
        const bool isTall = width <= height;
        width = isTall ? ScaledSide(width, larger, limit) : limit;
        height = isTall ? limit : ScaledSide(height, larger, limit);
    }
    width &= ~1U;
    height &= ~1U;
    ReleaseAndClear(m_pProcessed);
    m_pProcessed = CreateSampleBuffer(kSampleFormatBgra, width, height, 0);
    tagSampleInfo source;
    tagSampleInfo target;
    if (m_pProcessed != nullptr && DescribeFrame(*m_pRaw, source) && DescribeFrame(*m_pProcessed, target))
    {
        if (!ScaleAndRotateBGRA(&source, &target, m_prop.rotation, kScaleArea))
            std::memset(target.pData, 0, std::size_t{target.nStride} * target.nHeight);
        const bool isUpright = m_prop.rotation == 0 || m_prop.rotation == 180;
        const std::uint32_t shownWidth = isUpright ? width : height;
        const std::uint32_t shownHeight = isUpright ? height : width;
        SetAspect(*m_pProcessed, shownWidth, shownHeight);
        m_pProcessed->SetSize(shownWidth, shownHeight);
    }
    if (!keepRaw)
        ReleaseAndClear(m_pRaw);
}
