#include "host/compose/ClipPlayer.h"

#include "host/project/FrameRate.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace qmx::host
{
namespace
{
/// A picture that knows its number.
class FakePicture final : public ISampleBuffer
{
public:
    explicit FakePicture(std::uint64_t number) : m_number(number) {}
    std::uint64_t Number() const { return m_number; }

    bool GetBuffer(std::uint8_t**, std::uint32_t*) override { return false; }
    std::uint32_t GetStride() override { return 0; }
    std::uint32_t GetFlag() override { return 0; }
    void Reserved4() override {}
    void Reserved5() override {}
    void Reserved6() override {}
    void Reserved7() override {}
    void Reserved8() override {}
    void Reserved9() override {}
    void Reserved10() override {}
    std::uint32_t GetWidth() override { return 0; }
    std::uint32_t GetHeight() override { return 0; }
    std::uint32_t GetRatioX() override { return 0; }
    std::uint32_t GetRatioY() override { return 0; }
    void SetRatioX(std::uint32_t) override {}
    void SetRatioY(std::uint32_t) override {}
    void SetSize(std::uint32_t, std::uint32_t) override {}
    void Reserved18() override {}
    std::uint32_t GetFormat() override { return kSampleFormatBgra; }
    void Reserved20() override {}
    bool CopyFrom(ISampleBuffer*) override { return false; }
    std::uint32_t AddRef() override { return ++m_references; }
    std::uint32_t Release() override
    {
        const std::uint32_t left = --m_references;
        if (left == 0)
            delete this;
        return left;
    }
    void SetAlphaFlag(bool) override {}
    bool GetAlphaFlag() override { return false; }

private:
    ~FakePicture() override = default;
    std::uint64_t m_number;
    std::uint32_t m_references = 1;
};

/// One video clip over a source with a given number of frames, which answers as the engine's decoder does: past the
/// end comes the picture returned before, flagged, and the same time asked again comes without the flag.
class FakeClip final : public CQMXBaseClip
{
public:
    FakeClip(std::uint64_t frames, double rate, std::uint64_t start, std::uint64_t inPoint)
        : CQMXBaseClip(QMXClipType_Video), m_frames(frames), m_frameDuration(static_cast<std::uint64_t>(1e7 / rate))
    {
        SetStartTime(start);
        SetInPoint(inPoint);
    }

    ISampleBuffer* GetFrame(tagRenderProp& request, std::uint64_t time, bool* pFlag) override
    {
        EXPECT_EQ(request.flags, kRequestUseCache);
        EXPECT_EQ(request.width, 320U);
        const std::uint64_t frame = (GetInPoint() + time - GetStartTime()) / m_frameDuration;
        *pFlag = false;
        ++asked;
        if (frame == m_lastAsked && m_pLast)
            return SampleBufferPtr(m_pLast).Detach();
        ++decoded;
        m_lastAsked = frame;
        if (frame < m_frames)
            m_pLast = SampleBufferPtr::Adopt(new FakePicture(frame));
        else
            *pFlag = true;
        return SampleBufferPtr(m_pLast).Detach();
    }

    int asked = 0;
    int decoded = 0;

private:
    std::uint64_t m_frames;
    std::uint64_t m_frameDuration;
    std::uint64_t m_lastAsked = ~std::uint64_t{0};
    SampleBufferPtr m_pLast;
};

ClipPlayer::Source SourceOf(const char* pRate, std::uint64_t duration)
{
    return {FrameRate::Parse(pRate).value().PerSecond(), duration};
}

std::uint64_t NumberOf(const SampleBufferPtr& pPicture)
{
    return pPicture ? static_cast<FakePicture*>(pPicture.Get())->Number() : ~std::uint64_t{0};
}

TEST(ClipPlayer, ShowsTheFrameThatIsOnScreen)
{
    FakeClip clip(300, 30, 20'000'000, 5'000'000);
    ClipPlayer player(clip, 320, 180, SourceOf("30", 100'000'000));
    EXPECT_EQ(NumberOf(player.PictureAt(20'000'000)), 15U);
    EXPECT_EQ(NumberOf(player.PictureAt(20'333'333)), 16U);
    EXPECT_EQ(NumberOf(player.PictureAt(21'000'000)), 18U);
    EXPECT_EQ(clip.asked, 3);
}

TEST(ClipPlayer, HoldsTheLastPictureWhenTheSourceEndsFirst)
{
    FakeClip clip(10, 30, 0, 0);
    ClipPlayer player(clip, 320, 180, SourceOf("30", 3'333'333));
    const FrameRate thirty = FrameRate::Parse("30").value();
    for (std::uint64_t frame = 0; frame < 200; ++frame)
        ASSERT_EQ(NumberOf(player.PictureAt(thirty.TimeOfFrame(frame))), std::min<std::uint64_t>(frame, 9));
    EXPECT_LE(clip.decoded, 12); // ten pictures, the first one beyond, the last again at most
}

TEST(ClipPlayer, ATimeBeyondTheEndShowsTheLastPictureAlsoWhenAskedFirst)
{
    for (const std::uint64_t frames : {1U, 2U, 3U, 10U, 299U, 300U, 5000U})
    {
        const std::uint64_t length = FrameRate::Parse("30").value().TimeOfFrame(frames);
        // What the container says may be right, missing, too short or far too long.
        for (const std::uint64_t stated : {length, std::uint64_t{0}, length / 2, length * 7, length + 100})
        {
            FakeClip clip(frames, 30, 0, 0);
            ClipPlayer player(clip, 320, 180, SourceOf("30", stated));
            EXPECT_EQ(NumberOf(player.PictureAt(length * 20)), frames - 1) << frames << " stated " << stated;
            EXPECT_EQ(NumberOf(player.PictureAt(length * 20 + 333'333)), frames - 1);
            EXPECT_EQ(NumberOf(player.PictureAt(0)), 0U);
            EXPECT_LE(clip.decoded, 51); // down, up and halving: 3 times the 17 doublings that make 100,000
        }
    }
}

TEST(ClipPlayer, ATruthfulContainerMakesTheSearchShort)
{
    FakeClip clip(300, 30000.0 / 1001, 0, 0);
    ClipPlayer player(clip, 320, 180, SourceOf("30000/1001", 100'100'000));
    EXPECT_EQ(NumberOf(player.PictureAt(2'000'000'000)), 299U);
    EXPECT_LE(clip.decoded, 4);
}

TEST(ClipPlayer, AnInPointBehindTheEndShowsTheLastPicture)
{
    FakeClip clip(10, 25, 50'000'000, 900'000'000);
    ClipPlayer player(clip, 320, 180, SourceOf("25", 4'000'000));
    EXPECT_EQ(NumberOf(player.PictureAt(50'000'000)), 9U);
    EXPECT_EQ(NumberOf(player.PictureAt(60'000'000)), 9U);
}

TEST(ClipPlayer, JumpsBackwardsShowTheirOwnFrames)
{
    FakeClip clip(100, 25, 0, 0);
    ClipPlayer player(clip, 320, 180, SourceOf("25", 40'000'000));
    EXPECT_EQ(NumberOf(player.PictureAt(36'000'000)), 90U);
    EXPECT_EQ(NumberOf(player.PictureAt(4'000'000)), 10U);
    EXPECT_EQ(NumberOf(player.PictureAt(80'000'000)), 99U);
    EXPECT_EQ(NumberOf(player.PictureAt(4'400'000)), 11U);
    EXPECT_EQ(NumberOf(player.PictureAt(39'600'000)), 99U);
}

TEST(ClipPlayer, ASourceWithoutPicturesGivesNone)
{
    FakeClip clip(0, 25, 0, 0);
    ClipPlayer player(clip, 320, 180, SourceOf("25", 40'000'000));
    EXPECT_FALSE(player.PictureAt(0));
    EXPECT_FALSE(player.PictureAt(400'000));
}

TEST(ClipPlayer, ClipsWithoutASourceAreAskedAsTheyAre)
{
    FakeClip clip(5, 10, 0, 0);
    ClipPlayer player(clip, 320, 180);
    EXPECT_EQ(NumberOf(player.PictureAt(4'000'000)), 4U);
    EXPECT_EQ(NumberOf(player.PictureAt(9'000'000)), 4U); // flagged, and handed on
    EXPECT_EQ(clip.asked, 2);
}
} // namespace
} // namespace qmx::host
