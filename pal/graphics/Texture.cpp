#include "pal/graphics/Texture.h"

#include <cstdint>
#include <cstring>
#include <new>

namespace pal
{
namespace
{
constexpr std::size_t kAlignment = 64;

std::size_t RowBytes(const PixelRect& rect)
{
    return static_cast<std::size_t>(rect.Width()) * 4;
}
} // namespace

// ---- surface -----------------------------------------------------------------------------------------------------

HRESULT TextureSurface::QueryInterface(REFIID iid, void** ppObject)
{
    return m_texture.QueryInterface(iid, ppObject);
}
ULONG TextureSurface::AddRef()
{
    return m_texture.AddRef();
}
ULONG TextureSurface::Release()
{
    return m_texture.Release();
}
HRESULT TextureSurface::GetDesc(DXGI_SURFACE_DESC* pDesc)
{
    if (pDesc == nullptr)
        return E_INVALIDARG;
    const D3D11_TEXTURE2D_DESC& desc = m_texture.Description();
    *pDesc = {desc.Width, desc.Height, desc.Format, desc.SampleDesc};
    return S_OK;
}
HRESULT TextureSurface::Map(DXGI_MAPPED_RECT* pLockedRect, UINT mapFlags)
{
    return m_texture.Map(pLockedRect, mapFlags);
}
HRESULT TextureSurface::Unmap()
{
    return m_texture.Unmap();
}

// ---- texture -----------------------------------------------------------------------------------------------------

bool Texture::IsSupported(const D3D11_TEXTURE2D_DESC& desc)
{
    const bool shape = desc.Width >= 1 && desc.Width <= kMaxTextureSide && desc.Height >= 1 &&
                       desc.Height <= kMaxTextureSide && desc.MipLevels == 1 && desc.ArraySize == 1 &&
                       desc.Format == DXGI_FORMAT_B8G8R8A8_UNORM && desc.SampleDesc.Count == 1 &&
                       desc.SampleDesc.Quality == 0 && desc.MiscFlags == 0;
    constexpr UINT kBindings = D3D11_BIND_SHADER_RESOURCE | D3D11_BIND_RENDER_TARGET;
    constexpr UINT kAccess = D3D11_CPU_ACCESS_READ | D3D11_CPU_ACCESS_WRITE;
    const bool drawn = desc.Usage == D3D11_USAGE_DEFAULT && desc.BindFlags != 0 && (desc.BindFlags & ~kBindings) == 0 &&
                       desc.CPUAccessFlags == 0;
    const bool staging = desc.Usage == D3D11_USAGE_STAGING && desc.BindFlags == 0 && desc.CPUAccessFlags != 0 &&
                         (desc.CPUAccessFlags & ~kAccess) == 0;
    return shape && (drawn || staging);
}

Texture* Texture::Make(const D3D11_TEXTURE2D_DESC& desc)
{
    // Cleared memory comes from the system untouched: rows that nothing is drawn on are never paid for.
    const std::size_t cb = std::size_t{desc.Width} * 4 * desc.Height + kAlignment;
    Memory memory(static_cast<std::uint8_t*>(std::calloc(cb, 1)));
    if (memory == nullptr)
        return nullptr;
    const std::size_t past = reinterpret_cast<std::uintptr_t>(memory.get()) % kAlignment;
    std::uint8_t* const pPixels = memory.get() + (kAlignment - past) % kAlignment;
    return new (std::nothrow) Texture(desc, std::move(memory), pPixels);
}

Texture::Texture(const D3D11_TEXTURE2D_DESC& desc, Memory memory, std::uint8_t* pPixels)
    : m_desc(desc), m_memory(std::move(memory)), m_pPixels(pPixels)
{
}

void Texture::GetDesc(D3D11_TEXTURE2D_DESC* pDesc)
{
    if (pDesc != nullptr)
        *pDesc = m_desc;
}

HRESULT Texture::QueryFurther(REFIID iid, void** ppObject)
{
    if (iid != IID_IDXGISurface && iid != IID_IDXGIDeviceSubObject && iid != IID_IDXGIObject)
        return E_NOINTERFACE;
    AddRef();
    *ppObject = static_cast<IDXGISurface*>(&m_surface);
    return S_OK;
}

std::uint8_t* Texture::PixelAt(int x, int y)
{
    return m_pPixels + static_cast<std::size_t>(y) * Stride() + static_cast<std::size_t>(x) * 4;
}

void Texture::Clear()
{
    for (const PixelRect& rect : m_content)
    {
        for (int y = rect.top; y < rect.bottom; ++y)
            std::memset(PixelAt(rect.left, y), 0, RowBytes(rect));
    }
    m_content = {};
}

void Texture::CopyFrom(Texture& source)
{
    m_content.Add(source.m_content); // where there was something, or is now
    for (const PixelRect& rect : m_content)
    {
        for (int y = rect.top; y < rect.bottom; ++y)
            std::memcpy(PixelAt(rect.left, y), source.PixelAt(rect.left, y), RowBytes(rect));
    }
    m_content = source.m_content;
}

HRESULT Texture::Map(DXGI_MAPPED_RECT* pLockedRect, UINT mapFlags)
{
    if (pLockedRect == nullptr)
        return E_INVALIDARG;
    *pLockedRect = {};
    const bool reads = (mapFlags & DXGI_MAP_READ) != 0;
    const bool writes = (mapFlags & DXGI_MAP_WRITE) != 0;
    if ((mapFlags & ~(DXGI_MAP_READ | DXGI_MAP_WRITE)) != 0 || (!reads && !writes) ||
        (reads && (m_desc.CPUAccessFlags & D3D11_CPU_ACCESS_READ) == 0) ||
        (writes && (m_desc.CPUAccessFlags & D3D11_CPU_ACCESS_WRITE) == 0))
        return E_INVALIDARG;
    if (m_mapped)
        return DXGI_ERROR_INVALID_CALL;
    m_mapped = true;
    if (writes)
        m_content.Add(Bounds());
    *pLockedRect = {static_cast<INT>(Stride()), m_pPixels};
    return S_OK;
}

HRESULT Texture::Unmap()
{
    if (!m_mapped)
        return DXGI_ERROR_INVALID_CALL;
    m_mapped = false;
    return S_OK;
}

Texture* TextureOf(ID3D11Resource* pResource)
{
    return dynamic_cast<Texture*>(pResource);
}

Texture* TextureOf(IDXGISurface* pSurface)
{
    auto* const pOurs = dynamic_cast<TextureSurface*>(pSurface);
    return pOurs != nullptr ? &pOurs->Owner() : nullptr;
}
} // namespace pal
