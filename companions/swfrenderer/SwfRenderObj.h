/// @file SwfRenderObj.h
/// The library's render object.
#pragma once

#include "companions/swfrenderer/Limits.h"
#include "companions/swfrenderer/SceneRenderer.h"
#include "companions/swfrenderer/Stage.h"
#include "engine/platform/SwfRenderer.h"

#include <atomic>
#include <memory>
#include <span>

/// See ISWFRenderObj.
class CSWFRenderObj final : public ISWFRenderObj
{
public:
    std::uint32_t AddRef() override;
    std::uint32_t Release() override;
    void CloseMovie() override;
    HRESULT OpenMovie(const wchar_t* path) override;
    HRESULT GetMovieInfo(tagSWFMovieInfo* pInfo) override;
    void SetRenderSize(std::uint32_t width, std::uint32_t height) override;
    std::uint32_t GetRenderFlag() override;
    void SetRenderFlag(std::uint32_t value) override;
    void SetSmoothEdges(bool smooth) override;
    std::uint32_t GetFrameCount() override;
    HRESULT RenderFrame(std::uint32_t index, const tagSWFFrameInfo** ppInfo, const std::uint8_t** ppPixels) override;

    /// A movie that lies in memory. Throws std::bad_alloc.
    HRESULT OpenBytes(std::span<const std::uint8_t> bytes, const swf::Budget& budget = {});

private:
    ~CSWFRenderObj() override = default;
    HRESULT Render(std::uint32_t index);

    std::atomic<std::uint32_t> m_nRefCount{1};
    std::unique_ptr<swf::Movie> m_pMovie; ///< outlives what refers to it below
    std::unique_ptr<swf::CStage> m_pStage;
    std::unique_ptr<swf::CSceneRenderer> m_pRenderer;
    swf::Surface m_canvas;
    tagSWFFrameInfo m_frame;
    std::uint32_t m_nWidth = 0, m_nHeight = 0; ///< as asked for
    std::uint32_t m_nFlag = 0;
    bool m_bSmooth = true;
    bool m_bRendered = false;     ///< the canvas shows m_frame
    bool m_bCanvasKept = false;   ///< the canvas shows the picture of m_nPicture with the flags that are set
    std::uint64_t m_nPicture = 0; ///< its hash
};
