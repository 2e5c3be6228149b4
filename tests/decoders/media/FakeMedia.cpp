#include "tests/decoders/media/FakeMedia.h"

#include "tests/decoders/media/FakeBuffers.h"
#include "tests/model/AllocationFailure.h"

#include <d3d10.h>
#include <mferror.h>

using namespace fake_media;

namespace
{
std::mutex g_lock;
std::map<std::wstring, FakeMedia*> g_files;

// ---- reader ------------------------------------------------------------------------------------------------------

class FakeReader final : public Counted<FakeReader, IMFSourceReader>
{
public:
    explicit FakeReader(FakeMedia& media) : Counted(CFakeSystem::LiveReaders()), m_media(media)
    {
        ++CFakeSystem::ReadersMade();
        if (m_media.size)
            m_currentSize = *m_media.size;
        m_currentSound = m_media.sound;
    }

    void* Find(REFIID iid) { return iid == IID_IMFSourceReader ? static_cast<IMFSourceReader*>(this) : nullptr; }

    HRESULT STDMETHODCALLTYPE GetStreamSelection(DWORD, BOOL*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetStreamSelection(DWORD stream, BOOL selected) override
    {
        const CScope scope(m_media);
        if (Fails(stream == static_cast<DWORD>(MF_SOURCE_READER_ALL_STREAMS) ? "DeselectAll" : "Select"))
            return E_FAIL;
        m_media.selections.emplace_back(stream, selected);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetNativeMediaType(DWORD stream, DWORD index, IMFMediaType** ppType) override
    {
        const CScope scope(m_media);
        *ppType = nullptr;
        m_media.streams.push_back(stream);
        if (Fails("GetNativeMediaType"))
            return E_FAIL;
        if (index != 0)
            return MF_E_NO_MORE_TYPES;
        return IsSound(stream) ? MakeSoundType(m_media.sound, MFAudioFormat_MP3, ppType)
                               : MakeType(m_media.size, ppType);
    }
    HRESULT STDMETHODCALLTYPE GetCurrentMediaType(DWORD stream, IMFMediaType** ppType) override
    {
        const CScope scope(m_media);
        *ppType = nullptr;
        m_media.streams.push_back(stream);
        if (Fails("GetCurrentMediaType"))
            return E_FAIL;
        return IsSound(stream) ? MakeSoundType(m_currentSound, MFAudioFormat_PCM, ppType)
                               : MakeType(m_currentSize, ppType);
    }
    HRESULT STDMETHODCALLTYPE SetCurrentMediaType(DWORD stream, DWORD*, IMFMediaType* pType) override
    {
        const CScope scope(m_media);
        m_media.streams.push_back(stream);
        if (Fails("SetCurrentMediaType"))
            return E_FAIL;
        GUID subtype = GUID_NULL;
        pType->GetGUID(MF_MT_SUBTYPE, &subtype);
        m_media.outputSubtype = subtype;
        if (IsSound(stream))
        {
            m_media.outputSound = ReadSoundType(pType);
            return S_OK;
        }
        MFGetAttributeSize(pType, MF_MT_FRAME_SIZE, &m_media.outputSize.first, &m_media.outputSize.second);
        MFGetAttributeRatio(pType, MF_MT_PIXEL_ASPECT_RATIO, &m_media.outputAspect.first, &m_media.outputAspect.second);
        pType->GetUINT32(MF_MT_INTERLACE_MODE, &m_media.outputInterlace);
        pType->GetUINT32(MF_MT_ALL_SAMPLES_INDEPENDENT, &m_media.outputIndependent);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetCurrentPosition(REFGUID format, const PROPVARIANT& position) override
    {
        const CScope scope(m_media);
        if (format != GUID_NULL || position.vt != VT_I8)
            return E_INVALIDARG;
        const LONGLONG time = position.hVal.QuadPart;
        m_media.seeks.push_back(time);
        if (Fails("SetCurrentPosition"))
            return E_FAIL;
        if (m_media.seek)
        {
            m_next = m_media.seek(time);
            return S_OK;
        }
        m_next = 0;
        for (std::size_t n = 0; n < m_media.reads.size(); ++n)
        {
            if (m_media.reads[n].time <= time)
                m_next = n;
        }
        if (!m_media.reads.empty() && (time < 0 || time > m_media.reads.back().time))
            m_next = m_media.reads.size();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE ReadSample(DWORD stream, DWORD, DWORD* pIndex, DWORD* pFlags, LONGLONG* pTime,
                                         IMFSample** ppSample) override
    {
        const CScope scope(m_media);
        ++m_media.nReads;
        m_media.streams.push_back(stream);
        *ppSample = nullptr;
        *pIndex = 0;
        *pFlags = 0;
        *pTime = 0;
        if (Fails("ReadSample"))
            return E_FAIL;
        if (m_media.endless && m_next >= m_media.reads.size())
            m_next = m_media.reads.size() - 1;
        if (m_next >= m_media.reads.size())
        {
            *pFlags = MF_SOURCE_READERF_ENDOFSTREAM;
            return S_OK;
        }
        return Deliver(m_media.reads[m_next++], pFlags, pTime, ppSample);
    }
    HRESULT STDMETHODCALLTYPE Flush(DWORD stream) override
    {
        const CScope scope(m_media);
        m_media.streams.push_back(stream);
        ++m_media.nFlushes;
        static std::atomic<int> flushes{0};
        m_media.flushedAt = ++flushes;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetServiceForStream(DWORD, REFGUID, REFIID, void**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetPresentationAttribute(DWORD stream, REFGUID key, PROPVARIANT* pValue) override
    {
        if (stream != static_cast<DWORD>(MF_SOURCE_READER_MEDIASOURCE) || key != MF_PD_DURATION || !m_media.duration)
            return MF_E_ATTRIBUTENOTFOUND;
        pValue->vt = VT_UI8;
        pValue->uhVal.QuadPart = static_cast<ULONGLONG>(*m_media.duration);
        return S_OK;
    }

private:
    bool Fails(const char* operation) const { return m_media.failing.count(operation) != 0; }
    static bool IsSound(DWORD stream) { return stream == static_cast<DWORD>(MF_SOURCE_READER_FIRST_AUDIO_STREAM); }

    static HRESULT MakeSoundType(const FakeSoundType& sound, const GUID& subtype, IMFMediaType** ppType)
    {
        const HRESULT hr = MFCreateMediaType(ppType);
        if (FAILED(hr))
            return hr;
        (*ppType)->SetGUID(MF_MT_MAJOR_TYPE, MFMediaType_Audio);
        (*ppType)->SetGUID(MF_MT_SUBTYPE, subtype);
        const auto set = [&](const GUID& key, const std::optional<std::uint32_t>& value)
        {
            if (value)
                (*ppType)->SetUINT32(key, *value);
        };
        set(MF_MT_AUDIO_SAMPLES_PER_SECOND, sound.rate);
        set(MF_MT_AUDIO_NUM_CHANNELS, sound.channels);
        set(MF_MT_AUDIO_BITS_PER_SAMPLE, sound.bits);
        set(MF_MT_AUDIO_AVG_BYTES_PER_SECOND, sound.bytesPerSecond);
        return S_OK;
    }
    static FakeSoundType ReadSoundType(IMFMediaType* pType)
    {
        const auto get = [&](const GUID& key)
        {
            UINT32 value = 0;
            return SUCCEEDED(pType->GetUINT32(key, &value)) ? std::optional<std::uint32_t>(value) : std::nullopt;
        };
        return {get(MF_MT_AUDIO_SAMPLES_PER_SECOND), get(MF_MT_AUDIO_NUM_CHANNELS),
                get(MF_MT_AUDIO_BITS_PER_SAMPLE),    get(MF_MT_AUDIO_AVG_BYTES_PER_SECOND),
                get(MF_MT_AUDIO_BLOCK_ALIGNMENT),    get(MF_MT_AUDIO_CHANNEL_MASK)};
    }

    HRESULT MakeType(const std::optional<std::pair<std::uint32_t, std::uint32_t>>& size, IMFMediaType** ppType) const
    {
        const HRESULT hr = MFCreateMediaType(ppType);
        if (FAILED(hr))
            return hr;
        (*ppType)->SetGUID(MF_MT_MAJOR_TYPE, m_media.majorType);
        (*ppType)->SetGUID(MF_MT_SUBTYPE, MFVideoFormat_H264);
        if (size)
            MFSetAttributeSize(*ppType, MF_MT_FRAME_SIZE, size->first, size->second);
        if (m_media.rotation)
            (*ppType)->SetUINT32(MF_MT_VIDEO_ROTATION, *m_media.rotation);
        if (m_media.pixelAspect)
            MFSetAttributeRatio(*ppType, MF_MT_PIXEL_ASPECT_RATIO, m_media.pixelAspect->first,
                                m_media.pixelAspect->second);
        if (m_media.frameRate)
            MFSetAttributeRatio(*ppType, MF_MT_FRAME_RATE, m_media.frameRate->first, m_media.frameRate->second);
        return S_OK;
    }

    HRESULT Deliver(const FakeRead& read, DWORD* pFlags, LONGLONG* pTime, IMFSample** ppSample)
    {
        *pFlags = read.flags;
        *pTime = read.time;
        if (read.newSize || read.newTypeWithoutSize)
        {
            m_currentSize = read.newSize;
            *pFlags |= MF_SOURCE_READERF_CURRENTMEDIATYPECHANGED;
        }
        if (read.newSound)
        {
            m_currentSound = *read.newSound;
            *pFlags |= MF_SOURCE_READERF_CURRENTMEDIATYPECHANGED;
        }
        if (read.picture || read.sound || read.emptySample)
        {
            const HRESULT hr = MFCreateSample(ppSample);
            if (FAILED(hr))
                return hr;
            (*ppSample)->SetSampleTime(read.time);
        }
        if (read.picture)
        {
            auto* const pBuffer = new FakeBuffer(*read.picture, m_media);
            (*ppSample)->AddBuffer(pBuffer);
            pBuffer->Release();
        }
        if (read.sound)
        {
            auto* const pBuffer = new FakeBytes(*read.sound, m_media);
            (*ppSample)->AddBuffer(pBuffer);
            pBuffer->Release();
        }
        return read.hr;
    }

    FakeMedia& m_media;
    std::size_t m_next = 0;
    std::optional<std::pair<std::uint32_t, std::uint32_t>> m_currentSize;
    FakeSoundType m_currentSound;
};

// ---- device ------------------------------------------------------------------------------------------------------

class FakeDevice;

class FakeMultithread final : public ID3D10Multithread
{
public:
    explicit FakeMultithread(FakeDevice& device) : m_device(device) {}
    ~FakeMultithread() = default;
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    void STDMETHODCALLTYPE Enter() override {}
    void STDMETHODCALLTYPE Leave() override {}
    BOOL STDMETHODCALLTYPE SetMultithreadProtected(BOOL protect) override
    {
        return CFakeSystem::DeviceProtected().exchange(protect != FALSE) ? TRUE : FALSE;
    }
    BOOL STDMETHODCALLTYPE GetMultithreadProtected() override { return CFakeSystem::DeviceProtected() ? TRUE : FALSE; }

private:
    FakeDevice& m_device;
};

#if defined(_WIN32)
/// The system's ID3D11Device has forty operations, of which the decoder calls none: an object with the first three
/// slots stands in for it.
using FakeDeviceInterface = IUnknown;
#else
using FakeDeviceInterface = ID3D11Device;
#endif

class FakeDevice final : public Counted<FakeDevice, FakeDeviceInterface>
{
public:
    FakeDevice() : Counted(CFakeSystem::LiveDevices()), m_side(*this) {}
    void* Find(REFIID iid)
    {
        if (iid == IID_ID3D11Device)
            return static_cast<FakeDeviceInterface*>(this);
        return iid == IID_ID3D10Multithread ? static_cast<ID3D10Multithread*>(&m_side) : nullptr;
    }
#if !defined(_WIN32)
    HRESULT STDMETHODCALLTYPE CreateTexture2D(const D3D11_TEXTURE2D_DESC*, const D3D11_SUBRESOURCE_DATA*,
                                              ID3D11Texture2D**) override
    {
        return E_NOTIMPL; // films are decoded on it, nothing is drawn
    }
    D3D_FEATURE_LEVEL STDMETHODCALLTYPE GetFeatureLevel() override
    {
        return D3D_FEATURE_LEVEL_11_0;
    }
    UINT STDMETHODCALLTYPE GetCreationFlags() override
    {
        return D3D11_CREATE_DEVICE_VIDEO_SUPPORT;
    }
#endif

private:
    FakeMultithread m_side;
};

HRESULT FakeMultithread::QueryInterface(REFIID iid, void** ppObject)
{
    return m_device.QueryInterface(iid, ppObject);
}
ULONG FakeMultithread::AddRef()
{
    return m_device.AddRef();
}
ULONG FakeMultithread::Release()
{
    return m_device.Release();
}
} // namespace

std::uint32_t FakeColor(std::uint32_t n)
{
    return 0xFF000000U | (n * 0x010307U & 0xFFFFFFU);
}

void FakeMedia::AddFrames(int count, LONGLONG step, LONGLONG first)
{
    for (int n = 0; n < count; ++n)
    {
        FakeRead read;
        read.time = first + n * step;
        read.picture.emplace();
        read.picture->width = size->first;
        read.picture->height = size->second;
        const auto color = FakeColor(static_cast<std::uint32_t>(reads.size()));
        read.picture->pixel = [color](std::uint32_t, std::uint32_t) { return color; };
        reads.push_back(std::move(read));
    }
}

void FakeMedia::AddBlocks(int count, std::uint32_t cb)
{
    std::size_t at = 0;
    for (const FakeRead& read : reads)
        at += read.sound ? read.sound->size() : 0;
    for (int n = 0; n < count; ++n)
    {
        FakeRead read;
        read.time = static_cast<LONGLONG>(at * 10'000'000 / 192'000);
        read.sound.emplace(cb);
        for (std::uint8_t& byte : *read.sound)
            byte = FakeByte(at++);
        reads.push_back(std::move(read));
    }
}

void CFakeSystem::Install(const std::wstring& path, FakeMedia* media)
{
    const std::lock_guard guard(g_lock);
    if (media != nullptr)
        g_files[path] = media;
    else
        g_files.erase(path);
}

FakeMedia* CFakeSystem::Find(const wchar_t* path)
{
    const CAllocationPause pause;
    const std::lock_guard guard(g_lock);
    const auto found = g_files.find(path);
    return found != g_files.end() ? found->second : nullptr;
}

bool CFakeSystem::Fails(const char* function)
{
    const CAllocationPause pause;
    const std::lock_guard guard(g_lock);
    return FailingFunctions().count(function) != 0;
}

std::atomic<int>& CFakeSystem::LiveReaders()
{
    static std::atomic<int> value{0};
    return value;
}
std::atomic<int>& CFakeSystem::LiveBuffers()
{
    static std::atomic<int> value{0};
    return value;
}
std::atomic<int>& CFakeSystem::LiveDevices()
{
    static std::atomic<int> value{0};
    return value;
}
std::atomic<int>& CFakeSystem::LiveSources()
{
    static std::atomic<int> value{0};
    return value;
}
std::atomic<int>& CFakeSystem::ReadersMade()
{
    static std::atomic<int> value{0};
    return value;
}
std::atomic<int>& CFakeSystem::OpenLocks()
{
    static std::atomic<int> value{0};
    return value;
}
std::atomic<bool>& CFakeSystem::HasDevice()
{
    static std::atomic<bool> value{false};
    return value;
}
std::atomic<bool>& CFakeSystem::DeviceProtected()
{
    static std::atomic<bool> value{false};
    return value;
}
std::set<std::string>& CFakeSystem::FailingFunctions()
{
    static std::set<std::string> value;
    return value;
}

// ---- the functions that stand in for the platform's --------------------------------------------------------------

extern "C" HRESULT MFCreateSourceReaderFromURL(LPCWSTR url, IMFAttributes* pAttributes, IMFSourceReader** ppReader)
{
    *ppReader = nullptr;
    FakeMedia* const media = CFakeSystem::Find(url);
    if (media == nullptr)
        return HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
    const CScope scope(*media);
    if (pAttributes != nullptr)
    {
        pAttributes->GetUINT32(MF_SOURCE_READER_ENABLE_ADVANCED_VIDEO_PROCESSING, &media->advancedProcessing);
        pAttributes->GetUINT32(MF_READWRITE_DISABLE_CONVERTERS, &media->convertersDisabled);
        pAttributes->GetUINT32(MF_LOW_LATENCY, &media->lowLatency);
        IUnknown* pManager = nullptr;
        media->hasDeviceManager =
            SUCCEEDED(pAttributes->GetUnknown(MF_SOURCE_READER_D3D_MANAGER, IID_PPV_ARGS(&pManager)));
        if (pManager != nullptr)
            pManager->Release();
    }
    if (media->failing.count("Open") != 0)
        return MF_E_UNSUPPORTED_BYTESTREAM_TYPE;
    *ppReader = new FakeReader(*media);
    return S_OK;
}

extern "C" HRESULT D3D11CreateDevice(IDXGIAdapter* pAdapter, D3D_DRIVER_TYPE driverType, HMODULE software, UINT flags,
                                     const D3D_FEATURE_LEVEL* pFeatureLevels, UINT featureLevels, UINT sdkVersion,
                                     ID3D11Device** ppDevice, D3D_FEATURE_LEVEL* pFeatureLevel,
                                     ID3D11DeviceContext** ppImmediateContext)
{
    *ppDevice = nullptr;
    const bool asExpected = pAdapter == nullptr && driverType == D3D_DRIVER_TYPE_HARDWARE && software == nullptr &&
                            flags == 0x800 && featureLevels == 2 && pFeatureLevels[0] == D3D_FEATURE_LEVEL_11_1 &&
                            pFeatureLevels[1] == D3D_FEATURE_LEVEL_11_0 && sdkVersion == 7 &&
                            pFeatureLevel == nullptr && ppImmediateContext == nullptr;
    if (!asExpected)
        return E_INVALIDARG;
    const CAllocationPause pause;
    if (!CFakeSystem::HasDevice())
        return DXGI_ERROR_UNSUPPORTED;
    *ppDevice = reinterpret_cast<ID3D11Device*>(static_cast<FakeDeviceInterface*>(new FakeDevice));
    return S_OK;
}

// The linker lets these stand before the platform's creation functions (--wrap).
extern "C"
{
    HRESULT __real_MFCreateAttributes(IMFAttributes** ppAttributes, UINT32 initialSize);
    HRESULT __real_MFCreateMediaType(IMFMediaType** ppType);
    HRESULT __real_MFCreateDXGIDeviceManager(UINT* pResetToken, IMFDXGIDeviceManager** ppManager);

    HRESULT __wrap_MFCreateAttributes(IMFAttributes** ppAttributes, UINT32 initialSize)
    {
        *ppAttributes = nullptr;
        return CFakeSystem::Fails("MFCreateAttributes") ? E_FAIL : __real_MFCreateAttributes(ppAttributes, initialSize);
    }
    HRESULT __wrap_MFCreateMediaType(IMFMediaType** ppType)
    {
        *ppType = nullptr;
        return CFakeSystem::Fails("MFCreateMediaType") ? E_FAIL : __real_MFCreateMediaType(ppType);
    }
    HRESULT __wrap_MFCreateDXGIDeviceManager(UINT* pResetToken, IMFDXGIDeviceManager** ppManager)
    {
        *ppManager = nullptr;
        return CFakeSystem::Fails("MFCreateDXGIDeviceManager")
                   ? E_FAIL
                   : __real_MFCreateDXGIDeviceManager(pResetToken, ppManager);
    }
}
