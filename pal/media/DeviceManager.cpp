#include "pal/kernel/ComObject.h"

#include <d3d11.h>
#include <mfapi.h>

#include <atomic>
#include <new>

namespace pal
{
namespace
{
/// Keeps the device alive for whoever decodes on it. Devices of this layer have no decoder of their own, so readers
/// take the manager as a hint only.
class DeviceManager final : public ComObject<DeviceManager, IMFDXGIDeviceManager>
{
public:
    explicit DeviceManager(UINT token) : m_token(token) {}
    ~DeviceManager() { Replace(nullptr); }

    HRESULT STDMETHODCALLTYPE CloseDeviceHandle(HANDLE) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE ResetDevice(IUnknown* pDevice, UINT resetToken) override
    {
        if (pDevice == nullptr || resetToken != m_token)
            return E_INVALIDARG;
        ID3D11Device* pD3DDevice = nullptr;
        const HRESULT hr = pDevice->QueryInterface(IID_PPV_ARGS(&pD3DDevice));
        if (SUCCEEDED(hr))
            Replace(pD3DDevice);
        return hr;
    }

private:
    void Replace(ID3D11Device* pDevice)
    {
        ID3D11Device* const pOld = m_pDevice.exchange(pDevice);
        if (pOld != nullptr)
            pOld->Release();
    }
    const UINT m_token;
    std::atomic<ID3D11Device*> m_pDevice{nullptr}; // owns one reference
};

std::atomic<UINT> g_lastToken{0};
} // namespace
} // namespace pal

extern "C" HRESULT MFCreateDXGIDeviceManager(UINT* pResetToken, IMFDXGIDeviceManager** ppManager)
{
    if (pResetToken == nullptr || ppManager == nullptr)
        return E_POINTER;
    *pResetToken = ++pal::g_lastToken;
    *ppManager = new (std::nothrow) pal::DeviceManager(*pResetToken);
    return *ppManager != nullptr ? S_OK : E_OUTOFMEMORY;
}
