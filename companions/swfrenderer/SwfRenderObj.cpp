#include "companions/swfrenderer/SwfRenderObj.h"

#include "companions/swfrenderer/FileBytes.h"
#include "companions/swfrenderer/Limits.h"
#include "companions/swfrenderer/MovieReader.h"

#include <cmath>
#include <new>

namespace
{
constexpr double kTwipsPerPixel = 20;
}

std::uint32_t CSWFRenderObj::AddRef()
{
    return m_nRefCount.fetch_add(1, std::memory_order_relaxed) + 1;
}

std::uint32_t CSWFRenderObj::Release()
{
    const std::uint32_t left = m_nRefCount.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0)
        delete this;
    return left;
}

void CSWFRenderObj::CloseMovie()
{
    m_pRenderer.reset();
    m_pStage.reset();
    m_pMovie.reset();
    m_bRendered = m_bCanvasKept = false;
}

HRESULT CSWFRenderObj::OpenMovie(const wchar_t* path)
{
    CloseMovie();
    if (!path || !*path)
        return E_INVALIDARG;
    try
    {
        return OpenBytes(swf::ReadFileBytes(path));
    }
    catch (const std::bad_alloc&)
    {
        CloseMovie();
        return E_OUTOFMEMORY;
    }
}

HRESULT CSWFRenderObj::OpenBytes(std::span<const std::uint8_t> bytes, const swf::Budget& budget)
{
    CloseMovie();
    auto pMovie = std::make_unique<swf::Movie>();
    if (!swf::OpenContainer(bytes, pMovie->file) || !swf::CMovieReader(*pMovie, budget).Read())
        return E_FAIL;
    m_pStage = std::make_unique<swf::CStage>(*pMovie, budget);
    m_pRenderer = std::make_unique<swf::CSceneRenderer>(*pMovie, budget);
    m_pMovie = std::move(pMovie);
    return S_OK;
}

HRESULT CSWFRenderObj::GetMovieInfo(tagSWFMovieInfo* pInfo)
{
    if (!pInfo || pInfo->cbSize != sizeof(tagSWFMovieInfo))
        return E_INVALIDARG;
    if (!m_pMovie)
        return E_FAIL;
    const swf::Container& file = m_pMovie->file;
    pInfo->nVersion = file.version;
    pInfo->nFrameCount = m_pMovie->root.FrameCount();
    pInfo->dWidth = file.stage.Width() / kTwipsPerPixel;
    pInfo->dHeight = file.stage.Height() / kTwipsPerPixel;
    pInfo->dFrameRate = file.frameRate;
    return S_OK;
}

void CSWFRenderObj::SetRenderSize(std::uint32_t width, std::uint32_t height)
{
    m_bRendered = m_bRendered && width == m_nWidth && height == m_nHeight;
    m_nWidth = width;
    m_nHeight = height;
}

std::uint32_t CSWFRenderObj::GetRenderFlag()
{
    return m_nFlag;
}

void CSWFRenderObj::SetRenderFlag(std::uint32_t value)
{
    m_bCanvasKept = m_bCanvasKept && value == m_nFlag;
    m_bRendered = m_bRendered && m_bCanvasKept;
    m_nFlag = value;
}

void CSWFRenderObj::SetSmoothEdges(bool smooth)
{
    m_bCanvasKept = m_bCanvasKept && smooth == m_bSmooth;
    m_bRendered = m_bRendered && m_bCanvasKept;
    m_bSmooth = smooth;
}

std::uint32_t CSWFRenderObj::GetFrameCount()
{
    return m_pMovie ? m_pMovie->root.FrameCount() : 0;
}

HRESULT CSWFRenderObj::Render(std::uint32_t index)
{
    const swf::Rect& stage = m_pMovie->file.stage;
    const auto own = [](double twips) {
        return static_cast<std::uint32_t>(std::min<double>(std::ceil(twips / kTwipsPerPixel), swf::kMaxRenderSide + 1));
    };
    const std::uint32_t width = m_nWidth != 0 ? m_nWidth : own(stage.Width());
    const std::uint32_t height = m_nHeight != 0 ? m_nHeight : own(stage.Height());
    if (width > swf::kMaxRenderSide || height > swf::kMaxRenderSide ||
        std::uint64_t{width} * height > swf::kMaxRenderPixels)
        return E_FAIL;
    const swf::Area area{0, 0, static_cast<int>(width), static_cast<int>(height)};
    if (m_canvas.area != area)
    {
        m_bCanvasKept = false;
        m_canvas.Reset(area);
    }
    m_pStage->GoToTick(index);
    const std::uint64_t picture = m_pStage->PictureHash();
    m_frame = {index, width, height, width * 4};
    if (m_bCanvasKept && picture == m_nPicture)
    {
        m_bRendered = true; // nothing has changed since the frame that was drawn last
        return S_OK;
    }
    m_bCanvasKept = false;
    m_pRenderer->Render(*m_pStage, m_bSmooth ? swf::Coverage::Exact : swf::Coverage::Centre, m_canvas);
    if ((m_nFlag & kSWFRenderHalfTurn) != 0)
        std::reverse(m_canvas.pixels.begin(), m_canvas.pixels.end());
    m_nPicture = picture;
    m_bCanvasKept = m_bRendered = true;
    return S_OK;
}

HRESULT CSWFRenderObj::RenderFrame(std::uint32_t index, const tagSWFFrameInfo** ppInfo, const std::uint8_t** ppPixels)
{
    if (ppInfo)
        *ppInfo = nullptr;
    if (ppPixels)
        *ppPixels = nullptr;
    if (!ppInfo || !ppPixels)
        return E_POINTER;
    if (!m_pMovie)
        return E_FAIL;
    try
    {
        if (!m_bRendered || m_frame.nFrame != index)
        {
            m_bRendered = false;
            if (const HRESULT hr = Render(index); FAILED(hr))
                return hr;
        }
    }
    catch (const std::bad_alloc&)
    {
        return E_OUTOFMEMORY;
    }
    *ppInfo = &m_frame;
    *ppPixels = reinterpret_cast<const std::uint8_t*>(m_canvas.pixels.data());
    return S_OK;
}
