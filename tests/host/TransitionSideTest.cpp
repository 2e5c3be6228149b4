#include "host/compose/TransitionSide.h"

#include <gtest/gtest.h>

#include <vector>

namespace qmx::host
{
namespace
{
struct Journal
{
    std::vector<std::uint64_t> asked; ///< times
    int closed = 0;
    bool hasPictures = true;
};

/// A clip of 2 x 2 pixels that writes down what it is asked for.
class FakeClip final : public CQMXBaseClip
{
public:
    explicit FakeClip(Journal& journal) : CQMXBaseClip(QMXClipType_Image), m_journal(journal)
    {
        SetStartTime(100);
        SetDuration(50);
        SetFilePath(L"a.png");
        SetTrackID(3);
    }
    bool GetVideoFrame(std::uint64_t time, FrameResult* out) override
    {
        m_journal.asked.push_back(time);
        if (m_journal.hasPictures)
            out->frame = CreateSampleBuffer(kSampleFormatBgra, 2, 2, 0);
        return true;
    }
    bool Close() override
    {
        ++m_journal.closed;
        return true;
    }

private:
    Journal& m_journal;
};

TransitionSide MakeSide(Journal& journal)
{
    auto pClip = std::make_unique<FakeClip>(journal);
    ClipPlayer player(*pClip, 2, 2);
    return {std::move(pClip), player, 4, 3};
}

TEST(TransitionSide, StandsStillOutsideItsSpan)
{
    Journal journal;
    TransitionSide side = MakeSide(journal);
    EXPECT_EQ(side.GetStartTime(), 100U);
    EXPECT_EQ(side.GetEndTime(), 150U);
    for (const std::uint64_t time : {0U, 100U, 120U, 150U, 151U})
    {
        FrameResult result;
        EXPECT_TRUE(side.GetVideoFrame(time, &result));
        const SampleBufferPtr pPicture = SampleBufferPtr::Adopt(result.frame);
        ASSERT_TRUE(pPicture);
        EXPECT_EQ(pPicture->GetWidth(), 4U); // as large as the track's box
        EXPECT_EQ(pPicture->GetHeight(), 3U);
    }
    EXPECT_EQ(journal.asked, (std::vector<std::uint64_t>{100, 100, 120, 150, 150}));
}

TEST(TransitionSide, AClipWithoutPicturesHasNone)
{
    Journal journal;
    journal.hasPictures = false;
    TransitionSide side = MakeSide(journal);
    FrameResult result;
    EXPECT_FALSE(side.GetVideoFrame(100, &result));
    EXPECT_EQ(result.frame, nullptr);
}

TEST(TransitionSide, IsClosedWithItsClipAndSharesItsDecoder)
{
    Journal journal;
    TransitionSide side = MakeSide(journal);
    side.Close();
    EXPECT_EQ(journal.closed, 1);
    EXPECT_EQ(side.GetDecoderKey(), L"a.png_Document_0_Track_3");
}
} // namespace
} // namespace qmx::host
