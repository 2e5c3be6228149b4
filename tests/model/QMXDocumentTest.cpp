#include "engine/model/QMXDocument.h"

#include "tests/model/AllocationFailure.h"
#include "tests/model/SlotOf.h"
#include "tests/model/SpyClip.h"

#include <gtest/gtest.h>

#include <memory>

namespace
{
/// Keeps what it is given, so that a test sees the hand-over.
class CHeldGarbage : public IQMXCleaner
{
public:
    CHeldGarbage() { items.reserve(10); } // takes no memory later
    ~CHeldGarbage() override
    {
        for (QMXTrackList* const item : items)
        {
            for (IQMXTrack* const track : *item)
                delete track;
            delete item;
        }
    }
    void AddGarbage(QMXTrackList* item) override { items.push_back(item); }

    std::vector<QMXTrackList*> items;
};

class CQMXDocumentTest : public testing::Test
{
protected:
    IQMXTrack* Append(std::uint64_t id)
    {
        IQMXTrack* const track = CreateQMXTrack(id, QMXTrackType{}, 0, tagPIPPOSITION{});
        EXPECT_TRUE(document->AddTrack(track));
        return track;
    }
    static CSpyClip* AppendClip(IQMXTrack* track, CEventLog& log, const char* name, const wchar_t* path = L"")
    {
        auto clip = std::make_unique<CSpyClip>(log, name);
        clip->SetFilePath(path);
        EXPECT_TRUE(track->AddClip(clip.get()));
        return clip.release();
    }

    CEventLog log;
    CHeldGarbage cleaner;
    std::unique_ptr<IQMXDocument> document{CreateQMXDocument(&cleaner)};
};

TEST_F(CQMXDocumentTest, IdIsItsAddressAndDiffersBetweenLiveDocuments)
{
    const std::unique_ptr<IQMXDocument> other(CreateQMXDocument(nullptr));
    EXPECT_EQ(document->GetDocumentID(), reinterpret_cast<std::uintptr_t>(document.get()));
    EXPECT_NE(document->GetDocumentID(), other->GetDocumentID());
}

TEST_F(CQMXDocumentTest, AddedTrackReportsTheDocumentsId)
{
    EXPECT_EQ(Append(1)->GetDocumentID(), document->GetDocumentID());
}

TEST_F(CQMXDocumentTest, NullIsNotAdded)
{
    EXPECT_FALSE(document->AddTrack(nullptr));
    EXPECT_EQ(document->GetTrackCount(), 0);
}

TEST_F(CQMXDocumentTest, WithoutListItTakesTracksAgainOnlyAfterANewOne)
{
    Append(1);
    document->RemoveAllTracks(false);
    EXPECT_EQ(document->GetTrackCount(), 0);
    EXPECT_EQ(document->GetTrack(0), nullptr);
    EXPECT_EQ(document->GetTrackByID(1), nullptr);
    document->CloseAllClips();
    document->RemoveTrack(nullptr);
    EXPECT_EQ(document->RemoveClipByPath(L"a", 1), 0);

    const std::unique_ptr<IQMXTrack> track(CreateQMXTrack(2, QMXTrackType{}, 0, tagPIPPOSITION{}));
    EXPECT_FALSE(document->AddTrack(track.get()));
    document->RemoveTrack(track.get());
    document->RemoveAllTracks(true);
    EXPECT_EQ(document->GetTrackCount(), 0);
    Append(3);
    EXPECT_EQ(document->GetTrackCount(), 1);
}

TEST_F(CQMXDocumentTest, RemovingAllTracksHandsTheWholeListToTheCleaner)
{
    IQMXTrack* const a = Append(1);
    IQMXTrack* const b = Append(2);
    document->RemoveAllTracks(true);
    ASSERT_EQ(cleaner.items.size(), 1U);
    EXPECT_EQ(*cleaner.items[0], (QMXTrackList{a, b}));
    IQMXTrack* const c = Append(3);
    document.reset();
    ASSERT_EQ(cleaner.items.size(), 2U);
    EXPECT_EQ(*cleaner.items[1], QMXTrackList{c});
}

TEST_F(CQMXDocumentTest, WithoutListNothingGoesToTheCleaner)
{
    document->RemoveAllTracks(false);
    ASSERT_EQ(cleaner.items.size(), 1U);
    document->RemoveAllTracks(false);
    document.reset();
    EXPECT_EQ(cleaner.items.size(), 1U);
}

TEST_F(CQMXDocumentTest, FirstTrackOfAnIdIsFound)
{
    Append(5);
    IQMXTrack* const first = Append(6);
    Append(6);
    EXPECT_EQ(document->GetTrackByID(6), first);
    EXPECT_EQ(document->GetTrackByID(7), nullptr);
}

TEST_F(CQMXDocumentTest, IndexOutOfRangeGivesNull)
{
    IQMXTrack* const track = Append(5);
    EXPECT_EQ(document->GetTrack(-1), nullptr);
    EXPECT_EQ(document->GetTrack(0), track);
    EXPECT_EQ(document->GetTrack(document->GetTrackCount()), nullptr);
}

TEST_F(CQMXDocumentTest, DestructionWithoutCleanerDeletesNoTrack)
{
    CSpyTrack track(log, "track"); // on the stack: a delete of it would not go unnoticed
    {
        const std::unique_ptr<IQMXDocument> alone(CreateQMXDocument(nullptr));
        EXPECT_TRUE(alone->AddTrack(&track));
        alone->RemoveAllTracks(true);
        EXPECT_TRUE(alone->AddTrack(&track));
    }
    EXPECT_TRUE(log.Events().empty());
}

TEST_F(CQMXDocumentTest, RemovedTrackIsHandedBackAlive)
{
    IQMXTrack* const a = Append(1);
    IQMXTrack* const b = Append(2);
    IQMXTrack* const c = Append(3);
    document->RemoveTrack(b);
    const std::unique_ptr<IQMXTrack> owned(b);
    ASSERT_EQ(document->GetTrackCount(), 2);
    EXPECT_EQ(document->GetTrack(0), a);
    EXPECT_EQ(document->GetTrack(1), c);
    document->RemoveTrack(b);
    document->RemoveTrack(nullptr);
    EXPECT_EQ(document->GetTrackCount(), 2);
}

TEST_F(CQMXDocumentTest, OnlyTheFirstOfTwoEqualEntriesIsRemoved)
{
    IQMXTrack* const track = Append(1);
    EXPECT_TRUE(document->AddTrack(track));
    document->RemoveTrack(track);
    EXPECT_EQ(document->GetTrackCount(), 1);
}

/// A track whose clip list has holes.
class CHollowTrack : public CQMXTrack
{
public:
    using CQMXTrack::CQMXTrack;
    int GetClipCount() override { return CQMXTrack::GetClipCount() + 2; }
    IQMXBaseClip* GetClip(int index) override
    {
        return index == 0 || index == GetClipCount() - 1 ? nullptr : CQMXTrack::GetClip(index - 1);
    }
};

TEST_F(CQMXDocumentTest, ClosingAllClipsSkipsNullEntries)
{
    auto hollow = std::make_unique<CHollowTrack>(1, QMXTrackType{}, 0, tagPIPPOSITION{});
    AppendClip(hollow.get(), log, "A");
    AppendClip(hollow.get(), log, "B");
    EXPECT_TRUE(document->AddTrack(hollow.release()));
    AppendClip(Append(2), log, "C");
    document->CloseAllClips();
    EXPECT_EQ(log.Events(), (std::vector<std::string>{"A:Close", "B:Close", "C:Close"}));
}

/// A clip that takes itself off its track when it is closed.
class CLeavingClip : public CSpyClip
{
public:
    CLeavingClip(CEventLog& log, std::string name, IQMXTrack& track) : CSpyClip(log, std::move(name)), m_track(track) {}
    bool Close() override
    {
        m_track.RemoveClip(this);
        return CSpyClip::Close();
    }

private:
    IQMXTrack& m_track;
};

TEST_F(CQMXDocumentTest, ClipCountIsReadAgainAfterEachClip)
{
    IQMXTrack* const track = Append(1);
    AppendClip(track, log, "A");
    CLeavingClip leaving(log, "L", *track);
    EXPECT_TRUE(track->AddClip(&leaving));
    document->CloseAllClips();
    EXPECT_EQ(log.Events(), (std::vector<std::string>{"A:Close", "L:Close"}));
}

TEST_F(CQMXDocumentTest, RemovingAClipByPathTouchesOnlyTheNamedTrack)
{
    AppendClip(Append(1), log, "A", L"x.mp4");
    IQMXTrack* const second = Append(2);
    AppendClip(second, log, "B", L"x.mp4");
    AppendClip(second, log, "C", L"x.mp4");
    EXPECT_EQ(document->RemoveClipByPath(L"x.mp4", 3), 0);
    EXPECT_TRUE(log.Events().empty());
    EXPECT_EQ(document->RemoveClipByPath(L"x.mp4", 2), 0);
    EXPECT_EQ(log.Events(), std::vector<std::string>{"B:deleted"});
}

TEST_F(CQMXDocumentTest, ShortMemoryGivesNullFalseOrNoList)
{
    {
        const CAllocationFailure failure;
        EXPECT_EQ(CreateQMXDocument(nullptr), nullptr);
    }
    const std::unique_ptr<IQMXTrack> track(CreateQMXTrack(1, QMXTrackType{}, 0, tagPIPPOSITION{}));
    std::unique_ptr<IQMXDocument> listless;
    {
        const CAllocationFailure failure(1); // the document, but not its list
        listless.reset(CreateQMXDocument(nullptr));
        EXPECT_FALSE(document->AddTrack(track.get()));
        document->RemoveAllTracks(true);
    }
    ASSERT_NE(listless, nullptr);
    EXPECT_FALSE(listless->AddTrack(track.get()));
    EXPECT_FALSE(document->AddTrack(track.get()));
    EXPECT_EQ(document->GetTrackCount(), 0);
}

TEST(IQMXDocumentSlots, AreWhereTheBinaryInterfaceHasThem)
{
    EXPECT_EQ(SlotOf(&IQMXDocument::RemoveAllTracks), 1);
    EXPECT_EQ(SlotOf(&IQMXDocument::GetTrackCount), 2);
    EXPECT_EQ(SlotOf(&IQMXDocument::GetTrack), 3);
    EXPECT_EQ(SlotOf(&IQMXDocument::GetTrackByID), 4);
    EXPECT_EQ(SlotOf(&IQMXDocument::AddTrack), 5);
    EXPECT_EQ(SlotOf(&IQMXDocument::GetDocumentID), 6);
    EXPECT_EQ(SlotOf(&IQMXDocument::RemoveTrack), 7);
    EXPECT_EQ(SlotOf(&IQMXDocument::CloseAllClips), 8);
    EXPECT_EQ(SlotOf(&IQMXDocument::RemoveClipByPath), 9);
    EXPECT_EQ(SlotOf(&IQMXCleaner::AddGarbage), 1);
}
} // namespace
