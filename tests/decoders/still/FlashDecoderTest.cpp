/// @file FlashDecoderTest.cpp
/// What the decoder asks of the renderer, and what it makes of the answer. The renderer is a scripted one.
#include "engine/decoders/still/FlashDecoder.h"
#include "engine/decoders/DecoderCache.h"
#include "engine/decoders/media/MediaInfo.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace
{
/// What the renderer below does, and what it was asked.
struct Script
{
    bool canBeMade = true;
    HRESULT open = S_OK, render = S_OK;
    double width = 550, height = 400, frameRate = 12.5;
    std::uint32_t renderWidth = 2, renderHeight = 1; ///< of what it delivers
    std::vector<std::uint32_t> pixels{0xFF000001U, 0xFF000002U};

    std::wstring path;
    std::uint32_t askedWidth = 0, askedHeight = 0, flag = 0, index = 0, infoSize = 0;
    int alive = 0;
};
Script g_script;

class CScriptedRenderer final : public ISWFRenderObj
{
public:
    CScriptedRenderer() { ++g_script.alive; }
    std::uint32_t AddRef() override { return ++m_count; }
    std::uint32_t Release() override
    {
        const std::uint32_t left = --m_count;
        if (left == 0)
            delete this;
        return left;
    }
    void CloseMovie() override {}
    HRESULT OpenMovie(const wchar_t* path) override
    {
        g_script.path = path;
        return g_script.open;
    }
    HRESULT GetMovieInfo(tagSWFMovieInfo* pInfo) override
    {
        g_script.infoSize = pInfo->cbSize;
        if (FAILED(g_script.open))
            return E_FAIL;
        pInfo->dWidth = g_script.width;
        pInfo->dHeight = g_script.height;
        pInfo->dFrameRate = g_script.frameRate;
        pInfo->nFrameCount = 50;
        return S_OK;
    }
    void SetRenderSize(std::uint32_t width, std::uint32_t height) override
    {
        g_script.askedWidth = width;
        g_script.askedHeight = height;
    }
    std::uint32_t GetRenderFlag() override { return g_script.flag; }
    void SetRenderFlag(std::uint32_t value) override { g_script.flag = value; }
    void SetSmoothEdges(bool) override {}
    std::uint32_t GetFrameCount() override { return 1; }
    HRESULT RenderFrame(std::uint32_t index, const tagSWFFrameInfo** ppInfo, const std::uint8_t** ppPixels) override
    {
        g_script.index = index;
        m_info = {index, g_script.renderWidth, g_script.renderHeight, g_script.renderWidth * 4};
        *ppInfo = &m_info;
        *ppPixels = reinterpret_cast<const std::uint8_t*>(g_script.pixels.data());
        return g_script.render;
    }

private:
    ~CScriptedRenderer() override { --g_script.alive; }
    std::uint32_t m_count = 1;
    tagSWFFrameInfo m_info;
};

class FlashDecoder : public testing::Test
{
protected:
    FlashDecoder() { g_script = {}; }
    static tagDecProp Record(std::uint32_t width)
    {
        tagDecProp prop(L"Movie.SWF", 0);
        prop.width = width;
        return prop;
    }
    static std::uint32_t PixelAt(ISampleBuffer* pFrame, std::size_t i)
    {
        std::uint8_t* pData = nullptr;
        pFrame->GetBuffer(&pData, nullptr);
        return reinterpret_cast<std::uint32_t*>(pData)[i];
    }
    SampleBufferPtr Ask(std::uint64_t time)
    {
        return SampleBufferPtr::Adopt(m_pDecoder->GetClipVideoFrame(time, m_ended));
    }

    RefPtr<CFlashDecoder> m_pDecoder = RefPtr<CFlashDecoder>::Adopt(new CFlashDecoder);
    bool m_ended = true;
};
} // namespace

ISWFRenderObj* CreateSWFRenderObj()
{
    return g_script.canBeMade ? new CScriptedRenderer : nullptr;
}

TEST_F(FlashDecoder, FitsTheMovieToTheWidthAskedFor)
{
    ASSERT_TRUE(m_pDecoder->Initialize(Record(1280)));
    const SampleBufferPtr frame = Ask(0);
    ASSERT_TRUE(frame);
    EXPECT_EQ(g_script.askedWidth, 1280U);
    EXPECT_EQ(g_script.askedHeight, 930U);
    EXPECT_EQ(frame->GetWidth(), 1280U);
    EXPECT_EQ(frame->GetHeight(), 930U);
    EXPECT_EQ(frame->GetRatioX(), 128U);
    EXPECT_EQ(frame->GetRatioY(), 93U);
    EXPECT_EQ(g_script.flag, 1U);
    EXPECT_EQ(g_script.infoSize, 64U);
    EXPECT_EQ(g_script.path, L"Movie.SWF");
    EXPECT_FALSE(m_ended);
}

TEST_F(FlashDecoder, TakesTheMoviesOwnSizeWhenAskedTo)
{
    g_script.width = 550.9;
    tagDecProp prop = Record(1280);
    prop.flags |= kRequestNoAttachment;
    ASSERT_TRUE(m_pDecoder->Initialize(prop));
    ASSERT_TRUE(Ask(0));
    EXPECT_EQ(g_script.askedWidth, 550U);
    EXPECT_EQ(g_script.askedHeight, 400U);
}

TEST_F(FlashDecoder, MakesTheFrameDurationOfTheRateAndAsksByIt)
{
    g_script.width = 2;
    g_script.height = 1;
    tagDecProp prop = Record(2);
    prop.frameRate = 25;
    prop.frameDuration = 0;
    ASSERT_TRUE(m_pDecoder->Initialize(prop));
    EXPECT_EQ(m_pDecoder->GetProperty()->frameDuration, 400'000U);
    ASSERT_TRUE(Ask(10'000'000));
    EXPECT_EQ(g_script.index, 25U);
}

TEST_F(FlashDecoder, AsksForTheFrameOnShowAtATime)
{
    g_script.width = 2;
    g_script.height = 1;
    tagDecProp prop = Record(2);
    prop.frameDuration = 400'000;
    ASSERT_TRUE(m_pDecoder->Initialize(prop));
    ASSERT_TRUE(Ask(10'000'000));
    EXPECT_EQ(g_script.index, 25U);
    ASSERT_TRUE(Ask(10'399'999));
    EXPECT_EQ(g_script.index, 25U);
    ASSERT_TRUE(Ask(std::uint64_t{400'000} << 32));
    EXPECT_EQ(g_script.index, 0U); // truncated to 32 bits
}

TEST_F(FlashDecoder, TurnsTheRenderersHalfTurnBack)
{
    g_script.width = 2;
    g_script.height = 1;
    ASSERT_TRUE(m_pDecoder->Initialize(Record(2)));
    const SampleBufferPtr frame = Ask(0);
    ASSERT_TRUE(frame);
    EXPECT_EQ(PixelAt(frame.Get(), 0), 0xFF000002U);
    EXPECT_EQ(PixelAt(frame.Get(), 1), 0xFF000001U);
}

TEST_F(FlashDecoder, SwapsTheSizeForAQuarterTurn)
{
    g_script.width = 2;
    g_script.height = 1;
    tagDecProp prop = Record(2);
    prop.rotation = 270; // with the half turn, a quarter clockwise: the left pixel comes on top
    ASSERT_TRUE(m_pDecoder->Initialize(prop));
    const SampleBufferPtr frame = Ask(0);
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->GetWidth(), 1U);
    EXPECT_EQ(frame->GetHeight(), 2U);
    EXPECT_EQ(frame->GetRatioX(), 1U);
    EXPECT_EQ(frame->GetRatioY(), 2U);
    EXPECT_EQ(PixelAt(frame.Get(), 0), 0xFF000001U);
    EXPECT_EQ(PixelAt(frame.Get(), 1), 0xFF000002U);
}

TEST_F(FlashDecoder, KeepsTheLastFrameWhenRenderingFails)
{
    g_script.width = 2;
    g_script.height = 1;
    ASSERT_TRUE(m_pDecoder->Initialize(Record(2)));
    EXPECT_FALSE(SampleBufferPtr::Adopt(m_pDecoder->GetLastFrame()));
    const SampleBufferPtr frame = Ask(0);
    ASSERT_TRUE(frame);
    g_script.render = E_FAIL;
    EXPECT_FALSE(Ask(0));
    EXPECT_TRUE(m_ended);
    EXPECT_EQ(SampleBufferPtr::Adopt(m_pDecoder->GetLastFrame()).Get(), frame.Get());
}

TEST_F(FlashDecoder, GivesReferencesBack)
{
    g_script.width = 2;
    g_script.height = 1;
    ASSERT_TRUE(m_pDecoder->Initialize(Record(2)));
    SampleBufferPtr first = Ask(0);
    (void)Ask(0);
    m_pDecoder = {};
    EXPECT_EQ(g_script.alive, 0);
    first->AddRef();
    EXPECT_EQ(first->Release(), 1U);
}

TEST_F(FlashDecoder, SaysThatAMovieCannotBeOpened)
{
    g_script.open = E_FAIL;
    EXPECT_FALSE(m_pDecoder->Initialize(Record(2)));
    EXPECT_EQ(g_script.alive, 1);
}

TEST_F(FlashDecoder, LeavesTheFlagAloneWithoutARenderer)
{
    g_script.canBeMade = false;
    EXPECT_FALSE(m_pDecoder->Initialize(Record(2)));
    EXPECT_FALSE(Ask(0));
    EXPECT_TRUE(m_ended);
}

TEST_F(FlashDecoder, GivesNoFrameOfAMovieWithoutASize)
{
    g_script.width = 0;
    ASSERT_TRUE(m_pDecoder->Initialize(Record(1280)));
    EXPECT_FALSE(Ask(0));
}

TEST_F(FlashDecoder, ComesFromTheCacheWhateverTheLettersCaseAndTheType)
{
    tagDecProp prop = Record(2);
    prop.decoderType = kDecoderTitle;
    const DecoderPtr decoder = DecoderPtr::Adopt(GetDecoder(L"flash", prop));
    ASSERT_TRUE(decoder);
    EXPECT_TRUE(IsDecoderFor(decoder.Get(), prop));
    EXPECT_NE(dynamic_cast<CFlashDecoder*>(decoder.Get()), nullptr);
    RemoveDecoder(L"flash");
}

// ---- the query that uses the same library --------------------------------------------------------------------------

TEST_F(FlashDecoder, QueryTellsTheMoviesSizeRateAndLength)
{
    g_script.width = 550.9;
    g_script.height = 0.9;
    tagVideoInfo info;
    EXPECT_TRUE(QMXGetVideoInfo(L"Movie.SWF", &info));
    EXPECT_EQ(g_script.path, L"Movie.SWF");
    EXPECT_EQ(info.nWidth, 550U);
    EXPECT_EQ(info.nHeight, 0U);
    EXPECT_EQ(info.dFrameRate, 12.5);
    EXPECT_EQ(info.dDuration, 4);
    EXPECT_EQ(g_script.infoSize, 64U);
    EXPECT_EQ(g_script.alive, 0);
}

TEST_F(FlashDecoder, QueryHoldsSizesThatAreNone)
{
    for (const double side : {-1.0, 1e300, std::numeric_limits<double>::infinity(), std::nan("")})
    {
        g_script.width = g_script.height = side;
        tagVideoInfo info;
        info.nWidth = info.nHeight = 5;
        EXPECT_TRUE(QMXGetVideoInfo(L"a.swf", &info));
        EXPECT_EQ(info.nWidth, 0U) << side;
        EXPECT_EQ(info.nHeight, 0U) << side;
    }
}

TEST_F(FlashDecoder, QueryDoesNotLookWhetherTheMovieOpens)
{
    g_script.open = E_FAIL;
    tagVideoInfo info;
    EXPECT_TRUE(QMXGetVideoInfo(L"a.swf", &info));
    EXPECT_EQ(info.nWidth, 0U);
    EXPECT_TRUE(std::isnan(info.dDuration));
    EXPECT_EQ(g_script.alive, 0);
}

TEST_F(FlashDecoder, QueryFailsWithoutARenderer)
{
    g_script.canBeMade = false;
    tagVideoInfo info;
    EXPECT_FALSE(QMXGetVideoInfo(L"a.swf", &info));
}
