/// @file MoviePlayer.h
/// A movie in memory through the renderer.
#pragma once

#include "companions/swfrenderer/SwfRenderObj.h"
#include "engine/platform/RefPtr.h"

#include <cstdint>
#include <span>
#include <vector>

class MoviePlayer
{
public:
    explicit MoviePlayer(std::span<const std::uint8_t> file, const swf::Budget& budget = {})
    {
        m_result = m_pMovie->OpenBytes(file, budget);
    }

    bool IsOpen() const { return SUCCEEDED(m_result); }
    CSWFRenderObj& operator*() const { return *m_pMovie.Get(); }
    CSWFRenderObj* operator->() const { return m_pMovie.Get(); }
    /// B, G, R, A of every pixel as one number each; empty when there is no picture.
    std::vector<std::uint32_t> Frame(std::uint32_t index)
    {
        const tagSWFFrameInfo* pInfo = nullptr;
        const std::uint8_t* pPixels = nullptr;
        if (FAILED(m_pMovie->RenderFrame(index, &pInfo, &pPixels)))
            return {};
        const auto* const p = reinterpret_cast<const std::uint32_t*>(pPixels);
        return {p, p + std::size_t{pInfo->nWidth} * pInfo->nHeight};
    }

private:
    RefPtr<CSWFRenderObj> m_pMovie = RefPtr<CSWFRenderObj>::Adopt(new CSWFRenderObj);
    HRESULT m_result;
};
