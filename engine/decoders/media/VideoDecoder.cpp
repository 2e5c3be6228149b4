#include "engine/decoders/media/VideoDecoder.h"

#include "engine/decoders/media/PresentationDuration.h"
#include "engine/platform/PixelUtility.h"
#include "engine/platform/ReleaseAndClear.h"
#include "engine/platform/ReturnIfFailed.h"

#include <d3d10.h>
#include <d3d11.h>
#include <mfapi.h>
#include <mferror.h>
#include <mfidl.h>
#include <mfreadwrite.h>

#include <algorithm>
#include <limits>
#include <numeric>
#include <utility>

namespace
{
bool IsTurnedBySide(std::uint32_t rotation)
{
    return rotation == 90 || rotation == 270;
}

/// Shape of a pixel; 1:1 where the type does not say, or says that it does not know (a zero part).
void GetPixelAspect(IMFMediaType* pType, std::uint32_t& x, std::uint32_t& y)
{
    UINT32 high = 0;
    UINT32 low = 0;
    const bool known =
        SUCCEEDED(MFGetAttributeRatio(pType, MF_MT_PIXEL_ASPECT_RATIO, &high, &low)) && high != 0 && low != 0;
    x = known ? high : 1;
    y = known ? low : 1;
}
} // namespace

CVideoDecoder::~CVideoDecoder()
{
    _InternalClose();
    delete m_pThreadPool;
}

bool CVideoDecoder::Initialize(const tagDecProp& prop)
{
    if (!CDecoder::Initialize(prop))
    {
        _InternalClose();
        return false;
    }
    return _InternalInitialize(m_prop.filePath, nullptr);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the exported interface takes the path by value
bool CVideoDecoder::GetVideoInfo(std::wstring path, tagVideoInfo* info)
{
    return info != nullptr && _InternalInitialize(path, info);
}

ISampleBuffer* CVideoDecoder::GetLastFrame()
{
    return SampleBufferPtr::Retain(m_pLastFrame).Detach();
}

bool CVideoDecoder::_InternalInitialize(const std::wstring& path, tagVideoInfo* info)
{
    _InternalClose();
    if (SUCCEEDED(_OpenReader(path, info)))
        return true;
    _InternalClose(); // a decoder that could not open answers with blank frames
    return false;
}

HRESULT CVideoDecoder::_OpenReader(const std::wstring& path, tagVideoInfo* info)
{
    ComPtr<IMFAttributes> pAttributes;
    QMX_RETURN_IF_FAILED(MFCreateAttributes(pAttributes.Put(), 3));
    QMX_RETURN_IF_FAILED(pAttributes->SetUINT32(MF_SOURCE_READER_ENABLE_ADVANCED_VIDEO_PROCESSING, TRUE));
    QMX_RETURN_IF_FAILED(pAttributes->SetUINT32(MF_READWRITE_DISABLE_CONVERTERS, FALSE));
    QMX_RETURN_IF_FAILED(pAttributes->SetUINT32(MF_LOW_LATENCY, TRUE));
    _CreateDevice(pAttributes.Get());
    QMX_RETURN_IF_FAILED(MFCreateSourceReaderFromURL(path.c_str(), pAttributes.Get(), &m_pReader));
    QMX_RETURN_IF_FAILED(m_pReader->SetStreamSelection(MF_SOURCE_READER_ALL_STREAMS, FALSE));
    QMX_RETURN_IF_FAILED(m_pReader->SetStreamSelection(m_dwStreamIdx, TRUE));

    ComPtr<IMFMediaType> pNative;
    QMX_RETURN_IF_FAILED(m_pReader->GetNativeMediaType(m_dwStreamIdx, 0, pNative.Put()));
    UINT32 width = 0;
    UINT32 height = 0;
    UINT32 rotation = 0;
    if (FAILED(MFGetAttributeSize(pNative.Get(), MF_MT_FRAME_SIZE, &width, &height)))
        width = height = 0;
    if (SUCCEEDED(pNative->GetUINT32(MF_MT_VIDEO_ROTATION, &rotation)) && IsTurnedBySide(rotation))
    {
        // Asked for the exchanged size, the reader delivers upright frames.
        std::swap(width, height);
        QMX_RETURN_IF_FAILED(MFSetAttributeSize(pNative.Get(), MF_MT_FRAME_SIZE, width, height));
    }
    m_nDecodedWidth = m_nFrameWidth = width;
    m_nDecodedHeight = m_nFrameHeight = height;

    ComPtr<IMFMediaType> pOutput;
    QMX_RETURN_IF_FAILED(_ConvertVideoTypeToUncompressedType(pNative.Get(), MFVideoFormat_ARGB32, pOutput.Put()));
    _UpdateDisplayAspect();
    QMX_RETURN_IF_FAILED(m_pReader->SetCurrentMediaType(m_dwStreamIdx, nullptr, pOutput.Get()));
    return info != nullptr ? _FillVideoInfo(pNative.Get(), *info) : S_OK;
}

/// Offers the reader a hardware device to decode on. Where there is none, it decodes in software.
void CVideoDecoder::_CreateDevice(IMFAttributes* pAttributes)
{
    const D3D_FEATURE_LEVEL levels[] = {D3D_FEATURE_LEVEL_11_1, D3D_FEATURE_LEVEL_11_0};
    D3D11CreateDevice(nullptr, D3D_DRIVER_TYPE_HARDWARE, nullptr, D3D11_CREATE_DEVICE_VIDEO_SUPPORT, levels, 2,
                      D3D11_SDK_VERSION, &m_pD3DDevice, nullptr, nullptr);
    if (m_pD3DDevice == nullptr)
        return;
    ComPtr<ID3D10Multithread> pMultithread;
    if (SUCCEEDED(m_pD3DDevice->QueryInterface(IID_PPV_ARGS(pMultithread.Put()))) && pMultithread)
        pMultithread->SetMultithreadProtected(TRUE); // the reader decodes on threads of its own
    UINT resetToken = 0;
    if (FAILED(MFCreateDXGIDeviceManager(&resetToken, &m_pDeviceManager)) || m_pDeviceManager == nullptr)
        return;
    m_pDeviceManager->ResetDevice(m_pD3DDevice, resetToken);
    pAttributes->SetUnknown(MF_SOURCE_READER_D3D_MANAGER, m_pDeviceManager);
}

HRESULT CVideoDecoder::_ConvertVideoTypeToUncompressedType(IMFMediaType* pType, const GUID& subtype,
                                                           IMFMediaType** ppOut)
{
    if (ppOut == nullptr)
        return E_POINTER;
    *ppOut = nullptr;
    if (pType == nullptr)
        return E_POINTER;
    GUID major = GUID_NULL;
    QMX_RETURN_IF_FAILED(pType->GetMajorType(&major));
    if (major != MFMediaType_Video)
        return MF_E_INVALIDMEDIATYPE;

    ComPtr<IMFMediaType> pNew;
    QMX_RETURN_IF_FAILED(MFCreateMediaType(pNew.Put()));
    QMX_RETURN_IF_FAILED(pType->CopyAllItems(pNew.Get()));
    QMX_RETURN_IF_FAILED(pNew->SetGUID(MF_MT_SUBTYPE, subtype));
    QMX_RETURN_IF_FAILED(pNew->SetUINT32(MF_MT_ALL_SAMPLES_INDEPENDENT, TRUE));
    GetPixelAspect(pType, m_nPixelAspectX, m_nPixelAspectY);
    QMX_RETURN_IF_FAILED(MFSetAttributeRatio(pNew.Get(), MF_MT_PIXEL_ASPECT_RATIO, m_nPixelAspectX, m_nPixelAspectY));
    QMX_RETURN_IF_FAILED(pNew->SetUINT32(MF_MT_INTERLACE_MODE, MFVideoInterlace_Progressive));
    *ppOut = pNew.Detach();
    return S_OK;
}

/// Display aspect = pixel aspect times frame size in lowest terms. A stream without a size keeps what there was.
void CVideoDecoder::_UpdateDisplayAspect()
{
    std::uint64_t x = static_cast<std::uint64_t>(m_nPixelAspectX) * m_nFrameWidth;
    std::uint64_t y = static_cast<std::uint64_t>(m_nPixelAspectY) * m_nFrameHeight;
    if (x == 0 || y == 0)
        return;
    const std::uint64_t divisor = std::gcd(x, y);
    x /= divisor;
    y /= divisor;
    while (x > std::numeric_limits<std::uint32_t>::max() || y > std::numeric_limits<std::uint32_t>::max())
    {
        x = std::max<std::uint64_t>(x / 2, 1);
        y = std::max<std::uint64_t>(y / 2, 1);
    }
    m_nDisplayAspectX = static_cast<std::uint32_t>(x);
    m_nDisplayAspectY = static_cast<std::uint32_t>(y);
}

/// Reads one sample, so that a file whose video cannot be decoded is told apart, and describes the stream.
HRESULT CVideoDecoder::_FillVideoInfo(IMFMediaType* pNative, tagVideoInfo& info)
{
    DWORD index = 0;
    DWORD flags = 0;
    LONGLONG timestamp = 0;
    ComPtr<IMFSample> pSample;
    QMX_RETURN_IF_FAILED(m_pReader->ReadSample(m_dwStreamIdx, 0, &index, &flags, &timestamp, pSample.Put()));
    _OnMediaTypeChanged(flags, index);
    if (!pSample)
        return E_FAIL;

    ReadDuration(*m_pReader, info.dDuration);
    GetPixelAspect(pNative, info.nPixelAspectX, info.nPixelAspectY);
    UINT32 rotation = 0;
    if (SUCCEEDED(pNative->GetUINT32(MF_MT_VIDEO_ROTATION, &rotation)))
        info.nRotation = rotation;
    UINT32 numerator = 0;
    UINT32 denominator = 0;
    if (SUCCEEDED(MFGetAttributeRatio(pNative, MF_MT_FRAME_RATE, &numerator, &denominator)))
    {
        info.nFrameRateNum = numerator;
        info.nFrameRateDen = denominator;
    }
    info.dFrameRate = static_cast<double>(info.nFrameRateNum) / static_cast<double>(info.nFrameRateDen);
    info.nWidth = m_nFrameWidth;
    info.nHeight = m_nFrameHeight;
    return S_OK;
}

void CVideoDecoder::_InternalClose()
{
    if (m_pReader != nullptr)
        m_pReader->Flush(m_dwStreamIdx);
    ReleaseAndClear(m_pReader);
    if (m_pDeviceManager != nullptr)
        m_pDeviceManager->CloseDeviceHandle(m_pD3DDevice);
    ReleaseAndClear(m_pDeviceManager);
    ReleaseAndClear(m_pD3DDevice);
    ReleaseAndClear(m_pPendingSample);
    ReleaseAndClear(m_pLastFrame);
    m_nDecodedWidth = m_nDecodedHeight = 0;
    m_nFrameWidth = m_nFrameHeight = 0;
    m_llLastTime = kTimeUnlimited;
}
