#include "engine/platform/RefPtr.h"

#include <gtest/gtest.h>

#include <d3d10.h>
#include <d3d11.h>
#include <mfapi.h>

TEST(D3D11CreateDevice, FailsCleanlyForHardware)
{
    auto* pDevice = reinterpret_cast<ID3D11Device*>(0x10);
    EXPECT_TRUE(FAILED(D3D11CreateDevice(nullptr, D3D_DRIVER_TYPE_HARDWARE, nullptr, D3D11_CREATE_DEVICE_VIDEO_SUPPORT,
                                         nullptr, 0, D3D11_SDK_VERSION, &pDevice, nullptr, nullptr)));
    EXPECT_EQ(pDevice, nullptr);
}

TEST(D3D11CreateDevice, GivesASoftwareDeviceThatCanBeProtectedAndShared)
{
    const D3D_FEATURE_LEVEL levels[] = {D3D_FEATURE_LEVEL_11_1, D3D_FEATURE_LEVEL_11_0};
    ComPtr<ID3D11Device> pDevice;
    ASSERT_EQ(D3D11CreateDevice(nullptr, D3D_DRIVER_TYPE_WARP, nullptr, 0, levels, 2, D3D11_SDK_VERSION, pDevice.Put(),
                                nullptr, nullptr),
              S_OK);
    EXPECT_EQ(pDevice->GetFeatureLevel(), D3D_FEATURE_LEVEL_11_1);
    {
        ComPtr<ID3D10Multithread> pMultithread;
        ASSERT_EQ(pDevice->QueryInterface(IID_PPV_ARGS(pMultithread.Put())), S_OK);
        EXPECT_EQ(pMultithread->SetMultithreadProtected(TRUE), FALSE);
        EXPECT_EQ(pMultithread->GetMultithreadProtected(), TRUE);
        ComPtr<ID3D11Device> pSame;
        ASSERT_EQ(pMultithread->QueryInterface(IID_PPV_ARGS(pSame.Put())), S_OK);
        EXPECT_EQ(pSame.Get(), pDevice.Get());
    }
    UINT token = 0;
    ComPtr<IMFDXGIDeviceManager> pManager;
    ASSERT_EQ(MFCreateDXGIDeviceManager(&token, pManager.Put()), S_OK);
    EXPECT_EQ(pManager->ResetDevice(pDevice.Get(), token + 1), E_INVALIDARG);
    EXPECT_EQ(pManager->ResetDevice(nullptr, token), E_INVALIDARG);
    EXPECT_EQ(pManager->ResetDevice(pDevice.Get(), token), S_OK);
    pDevice->AddRef();
    EXPECT_EQ(pDevice->Release(), 2U); // ours and the manager's
    pManager = {};
    pDevice->AddRef();
    EXPECT_EQ(pDevice->Release(), 1U);
}
