#include "engine/model/QMXTrack.h"

#include "tests/model/AllocationFailure.h"
#include "tests/model/SlotOf.h"
#include "tests/model/SpyClip.h"

#include <gtest/gtest.h>

#include <memory>

namespace
{
constexpr tagPIPPOSITION kPosition{0.25, 0.5, 0.125, 1.0};

/// A track and the clips on it.
class CQMXTrackTest : public testing::Test
{
protected:
    CSpyClip* Append(std::uint64_t start, std::uint64_t end, const wchar_t* path = L"")
    {
        auto clip = std::make_unique<CSpyClip>(log, std::string(1, static_cast<char>('A' + m_nClips++)));
        clip->SetStartTime(start);
        clip->SetDuration(end - start);
        clip->SetFilePath(path);
        EXPECT_TRUE(track->AddClip(clip.get()));
        return clip.release();
    }

    CEventLog log;
    std::unique_ptr<IQMXTrack> track{CreateQMXTrack(7, QMXTrackType{3}, 11, kPosition)};

private:
    int m_nClips = 0;
};

TEST_F(CQMXTrackTest, KeepsWhatItWasCreatedWith)
{
    EXPECT_EQ(track->GetTrackID(), 7U);
    EXPECT_EQ(track->GetTrackType(), QMXTrackType{3});
    EXPECT_EQ(track->GetDocumentID(), 11U);
    EXPECT_EQ(track->GetPIPPosition().left, 0.25);
    EXPECT_EQ(track->GetPIPPosition().height, 1.0);
    EXPECT_EQ(track->GetTrackFlags(), 0U);
    EXPECT_EQ(track->GetClipCount(), 0);
}

TEST_F(CQMXTrackTest, StoresAndReturnsWhatTheHostSets)
{
    track->SetTrackType(QMXTrackType{0xFFFFFFFFU});
    track->SetTrackFlags(0x80000001U);
    track->SetTrackID(~0ULL);
    track->SetDocumentID(5);
    track->SetPIPPosition({1, 2, 3, 4});
    EXPECT_EQ(track->GetTrackType(), QMXTrackType{0xFFFFFFFFU});
    EXPECT_EQ(track->GetTrackFlags(), 0x80000001U);
    EXPECT_EQ(track->GetTrackID(), ~0ULL);
    EXPECT_EQ(track->GetDocumentID(), 5U);
    const tagPIPPOSITION position = track->GetPIPPosition();
    EXPECT_EQ(position.left, 1);
    EXPECT_EQ(position.top, 2);
    EXPECT_EQ(position.width, 3);
    EXPECT_EQ(position.height, 4);
}

TEST_F(CQMXTrackTest, TrackIDIsAReferenceToTheOneId)
{
    const std::uint64_t& id = track->GetTrackID();
    track->SetTrackID(99);
    EXPECT_EQ(id, 99U);
}

TEST_F(CQMXTrackTest, EmptyTrackHasNoClipAtAnyTime)
{
    EXPECT_EQ(track->GetClipAtTime(0, false), nullptr);
    EXPECT_EQ(track->GetClipAtTime(0, true), nullptr);
    EXPECT_EQ(track->GetClipAtTime(~0ULL, true), nullptr);
}

TEST_F(CQMXTrackTest, BoundaryBelongsToTheLaterClipUnlessTheEndIsInclusive)
{
    CSpyClip* const a = Append(0, 10'000'000);
    CSpyClip* const b = Append(10'000'000, 20'000'000);
    EXPECT_EQ(track->GetClipAtTime(10'000'000, false), b);
    EXPECT_EQ(track->GetClipAtTime(10'000'000, true), a);
    EXPECT_EQ(track->GetClipAtTime(9'999'999, false), a);
    EXPECT_EQ(track->GetClipAtTime(10'000'001, true), b);
    EXPECT_EQ(track->GetClipAtTime(0, false), a);
    EXPECT_EQ(track->GetClipAtTime(20'000'000, false), nullptr);
    EXPECT_EQ(track->GetClipAtTime(20'000'000, true), b);
    EXPECT_EQ(track->GetClipAtTime(20'000'001, true), nullptr);
}

TEST_F(CQMXTrackTest, GapHoldsNoClip)
{
    Append(100, 200);
    Append(300, 400);
    EXPECT_EQ(track->GetClipAtTime(250, false), nullptr);
    EXPECT_EQ(track->GetClipAtTime(250, true), nullptr);
}

TEST_F(CQMXTrackTest, TimeBeforeTheFirstClipEndsTheSearchAtOnce)
{
    Append(100, 200);
    CSpyClip* const later = Append(300, 400);
    EXPECT_EQ(track->GetClipAtTime(99, false), nullptr);
    EXPECT_EQ(later->m_nAskedForStart, 0);
}

TEST_F(CQMXTrackTest, ClipPlacedAfterALaterStartingOneIsNotFound)
{
    CSpyClip* const late = Append(1'000, 2'000);
    CSpyClip* const early = Append(0, 500);
    EXPECT_EQ(track->GetClipAtTime(100, false), nullptr);
    EXPECT_EQ(track->GetClipAtTime(1'500, false), late);
    EXPECT_EQ(track->GetClip(1), early);
}

TEST_F(CQMXTrackTest, IndexOutOfRangeGivesNull)
{
    CSpyClip* const a = Append(0, 1);
    CSpyClip* const b = Append(1, 2);
    EXPECT_EQ(track->GetClip(-1), nullptr);
    EXPECT_EQ(track->GetClip(0), a);
    EXPECT_EQ(track->GetClip(1), b);
    EXPECT_EQ(track->GetClip(track->GetClipCount()), nullptr);
}

TEST_F(CQMXTrackTest, AddedClipCarriesTheDocumentIdButNoTrackId)
{
    CSpyClip* const clip = Append(0, 1);
    EXPECT_EQ(clip->GetDocumentID(), 11U);
    EXPECT_EQ(clip->GetTrackID(), ~0ULL);
}

TEST_F(CQMXTrackTest, NullIsNotAdded)
{
    EXPECT_FALSE(track->AddClip(nullptr));
    EXPECT_EQ(track->GetClipCount(), 0);
}

TEST_F(CQMXTrackTest, PathThatDiffersInCaseOrLengthRemovesNothing)
{
    Append(0, 1, L"Clip.mp4");
    EXPECT_EQ(track->RemoveClipByPath(L"clip.mp4"), 0);
    EXPECT_EQ(track->RemoveClipByPath(L"Clip.mp"), 0);
    EXPECT_EQ(track->RemoveClipByPath(L""), 0);
    EXPECT_EQ(track->GetClipCount(), 1);
    EXPECT_TRUE(log.Events().empty());
}

TEST_F(CQMXTrackTest, RemovingByPathDeletesOnlyTheFirstMatch)
{
    CSpyClip* const a = Append(0, 1, L"other.mp4");
    Append(1, 2, L"clip.mp4");
    CSpyClip* const c = Append(2, 3, L"clip.mp4");
    EXPECT_EQ(track->RemoveClipByPath(L"clip.mp4"), 0);
    EXPECT_EQ(log.Events(), std::vector<std::string>{"B:deleted"});
    ASSERT_EQ(track->GetClipCount(), 2);
    EXPECT_EQ(track->GetClip(0), a);
    EXPECT_EQ(track->GetClip(1), c);
}

TEST_F(CQMXTrackTest, RemovingAClipHandsItBackAlive)
{
    CSpyClip* const a = Append(0, 1);
    CSpyClip* const b = Append(1, 2);
    CSpyClip* const c = Append(2, 3);
    track->RemoveClip(b);
    const std::unique_ptr<CSpyClip> owned(b);
    EXPECT_TRUE(log.Events().empty());
    ASSERT_EQ(track->GetClipCount(), 2);
    EXPECT_EQ(track->GetClip(0), a);
    EXPECT_EQ(track->GetClip(1), c);
}

TEST_F(CQMXTrackTest, RemovingAClipThatIsNotThereChangesNothing)
{
    Append(0, 1);
    CSpyClip stranger(log, "stranger");
    track->RemoveClip(&stranger);
    track->RemoveClip(nullptr);
    EXPECT_EQ(track->GetClipCount(), 1);
    EXPECT_TRUE(log.Events().empty());
}

TEST_F(CQMXTrackTest, RemovingAllClipsDeletesThemInOrder)
{
    Append(0, 1);
    Append(1, 2);
    track->RemoveAllClips();
    EXPECT_EQ(track->GetClipCount(), 0);
    EXPECT_EQ(log.Events(), (std::vector<std::string>{"A:deleted", "B:deleted"}));
    track.reset();
    EXPECT_EQ(log.Events().size(), 2U);
}

TEST_F(CQMXTrackTest, DestructionDeletesTheClips)
{
    Append(0, 1);
    Append(1, 2);
    track.reset();
    EXPECT_EQ(log.Events(), (std::vector<std::string>{"A:deleted", "B:deleted"}));
}

TEST_F(CQMXTrackTest, FrameAtTimeComesFromTheClipThatCoversIt)
{
    Append(0, 100);
    Append(100, 200);
    tagRenderProp request;
    EXPECT_EQ(track->GetFrameAtTime(request, 100, nullptr), nullptr);
    EXPECT_EQ(request.time, 100U);
    EXPECT_EQ(log.Events(), (std::vector<std::string>{"B:Open", "B:GetVideoFrame 100", "B:Close"}));
}

TEST_F(CQMXTrackTest, FrameAtATimeWithoutClipLeavesRequestAndFlagAlone)
{
    Append(0, 100);
    tagRenderProp request;
    request.time = 77;
    bool flag = true;
    EXPECT_EQ(track->GetFrameAtTime(request, 100, &flag), nullptr);
    EXPECT_EQ(request.time, 77U);
    EXPECT_TRUE(flag);
    EXPECT_TRUE(log.Events().empty());
}

TEST_F(CQMXTrackTest, FrameByIndexAsksThatClipWhateverTheTime)
{
    Append(0, 100);
    Append(100, 200)->m_bFlag = true;
    tagRenderProp request;
    bool flag = false;
    EXPECT_EQ(track->GetFrameByIndex(request, 1, 5, &flag), nullptr);
    EXPECT_TRUE(flag);
    EXPECT_EQ(log.Events(), (std::vector<std::string>{"B:Open", "B:GetVideoFrame 5", "B:Close"}));
    EXPECT_EQ(track->GetFrameByIndex(request, 2, 5, &flag), nullptr);
    EXPECT_EQ(track->GetFrameByIndex(request, -1, 5, &flag), nullptr);
    EXPECT_EQ(log.Events().size(), 3U);
}

TEST_F(CQMXTrackTest, ShortMemoryGivesNullOrFalse)
{
    auto clip = std::make_unique<CSpyClip>(log, "clip");
    {
        const CAllocationFailure failure;
        EXPECT_EQ(CreateQMXTrack(1, QMXTrackType{}, 2, kPosition), nullptr);
        EXPECT_FALSE(track->AddClip(clip.get()));
    }
    EXPECT_EQ(track->GetClipCount(), 0);
}

TEST(IQMXTrackSlots, AreWhereTheBinaryInterfaceHasThem)
{
    EXPECT_EQ(SlotOf(&IQMXTrack::RemoveAllClips), 1);
    EXPECT_EQ(SlotOf(&IQMXTrack::SetTrackType), 2);
    EXPECT_EQ(SlotOf(&IQMXTrack::GetTrackType), 3);
    EXPECT_EQ(SlotOf(&IQMXTrack::SetPIPPosition), 4);
    EXPECT_EQ(SlotOf(&IQMXTrack::SetDocumentID), 5);
    EXPECT_EQ(SlotOf(&IQMXTrack::GetDocumentID), 6);
    EXPECT_EQ(SlotOf(&IQMXTrack::GetPIPPosition), 7);
    EXPECT_EQ(SlotOf(&IQMXTrack::SetTrackID), 8);
    EXPECT_EQ(SlotOf(&IQMXTrack::GetTrackID), 9);
    EXPECT_EQ(SlotOf(&IQMXTrack::GetClipAtTime), 10);
    EXPECT_EQ(SlotOf(&IQMXTrack::AddClip), 11);
    EXPECT_EQ(SlotOf(&IQMXTrack::RemoveClip), 12);
    EXPECT_EQ(SlotOf(&IQMXTrack::GetClip), 13);
    EXPECT_EQ(SlotOf(&IQMXTrack::GetClipCount), 14);
    EXPECT_EQ(SlotOf(&IQMXTrack::RemoveClipByPath), 15);
    EXPECT_EQ(SlotOf(&IQMXTrack::SetTrackFlags), 16);
    EXPECT_EQ(SlotOf(&IQMXTrack::GetTrackFlags), 17);
    EXPECT_EQ(SlotOf(&IQMXTrack::GetFrameAtTime), 18);
    EXPECT_EQ(SlotOf(&IQMXTrack::GetFrameByIndex), 19);
}
} // namespace
