#include "engine/model/QMXCleaner.h"

#include "engine/model/IQMXDocument.h"
#include "tests/model/AllocationFailure.h"
#include "tests/model/SpyClip.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace
{
class CQMXCleanerTest : public testing::Test
{
protected:
    CSpyTrack* Track(const char* name) { return new CSpyTrack(log, name); }

    CEventLog log;
    std::unique_ptr<IQMXCleaner> cleaner{CreateQMXCleaner()};
};

TEST_F(CQMXCleanerTest, DestructionReturnsOnlyWhenEverythingQueuedIsDeleted)
{
    std::size_t nQueued = 0;
    for (int item = 0; item < 200; ++item)
    {
        auto tracks = std::make_unique<QMXTrackList>();
        for (int track = 0; track < item % 4; ++track, ++nQueued)
            tracks->push_back(Track("track"));
        cleaner->AddGarbage(tracks.release());
    }
    cleaner.reset();
    EXPECT_EQ(log.Events().size(), nQueued);
}

TEST_F(CQMXCleanerTest, DestructionWithAnEmptyQueueReturns)
{
    cleaner.reset();
    EXPECT_TRUE(log.Events().empty());
}

TEST_F(CQMXCleanerTest, NullEntriesAndNullItemsAreSkipped)
{
    cleaner->AddGarbage(nullptr);
    cleaner->AddGarbage(new QMXTrackList{nullptr, Track("a"), nullptr, nullptr, Track("b"), nullptr});
    cleaner->AddGarbage(new QMXTrackList);
    cleaner->AddGarbage(nullptr);
    cleaner->AddGarbage(new QMXTrackList{Track("c")});
    cleaner.reset();
    EXPECT_EQ(log.Events(), (std::vector<std::string>{"a:deleted", "b:deleted", "c:deleted"}));
}

TEST_F(CQMXCleanerTest, ItemsGoInTheOrderQueuedAndTracksInListOrder)
{
    std::vector<std::string> expected;
    for (int item = 0; item < 50; ++item)
    {
        auto tracks = std::make_unique<QMXTrackList>();
        for (int track = 0; track < 3; ++track)
        {
            const std::string name = std::to_string(item) + "." + std::to_string(track);
            tracks->push_back(Track(name.c_str()));
            expected.push_back(name + ":deleted");
        }
        cleaner->AddGarbage(tracks.release());
    }
    cleaner.reset();
    EXPECT_EQ(log.Events(), expected);
}

/// Holds the thread that deletes it until it is let go, and tells which thread that was.
class CBlockingTrack : public CQMXTrack
{
public:
    struct Gate
    {
        std::mutex lock;
        std::condition_variable changed;
        bool entered = false;
        bool open = false;
        std::thread::id thread;
    };
    explicit CBlockingTrack(Gate& gate) : CQMXTrack(0, QMXTrackType{}, 0, tagPIPPOSITION{}), m_gate(gate) {}
    ~CBlockingTrack() override
    {
        std::unique_lock guard(m_gate.lock);
        m_gate.thread = std::this_thread::get_id();
        m_gate.entered = true;
        m_gate.changed.notify_all();
        m_gate.changed.wait(guard, [this] { return m_gate.open; });
    }

private:
    Gate& m_gate;
};

TEST_F(CQMXCleanerTest, AddingNeverWaitsForADeletionInProgress)
{
    CBlockingTrack::Gate gate;
    cleaner->AddGarbage(new QMXTrackList{new CBlockingTrack(gate)});
    {
        std::unique_lock guard(gate.lock);
        gate.changed.wait(guard, [&gate] { return gate.entered; });
    }
    cleaner->AddGarbage(new QMXTrackList{Track("later")}); // would hang here if the lock were held
    EXPECT_TRUE(log.Events().empty());
    {
        const std::lock_guard guard(gate.lock);
        gate.open = true;
        gate.changed.notify_all();
    }
    cleaner.reset();
    EXPECT_EQ(log.Events(), std::vector<std::string>{"later:deleted"});
    EXPECT_NE(gate.thread, std::this_thread::get_id());
}

TEST_F(CQMXCleanerTest, ManyThreadsMayAddAtTheSameTime)
{
    constexpr int kThreads = 8;
    constexpr int kItems = 250;
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int n = 0; n < kThreads; ++n)
    {
        threads.emplace_back(
            [this]
            {
                for (int item = 0; item < kItems; ++item)
                    cleaner->AddGarbage(new QMXTrackList{Track("a"), nullptr, Track("b")});
            });
    }
    for (std::thread& thread : threads)
        thread.join();
    cleaner.reset();
    EXPECT_EQ(log.Events().size(), 2U * kThreads * kItems);
}

TEST_F(CQMXCleanerTest, DeletesTheTracksOfADocumentWithTheirClips)
{
    const std::unique_ptr<IQMXDocument> document(CreateQMXDocument(cleaner.get()));
    CSpyTrack* const track = Track("track");
    EXPECT_TRUE(track->AddClip(new CSpyClip(log, "clip")));
    EXPECT_TRUE(document->AddTrack(track));
    document->RemoveAllTracks(true);
    EXPECT_TRUE(document->AddTrack(Track("second")));
    document->RemoveAllTracks(false);
    cleaner.reset(); // the document holds nothing any more
    EXPECT_EQ(log.Events(), (std::vector<std::string>{"track:deleted", "clip:deleted", "second:deleted"}));
}

TEST_F(CQMXCleanerTest, WithoutMemoryForThreadOrEventsItDeletesWhereItIsCalled)
{
    for (int allowed = 0;; ++allowed)
    {
        std::unique_ptr<IQMXCleaner> made;
        {
            const CAllocationFailure failure(allowed);
            made.reset(CreateQMXCleaner());
            if (!CAllocationFailure::Happened())
                break;
        }
        ASSERT_LT(allowed, 100);
        if (made == nullptr)
            continue;
        const std::size_t nBefore = log.Events().size();
        made->AddGarbage(new QMXTrackList{Track("a")});
        made.reset();
        EXPECT_EQ(log.Events().size(), nBefore + 1);
    }
}

/// Counts its end without taking memory.
class CCountedTrack : public CQMXTrack
{
public:
    explicit CCountedTrack(std::atomic<int>& deleted)
        : CQMXTrack(0, QMXTrackType{}, 0, tagPIPPOSITION{}), m_deleted(deleted)
    {
    }
    ~CCountedTrack() override { ++m_deleted; }

private:
    std::atomic<int>& m_deleted;
};

TEST_F(CQMXCleanerTest, GarbageThatDoesNotFitTheQueueIsDeletedAtOnce)
{
    constexpr int kItems = 1'000;
    std::atomic<int> deleted{0};
    CBlockingTrack::Gate gate;
    cleaner->AddGarbage(new QMXTrackList{new CBlockingTrack(gate)}); // keeps the thread from draining the queue
    {
        std::unique_lock guard(gate.lock);
        gate.changed.wait(guard, [&gate] { return gate.entered; });
    }
    for (int item = 0; item < kItems; ++item)
    {
        auto* const tracks = new QMXTrackList{new CCountedTrack(deleted)};
        const CAllocationFailure failure;
        cleaner->AddGarbage(tracks);
    }
    EXPECT_GT(deleted, 0);
    EXPECT_LT(deleted, kItems);
    {
        const std::lock_guard guard(gate.lock);
        gate.open = true;
        gate.changed.notify_all();
    }
    cleaner.reset();
    EXPECT_EQ(deleted, kItems);
}
} // namespace
