#include "pal/graphics/Texture.h"
#include "pal/kernel/ComObject.h"

#include <d3d10.h>
#include <d3d11.h>

#include <memory>
#include <mutex>
#include <new>

namespace pal
{
namespace
{
class Direct3DDevice;

/// The device's multithread protection. It lives and dies with the device: references count there.
class Multithread final : public ID3D10Multithread
{
public:
    explicit Multithread(Direct3DDevice& device) : m_device(device) {}
    ~Multithread() = default;
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    void STDMETHODCALLTYPE Enter() override { m_lock.lock(); }
    void STDMETHODCALLTYPE Leave() override { m_lock.unlock(); }
    BOOL STDMETHODCALLTYPE SetMultithreadProtected(BOOL protect) override { return m_protected.exchange(protect); }
    BOOL STDMETHODCALLTYPE GetMultithreadProtected() override { return m_protected; }

private:
    Direct3DDevice& m_device;
    std::recursive_mutex m_lock;
    std::atomic<BOOL> m_protected{FALSE};
};

/// Carries its commands out at once, so that it needs nothing of its device.
class DeviceContext final : public ComObject<DeviceContext, ID3D11DeviceContext, ID3D11DeviceChild>
{
public:
    void STDMETHODCALLTYPE CopyResource(ID3D11Resource* pDestination, ID3D11Resource* pSource) override
    {
        Texture* const pTo = TextureOf(pDestination);
        Texture* const pFrom = TextureOf(pSource);
        if (pTo == nullptr || pFrom == nullptr || pTo == pFrom || pTo->IsMapped() || pFrom->IsMapped() ||
            pTo->Description().Width != pFrom->Description().Width ||
            pTo->Description().Height != pFrom->Description().Height)
            return;
        pTo->CopyFrom(*pFrom);
    }
};

/// A software device: its resources are plain memory.
class Direct3DDevice final : public ComObject<Direct3DDevice, ID3D11Device>
{
public:
    Direct3DDevice(D3D_FEATURE_LEVEL level, UINT flags) : m_level(level), m_flags(flags), m_multithread(*this) {}
    HRESULT STDMETHODCALLTYPE CreateTexture2D(const D3D11_TEXTURE2D_DESC* pDesc,
                                              const D3D11_SUBRESOURCE_DATA* pInitialData,
                                              ID3D11Texture2D** ppTexture) override
    {
        if (ppTexture != nullptr)
            *ppTexture = nullptr;
        if (pDesc == nullptr || !Texture::IsSupported(*pDesc))
            return E_INVALIDARG;
        if (pInitialData != nullptr)
            return E_NOTIMPL;
        if (ppTexture == nullptr)
            return S_FALSE;
        *ppTexture = Texture::Make(*pDesc);
        return *ppTexture != nullptr ? S_OK : E_OUTOFMEMORY;
    }
    D3D_FEATURE_LEVEL STDMETHODCALLTYPE GetFeatureLevel() override { return m_level; }
    UINT STDMETHODCALLTYPE GetCreationFlags() override { return m_flags; }
    HRESULT QueryFurther(REFIID iid, void** ppObject)
    {
        if (iid != IID_ID3D10Multithread)
            return E_NOINTERFACE;
        AddRef();
        *ppObject = static_cast<ID3D10Multithread*>(&m_multithread);
        return S_OK;
    }

private:
    const D3D_FEATURE_LEVEL m_level;
    const UINT m_flags;
    Multithread m_multithread;
};

HRESULT Multithread::QueryInterface(REFIID iid, void** ppObject)
{
    return m_device.QueryInterface(iid, ppObject);
}
ULONG Multithread::AddRef()
{
    return m_device.AddRef();
}
ULONG Multithread::Release()
{
    return m_device.Release();
}
} // namespace
} // namespace pal

extern "C" HRESULT D3D11CreateDevice(IDXGIAdapter* pAdapter, D3D_DRIVER_TYPE driverType, HMODULE, UINT flags,
                                     const D3D_FEATURE_LEVEL* pFeatureLevels, UINT featureLevels, UINT sdkVersion,
                                     ID3D11Device** ppDevice, D3D_FEATURE_LEVEL* pFeatureLevel,
                                     ID3D11DeviceContext** ppImmediateContext)
{
    if (ppDevice != nullptr)
        *ppDevice = nullptr;
    if (ppImmediateContext != nullptr)
        *ppImmediateContext = nullptr;
    if (sdkVersion != D3D11_SDK_VERSION || pAdapter != nullptr)
        return E_INVALIDARG;
    if (driverType != D3D_DRIVER_TYPE_WARP)
        return DXGI_ERROR_UNSUPPORTED;

    const bool anyLevel = pFeatureLevels == nullptr || featureLevels == 0;
    const D3D_FEATURE_LEVEL level = anyLevel ? D3D_FEATURE_LEVEL_11_0 : pFeatureLevels[0];
    if (pFeatureLevel != nullptr)
        *pFeatureLevel = level;
    if (ppDevice == nullptr && ppImmediateContext == nullptr)
        return S_FALSE;
    std::unique_ptr<pal::Direct3DDevice, pal::ReleaseObject> pDevice(new (std::nothrow)
                                                                         pal::Direct3DDevice(level, flags));
    std::unique_ptr<pal::DeviceContext, pal::ReleaseObject> pContext(new (std::nothrow) pal::DeviceContext);
    if (pDevice == nullptr || pContext == nullptr)
        return E_OUTOFMEMORY;
    if (ppDevice != nullptr)
        *ppDevice = pDevice.release();
    if (ppImmediateContext != nullptr)
        *ppImmediateContext = pContext.release();
    return S_OK;
}
