/// @file Texture.h
/// Textures of the software device: pictures in memory.
#pragma once

#include "pal/graphics/ContentArea.h"
#include "pal/kernel/ComObject.h"

#include <d3d11.h>

#include <cstddef>
#include <cstdlib>
#include <memory>

namespace pal
{
inline constexpr UINT kMaxTextureSide = 16'384; ///< pixels, that of feature level 11

/// Releases a service object at the end of a scope.
struct ReleaseObject
{
    template <class T> void operator()(T* p) const { p->Release(); }
};

class Texture;

/// The texture's pixels as a DXGI surface. It lives and dies with the texture: references count there.
class TextureSurface final : public IDXGISurface
{
public:
    explicit TextureSurface(Texture& texture) : m_texture(texture) {}
    ~TextureSurface() = default;
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE GetDesc(DXGI_SURFACE_DESC* pDesc) override;
    HRESULT STDMETHODCALLTYPE Map(DXGI_MAPPED_RECT* pLockedRect, UINT mapFlags) override;
    HRESULT STDMETHODCALLTYPE Unmap() override;

    Texture& Owner() const { return m_texture; }

private:
    Texture& m_texture;
};

/// BGRA rows without padding. The texture knows in which rectangles pixels may be something else than transparent
/// black, so that clearing and copying touch no more than that: an overlay is mostly empty.
class Texture final : public ComObject<Texture, ID3D11Texture2D, ID3D11Resource, ID3D11DeviceChild>
{
public:
    /// @param desc  a description that IsSupported(). @return one reference, or null when memory is short
    static Texture* Make(const D3D11_TEXTURE2D_DESC& desc);
    static bool IsSupported(const D3D11_TEXTURE2D_DESC& desc);

    void STDMETHODCALLTYPE GetDesc(D3D11_TEXTURE2D_DESC* pDesc) override;
    HRESULT QueryFurther(REFIID iid, void** ppObject);

    const D3D11_TEXTURE2D_DESC& Description() const { return m_desc; }
    PixelRect Bounds() const { return {0, 0, static_cast<int>(m_desc.Width), static_cast<int>(m_desc.Height)}; }
    std::size_t Stride() const { return std::size_t{m_desc.Width} * 4; } ///< bytes
    std::uint8_t* Pixels() { return m_pPixels; }

    /// Says that pixels in @p rect have been written.
    void AddContent(const PixelRect& rect) { m_content.Add(Common(rect, Bounds())); }
    /// Makes everything transparent black.
    void Clear();
    /// Takes over the pixels of @p source, which has this texture's size.
    void CopyFrom(Texture& source);

    bool IsMapped() const { return m_mapped; }
    HRESULT Map(DXGI_MAPPED_RECT* pLockedRect, UINT mapFlags);
    HRESULT Unmap();

private:
    struct FreeMemory
    {
        void operator()(std::uint8_t* p) const { std::free(p); }
    };
    using Memory = std::unique_ptr<std::uint8_t, FreeMemory>;

    Texture(const D3D11_TEXTURE2D_DESC& desc, Memory memory, std::uint8_t* pPixels);
    std::uint8_t* PixelAt(int x, int y);

    const D3D11_TEXTURE2D_DESC m_desc;
    TextureSurface m_surface{*this};
    Memory m_memory;
    std::uint8_t* m_pPixels; ///< in it, aligned to 64 bytes
    ContentArea m_content;   ///< outside of it everything is transparent black
    bool m_mapped = false;
};

/// The texture behind an interface. @return borrowed; null for null and for objects of other makers
Texture* TextureOf(ID3D11Resource* pResource);
Texture* TextureOf(IDXGISurface* pSurface);
} // namespace pal
