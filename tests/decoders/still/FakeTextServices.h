/// @file FakeTextServices.h
/// Stands between the engine and the platform's drawing services: passes calls on, notes them, and fails on request.
/// The program that links it has D3D11CreateDevice, D2D1CreateFactory and DWriteCreateFactory wrapped.
#pragma once

#include <d2d1.h>
#include <d3d11.h>
#include <dwrite_3.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

struct FakeTextServices
{
    // ---- script ----
    std::set<std::string> failing;        ///< names of operations that answer E_FAIL, "D3D11CreateDevice" and so on
    std::set<D3D_DRIVER_TYPE> noDevice;   ///< driver types that are refused as well
    UINT rowPadding = 0;                  ///< bytes that follow each row of staging textures; the last one's too
    std::vector<HRESULT> endDraw;         ///< what the next EndDraw() calls answer, S_OK after that
    std::set<std::wstring> missingFamily; ///< font families for which no format is made

    // ---- what happened ----
    struct DeviceRequest
    {
        D3D_DRIVER_TYPE type;
        UINT flags;
        std::vector<D3D_FEATURE_LEVEL> levels;
        UINT sdkVersion;
    };
    struct FormatRequest
    {
        std::wstring family;
        DWRITE_FONT_WEIGHT weight;
        DWRITE_FONT_STYLE style;
        float size;
        std::wstring locale;
    };
    struct LayoutRequest
    {
        std::wstring text;
        float maxWidth;
        float maxHeight;
    };
    std::vector<DeviceRequest> devices;
    std::vector<D3D11_TEXTURE2D_DESC> textures;
    std::vector<D2D1_RENDER_TARGET_PROPERTIES> targets;
    std::vector<FormatRequest> formats;
    std::vector<LayoutRequest> layouts;
    int draws = 0;   ///< EndDraw() calls
    int copies = 0;  ///< CopyResource() calls
    int maps = 0;    ///< Map() calls that were answered with success, of padded textures
    int unmaps = 0;  ///< their Unmap() calls
    int brushes = 0; ///< brushes made

    bool Fails(const char* pName) const
    {
        return std::any_of(failing.begin(), failing.end(), [pName](const std::string& name) { return name == pName; });
    }
    /// The one that all calls go to; a test begins with a fresh one.
    static FakeTextServices& Get();
};
