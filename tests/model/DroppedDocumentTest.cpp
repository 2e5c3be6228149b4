// Documents go while others play: their tracks die on the cleaner's thread, the decoders with whoever lets go last.
#include "engine/clips/QMXColorClip.h"
#include "engine/clips/QMXVideoClip.h"
#include "engine/decoders/DecoderCache.h"
#include "engine/model/IQMXDocument.h"
#include "engine/platform/SampleBuffer.h"
#include "tests/decoders/media/FakeMedia.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>

namespace
{
constexpr std::uint64_t kFrame = 333'333;

/// Clips that count their births and deaths.
template <class Clip> class Counted : public Clip
{
public:
    explicit Counted(std::atomic<int>& live) : m_live(live) { ++m_live; }
    ~Counted() override { --m_live; }

private:
    std::atomic<int>& m_live;
};

class DroppedDocument : public testing::Test
{
protected:
    DroppedDocument()
    {
        media.AddFrames(60, kFrame);
        CFakeSystem::Install(L"clip.mp4", &media);
        tagSampleBufferPoolInfo info;
        GetSampleBufferPoolInfo(&info);
        m_nFramesBefore = info.nLive;
    }
    ~DroppedDocument() override
    {
        cleaner.reset(); // waits for everything that was dropped
        RemoveAllDecoders();
        EXPECT_EQ(liveClips, 0);
        EXPECT_EQ(CFakeSystem::LiveReaders(), 0);
        EXPECT_EQ(CFakeSystem::LiveBuffers(), 0);
        tagSampleBufferPoolInfo info;
        GetSampleBufferPoolInfo(&info);
        EXPECT_EQ(info.nLive, m_nFramesBefore);
        CFakeSystem::Install(L"clip.mp4", nullptr);
    }
    template <class Clip> void AddClip(IQMXTrack* track, std::uint64_t start)
    {
        auto clip = std::make_unique<Counted<Clip>>(liveClips);
        clip->SetFilePath(L"clip.mp4");
        clip->SetTrackID(track->GetTrackID());
        clip->SetStartTime(start);
        clip->SetDuration(10'000'000);
        if (track->AddClip(clip.get()))
            (void)clip.release();
    }
    /// Two tracks: | video | video | over | colour | colour |.
    std::unique_ptr<IQMXDocument> MakeDocument()
    {
        std::unique_ptr<IQMXDocument> document(CreateQMXDocument(cleaner.get()));
        for (std::uint64_t id = 1; id <= 2; ++id)
        {
            IQMXTrack* const track = CreateQMXTrack(id, QMXTrackType{}, 0, tagPIPPOSITION{});
            EXPECT_TRUE(document->AddTrack(track));
            for (const std::uint64_t start : {std::uint64_t{0}, std::uint64_t{10'000'000}})
            {
                if (id == 1)
                    AddClip<CQMXVideoClip>(track, start);
                else
                    AddClip<CQMXColorClip>(track, start);
            }
        }
        return document;
    }
    static void Play(IQMXDocument& document, std::uint64_t flags, int nFrames)
    {
        tagRenderProp request;
        request.flags = flags;
        request.width = 64;
        request.height = 36;
        for (int n = 0; n < nFrames; ++n)
        {
            for (int track = 0; track < document.GetTrackCount(); ++track)
            {
                const std::uint64_t time = 9'000'000 + static_cast<std::uint64_t>(n) * kFrame;
                bool flag = true;
                const SampleBufferPtr frame =
                    SampleBufferPtr::Adopt(document.GetTrack(track)->GetFrameAtTime(request, time, &flag));
                ASSERT_TRUE(frame);
                ASSERT_FALSE(flag);
            }
        }
    }

    FakeMedia media;
    std::atomic<int> liveClips{0};
    std::unique_ptr<IQMXCleaner> cleaner{CreateQMXCleaner()};

private:
    std::uint64_t m_nFramesBefore = 0;
};

TEST_F(DroppedDocument, GoesOnTheCleanersThreadWhileTheNextOnePlays)
{
    for (int round = 0; round < 100; ++round)
    {
        const std::unique_ptr<IQMXDocument> document = MakeDocument();
        Play(*document, round % 2 == 0 ? kRequestUseCache : 0, 6);
        if (round % 3 == 0)
            document->RemoveAllTracks(true);
    }
}

TEST_F(DroppedDocument, HostsOnSeveralThreadsShareCleanerAndCache)
{
    std::vector<std::thread> hosts;
    hosts.reserve(4);
    for (int host = 0; host < 4; ++host)
    {
        hosts.emplace_back(
            [this, host]
            {
                for (int round = 0; round < 25; ++round)
                {
                    const std::unique_ptr<IQMXDocument> document = MakeDocument();
                    Play(*document, kRequestUseCache, 4);
                    document->CloseAllClips();
                    RemoveDecoder(L"clip.mp4_Document_" + std::to_wstring(document->GetDocumentID()) + L"_Track_1");
                    if (round % 5 == host)
                        RemoveAllDecoders();
                }
            });
    }
    for (std::thread& host : hosts)
        host.join();
}

TEST_F(DroppedDocument, DecoderThatTheCacheHasForgottenDiesWithTheLastClip)
{
    std::unique_ptr<IQMXDocument> document = MakeDocument();
    Play(*document, kRequestUseCache, 2);
    RemoveAllDecoders();
    EXPECT_EQ(CFakeSystem::LiveReaders(), 1);
    document.reset();
    cleaner.reset();
    EXPECT_EQ(CFakeSystem::LiveReaders(), 0);
}
} // namespace
