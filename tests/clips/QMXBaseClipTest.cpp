#include "engine/clips/QMXBaseClip.h"

#include "tests/decoders/NullReference.h"
#include "tests/model/AllocationFailure.h"
#include "tests/model/SlotOf.h"
#include "tests/model/SpyClip.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>

namespace
{
/// A base clip whose render copy can be seen.
class COpenClip : public CQMXBaseClip
{
public:
    COpenClip() : CQMXBaseClip(QMXClipType_Base) {}
    const tagRenderProp& RenderCopy() const { return m_renderCopy; }
};

tagRenderProp FullRequest()
{
    tagRenderProp request;
    request.flags = 1;
    request.width = 2;
    request.height = 3;
    request.time = 4;
    request.auxValue = 5;
    request.audioParams = {6, 7};
    request.boxWidth = 8;
    request.boxHeight = 9;
    request.factorX = 10;
    request.factorY = 11;
    return request;
}

TEST(CQMXBaseClip, NewOneHasTheDefaults)
{
    CQMXBaseClip clip(QMXClipType_Keystroke);
    EXPECT_EQ(clip.GetClipType(), QMXClipType_Keystroke);
    EXPECT_EQ(clip.GetTrackID(), ~0ULL);
    EXPECT_EQ(clip.GetDocumentID(), 0U);
    EXPECT_EQ(clip.GetInPoint(), 0U);
    EXPECT_EQ(clip.GetOutPoint(), 0U);
    EXPECT_EQ(clip.GetStartTime(), 0U);
    EXPECT_EQ(clip.GetEndTime(), 0U);
    EXPECT_EQ(clip.GetDuration(), 0U);
    EXPECT_TRUE(clip.GetFilePath().empty());
    EXPECT_TRUE(clip.IsAudioOpened());
    EXPECT_FALSE(clip.IsVideoOpened());
    EXPECT_EQ(clip.GetLastFrame(), nullptr);
    EXPECT_TRUE(clip.Close());
    EXPECT_TRUE(clip.ResetAudio());

    const COpenClip open;
    EXPECT_EQ(open.RenderCopy().flags, 0U);
    EXPECT_EQ(open.RenderCopy().factorX, 1.0);
    EXPECT_EQ(open.RenderCopy().factorY, 1.0);
}

TEST(CQMXBaseClip, ReturnsWhatWasSet)
{
    CQMXBaseClip clip(QMXClipType_Base);
    EXPECT_EQ(clip.SetFilePath(L"dir/a.mp4"), 0);
    clip.SetInPoint(1);
    clip.SetStartTime(2);
    clip.SetDuration(3);
    clip.SetTrackID(4);
    clip.SetDocumentID(5);
    EXPECT_EQ(clip.GetFilePath(), L"dir/a.mp4");
    EXPECT_EQ(clip.GetInPoint(), 1U);
    EXPECT_EQ(clip.GetStartTime(), 2U);
    EXPECT_EQ(clip.GetDuration(), 3U);
    EXPECT_EQ(clip.GetTrackID(), 4U);
    EXPECT_EQ(clip.GetDocumentID(), 5U);
}

TEST(CQMXBaseClip, EndTimeAndOutPointAreSums)
{
    CQMXBaseClip clip(QMXClipType_Base);
    clip.SetStartTime(10'000'000);
    clip.SetDuration(5'000'000);
    clip.SetInPoint(2'000'000);
    EXPECT_EQ(clip.GetEndTime(), 15'000'000U);
    EXPECT_EQ(clip.GetOutPoint(), 7'000'000U);
    clip.SetDuration(~0ULL);
    EXPECT_EQ(clip.GetEndTime(), 9'999'999U); // wraps around
}

/// A clip whose times come from elsewhere.
class CDerivedTimes : public CQMXBaseClip
{
public:
    CDerivedTimes() : CQMXBaseClip(QMXClipType_Base) {}
    std::uint64_t GetStartTime() override { return 100; }
    std::uint64_t GetInPoint() override { return 200; }
    std::uint64_t GetDuration() override { return 7; }
};

TEST(CQMXBaseClip, SumsAreMadeOfTheVirtualGetters)
{
    CDerivedTimes clip;
    EXPECT_EQ(clip.GetEndTime(), 107U);
    EXPECT_EQ(clip.GetOutPoint(), 207U);
}

TEST(CQMXBaseClip, DecoderKeyNamesPathDocumentAndTrack)
{
    CQMXBaseClip clip(QMXClipType_Video);
    clip.SetFilePath(L"a.mp4");
    EXPECT_EQ(clip.GetDecoderKey(), L"a.mp4_Document_0_Track_18446744073709551615");
    clip.SetDocumentID(140'000'000'000'000ULL);
    clip.SetTrackID(1'000'000);
    EXPECT_EQ(clip.GetDecoderKey(), L"a.mp4_Document_140000000000000_Track_1000000");
    clip.SetFilePath(L"");
    EXPECT_EQ(clip.GetDecoderKey(), L"_Document_140000000000000_Track_1000000");
}

TEST(CQMXBaseClip, CopyTakesTypePathAndTimesButNoIdentity)
{
    CQMXBaseClip source(QMXClipType_Audio);
    source.SetFilePath(L"a.mp3");
    source.SetStartTime(1);
    source.SetInPoint(2);
    source.SetDuration(3);
    source.SetTrackID(4);
    source.SetDocumentID(5);
    CQMXBaseClip copy(QMXClipType_Base);
    copy.CopyFrom(&source);
    EXPECT_EQ(copy.GetClipType(), QMXClipType_Audio);
    EXPECT_EQ(copy.GetFilePath(), L"a.mp3");
    EXPECT_EQ(copy.GetStartTime(), 1U);
    EXPECT_EQ(copy.GetInPoint(), 2U);
    EXPECT_EQ(copy.GetDuration(), 3U);
    EXPECT_EQ(copy.GetTrackID(), ~0ULL);
    EXPECT_EQ(copy.GetDocumentID(), 0U);
    copy.CopyFrom(nullptr);
    copy.CopyFrom(&copy);
    EXPECT_EQ(copy.GetFilePath(), L"a.mp3");
}

TEST(CQMXBaseClip, OpenKeepsTheRequestWithoutItsAudioParameters)
{
    COpenClip clip;
    EXPECT_TRUE(clip.Open(FullRequest()));
    const tagRenderProp& kept = clip.RenderCopy();
    EXPECT_EQ(kept.flags, 1U);
    EXPECT_EQ(kept.width, 2U);
    EXPECT_EQ(kept.height, 3U);
    EXPECT_EQ(kept.time, 4U);
    EXPECT_EQ(kept.auxValue, 5);
    EXPECT_EQ(kept.audioParams.sampleRate, 0U);
    EXPECT_EQ(kept.audioParams.startTime, 0U);
    EXPECT_EQ(kept.boxWidth, 8U);
    EXPECT_EQ(kept.boxHeight, 9U);
    EXPECT_EQ(kept.factorX, 10);
    EXPECT_EQ(kept.factorY, 11);
}

TEST(CQMXBaseClip, OpenAudioKeepsOnlyTheAudioParameters)
{
    COpenClip clip;
    EXPECT_TRUE(clip.OpenAudio(FullRequest()));
    EXPECT_EQ(clip.RenderCopy().audioParams.sampleRate, 6U);
    EXPECT_EQ(clip.RenderCopy().audioParams.startTime, 7U);
    EXPECT_EQ(clip.RenderCopy().width, 0U);
    EXPECT_EQ(clip.RenderCopy().factorX, 1.0);
    EXPECT_TRUE(clip.Open(FullRequest()));
    EXPECT_EQ(clip.RenderCopy().audioParams.startTime, 7U);
}

TEST(CQMXBaseClip, SilenceWithoutABlockAllocatesThirtyMilliseconds)
{
    CQMXBaseClip clip(QMXClipType_Base);
    std::uint8_t* block = nullptr;
    std::uint32_t size = 1;
    EXPECT_EQ(clip.ReadAudio(&block, &size), 5'760U);
    EXPECT_EQ(size, 5'760U);
    ASSERT_NE(block, nullptr);
    EXPECT_TRUE(std::all_of(block, block + size, [](std::uint8_t byte) { return byte == 0; }));
    std::free(block);
}

TEST(CQMXBaseClip, SilenceFillsExactlyTheCallersBytes)
{
    CQMXBaseClip clip(QMXClipType_Base);
    std::array<std::uint8_t, 102> bytes;
    bytes.fill(0xAA);
    std::uint8_t* block = bytes.data() + 1;
    std::uint32_t size = 100;
    EXPECT_EQ(clip.ReadAudio(&block, &size), 100U);
    EXPECT_EQ(size, 100U);
    EXPECT_EQ(block, bytes.data() + 1);
    EXPECT_TRUE(std::all_of(block, block + 100, [](std::uint8_t byte) { return byte == 0; }));
    EXPECT_EQ(bytes.front(), 0xAA);
    EXPECT_EQ(bytes.back(), 0xAA);
    size = 0;
    EXPECT_EQ(clip.ReadAudio(&block, &size), 0U);
}

TEST(CQMXBaseClip, SilenceNeedsABuffer)
{
    CQMXBaseClip clip(QMXClipType_Base);
    std::uint8_t* block = nullptr;
    std::uint32_t size = 100;
    EXPECT_EQ(clip.ReadAudio(nullptr, &size), 0U);
    EXPECT_EQ(size, 100U);
    EXPECT_EQ(clip.ReadAudio(&block, nullptr), 0U);
    EXPECT_EQ(block, nullptr);
}

TEST(CQMXBaseClip, AudioAtAnyTimeIsTheSameSilence)
{
    CQMXBaseClip clip(QMXClipType_Base);
    std::array<std::uint8_t, 8> bytes;
    bytes.fill(0xAA);
    std::uint8_t* block = bytes.data();
    std::uint32_t size = 8;
    EXPECT_EQ(clip.GetAudioAtTime(~0ULL, &block, &size), 8U);
    EXPECT_EQ(bytes[7], 0);
    EXPECT_EQ(clip.GetAudioData(&block, &size, 0), 0U);
}

TEST(CQMXBaseClip, OpenOnlyRequestOpensAndLeavesTheFlagAlone)
{
    CEventLog log;
    CSpyClip clip(log, "c");
    tagRenderProp request;
    request.flags = kRequestOpenOnly;
    bool flag = true;
    EXPECT_EQ(clip.GetFrame(request, 9, &flag), nullptr);
    EXPECT_TRUE(flag);
    EXPECT_EQ(request.time, 9U);
    EXPECT_EQ(clip.GetFrame(request, 10, nullptr), nullptr);
    EXPECT_EQ(log.Events(), std::vector<std::string>{"c:Open"}); // open already the second time
}

TEST(CQMXBaseClip, RequestWithoutFrameClosesTheClipAndWritesTheFlag)
{
    CQMXBaseClip base(QMXClipType_Base);
    tagRenderProp request;
    bool flag = true;
    EXPECT_EQ(base.GetFrame(request, 0, &flag), nullptr);
    EXPECT_FALSE(flag);

    CEventLog log;
    CSpyClip clip(log, "c");
    clip.m_bFlag = true;
    EXPECT_EQ(clip.GetFrame(request, 3, &flag), nullptr);
    EXPECT_TRUE(flag);
    EXPECT_EQ(log.Events(), (std::vector<std::string>{"c:Open", "c:GetVideoFrame 3", "c:Close"}));
    EXPECT_FALSE(clip.IsVideoOpened());
}

TEST(CQMXBaseClip, ResultOfOpenIsIgnored)
{
    CEventLog log;
    CSpyClip clip(log, "c");
    clip.m_bOpens = false;
    tagRenderProp request;
    EXPECT_EQ(clip.GetFrame(request, 3, nullptr), nullptr);
    EXPECT_EQ(log.Events(), (std::vector<std::string>{"c:Open", "c:GetVideoFrame 3", "c:Close"}));
}

/// Gives a picture, or makes one while it is closed.
class CLateClip : public CQMXBaseClip
{
public:
    CLateClip() : CQMXBaseClip(QMXClipType_Base) {}
    bool GetVideoFrame(std::uint64_t /*time*/, FrameResult* out) override
    {
        m_out = out;
        out->frame = m_atOnce;
        out->flag = true;
        return true;
    }
    bool Close() override
    {
        ++m_nClosed;
        m_out->frame = m_atClose;
        return true;
    }

    ISampleBuffer* m_atOnce = nullptr;
    ISampleBuffer* m_atClose = nullptr;
    int m_nClosed = 0;

private:
    FrameResult* m_out = nullptr;
};

TEST(CQMXBaseClip, FrameIsReturnedAndTheClipStaysOpen)
{
    CLateClip clip;
    clip.m_atOnce = reinterpret_cast<ISampleBuffer*>(&clip); // only passed on
    tagRenderProp request;
    bool flag = false;
    EXPECT_EQ(clip.GetFrame(request, 0, &flag), clip.m_atOnce);
    EXPECT_TRUE(flag);
    EXPECT_EQ(clip.m_nClosed, 0);
}

TEST(CQMXBaseClip, FrameIsReadAgainAfterTheClose)
{
    CLateClip clip;
    clip.m_atClose = reinterpret_cast<ISampleBuffer*>(&clip);
    tagRenderProp request;
    EXPECT_EQ(clip.GetFrame(request, 0, nullptr), clip.m_atClose);
    EXPECT_EQ(clip.m_nClosed, 1);
}

TEST(CQMXBaseClip, NullRequestIsRefused)
{
    CQMXBaseClip clip(QMXClipType_Base);
    bool flag = true;
    EXPECT_FALSE(clip.Open(NullReference<const tagRenderProp>()));
    EXPECT_FALSE(clip.OpenAudio(NullReference<const tagRenderProp>()));
    EXPECT_EQ(clip.GetFrame(NullReference<tagRenderProp>(), 0, &flag), nullptr);
    EXPECT_TRUE(flag);
}

TEST(CQMXBaseClip, ShortMemoryGivesEmptyTexts)
{
    CQMXBaseClip clip(QMXClipType_Base);
    clip.SetFilePath(std::wstring(200, L'a'));
    const CAllocationFailure failure;
    EXPECT_TRUE(clip.GetFilePath().empty());
    EXPECT_TRUE(clip.GetDecoderKey().empty());
}

TEST(IQMXBaseClipSlots, AreWhereTheBinaryInterfaceHasThem)
{
    EXPECT_EQ(SlotOf(&IQMXBaseClip::GetClipType), 1);
    EXPECT_EQ(SlotOf(&IQMXBaseClip::GetFilePath), 2);
    EXPECT_EQ(SlotOf(&IQMXBaseClip::SetFilePath), 3);
    EXPECT_EQ(SlotOf(&IQMXBaseClip::GetInPoint), 4);
    EXPECT_EQ(SlotOf(&IQMXBaseClip::GetOutPoint), 5);
    EXPECT_EQ(SlotOf(&IQMXBaseClip::SetInPoint), 6);
    EXPECT_EQ(SlotOf(&IQMXBaseClip::GetStartTime), 7);
    EXPECT_EQ(SlotOf(&IQMXBaseClip::SetStartTime), 8);
    EXPECT_EQ(SlotOf(&IQMXBaseClip::GetEndTime), 9);
    EXPECT_EQ(SlotOf(&IQMXBaseClip::GetDuration), 10);
    EXPECT_EQ(SlotOf(&IQMXBaseClip::SetDuration), 11);
    EXPECT_EQ(SlotOf(&IQMXBaseClip::GetTrackID), 12);
    EXPECT_EQ(SlotOf(&IQMXBaseClip::SetTrackID), 13);
    EXPECT_EQ(SlotOf(&IQMXBaseClip::SetDocumentID), 14);
    EXPECT_EQ(SlotOf(&IQMXBaseClip::GetDocumentID), 15);
    EXPECT_EQ(SlotOf(&IQMXBaseClip::CopyFrom), 16);
    EXPECT_EQ(SlotOf(&IQMXBaseClip::Open), 17);
    EXPECT_EQ(SlotOf(&IQMXBaseClip::GetVideoFrame), 18);
    EXPECT_EQ(SlotOf(&IQMXBaseClip::Close), 19);
    EXPECT_EQ(SlotOf(&IQMXBaseClip::OpenAudio), 20);
    EXPECT_EQ(SlotOf(&IQMXBaseClip::GetAudioAtTime), 21);
    EXPECT_EQ(SlotOf(&IQMXBaseClip::ReadAudio), 22);
    EXPECT_EQ(SlotOf(&IQMXBaseClip::ResetAudio), 23);
    EXPECT_EQ(SlotOf(&IQMXBaseClip::IsAudioOpened), 24);
    EXPECT_EQ(SlotOf(&IQMXBaseClip::IsVideoOpened), 25);
    EXPECT_EQ(SlotOf(&IQMXBaseClip::GetLastFrame), 26);
    EXPECT_EQ(SlotOf(&IQMXBaseClip::SetAttachment), 27);
    EXPECT_EQ(SlotOf(&IQMXBaseClip::GetAudioData), 28);
    EXPECT_EQ(SlotOf(&IQMXBaseClip::GetFrame), 29);
    EXPECT_EQ(SlotOf(&IQMXBaseClip::GetDecoderKey), 30);
}
} // namespace
