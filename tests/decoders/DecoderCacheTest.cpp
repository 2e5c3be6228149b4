#include "engine/decoders/DecoderCache.h"

#include "engine/decoders/Decoder.h"
#include "engine/decoders/media/CameraClipDecoder.h"
#include "engine/decoders/media/VideoDecoder.h"
#include "engine/decoders/still/FlashDecoder.h"
#include "engine/decoders/still/GifDecoder.h"
#include "engine/decoders/still/ImageDecoder.h"
#include "engine/decoders/still/KeystrokeDecoder.h"
#include "engine/decoders/still/TitleDecoder.h"
#include "tests/decoders/NullReference.h"
#include "tests/decoders/media/FakeMedia.h"
#include "tests/model/AllocationFailure.h"

#include <gtest/gtest.h>

#include <random>
#include <thread>

namespace
{
class DecoderCache : public testing::Test
{
protected:
    DecoderCache()
    {
        media.AddFrames(2, 1);
        CFakeSystem::Install(L"a.mp4", &media);
        CFakeSystem::ReadersMade() = 0;
    }
    ~DecoderCache() override
    {
        RemoveAllDecoders();
        EXPECT_EQ(CFakeSystem::LiveReaders(), 0);
        CFakeSystem::Install(L"a.mp4", nullptr);
    }
    static tagDecProp Record(std::wstring path = L"a.mp4", std::uint32_t type = kDecoderVideo)
    {
        tagDecProp prop(std::move(path), 0);
        prop.decoderType = type;
        prop.width = 16;
        prop.height = 16;
        return prop;
    }
    static DecoderPtr Get(const std::wstring& key, const tagDecProp& prop = Record())
    {
        return DecoderPtr::Adopt(GetDecoder(key, prop));
    }
    static std::uint32_t CountOf(const DecoderPtr& decoder)
    {
        const std::uint32_t count = decoder->AddRef();
        decoder->Release();
        return count - 1;
    }

    FakeMedia media;
};

TEST_F(DecoderCache, SameKeyGivesTheSameDecoderInitialisedOnce)
{
    const DecoderPtr first = Get(L"key");
    tagDecProp other = Record();
    other.rotation = 90;
    const DecoderPtr second = Get(L"key", other);
    ASSERT_TRUE(first);
    EXPECT_EQ(first.Get(), second.Get());
    EXPECT_EQ(CountOf(first), 3U); // the map's and two callers'
    EXPECT_EQ(CFakeSystem::ReadersMade(), 1);
    EXPECT_EQ(*first->GetProperty(), Record()); // the second record is not applied
}

TEST_F(DecoderCache, KeysAreComparedByCodeUnits)
{
    const DecoderPtr lower = Get(L"key");
    EXPECT_NE(lower.Get(), Get(L"Key").Get());
    EXPECT_NE(lower.Get(), Get(L"").Get());
    EXPECT_EQ(CFakeSystem::ReadersMade(), 3);
}

TEST_F(DecoderCache, TypeZeroMakesAVideoDecoder)
{
    const DecoderPtr decoder = Get(L"key");
    EXPECT_NE(dynamic_cast<CVideoDecoder*>(decoder.Get()), nullptr);
    EXPECT_TRUE(IsDecoderFor(decoder.Get(), Record()));
    EXPECT_FALSE(IsDecoderFor(decoder.Get(), Record(L"a.GIF")));
    EXPECT_FALSE(IsDecoderFor(decoder.Get(), Record(L"", kDecoderTitle)));
    EXPECT_FALSE(IsDecoderFor(nullptr, Record()));
    const DecoderPtr other = DecoderPtr::Adopt(new CDecoder);
    EXPECT_FALSE(IsDecoderFor(other.Get(), Record()));
}

TEST_F(DecoderCache, ExtensionComesBeforeTheDecoderType)
{
    for (const wchar_t* const path : {L"clip.GIF", L"gif", L"a.b.gif"})
    {
        for (const std::uint32_t type : {kDecoderVideo, kDecoderTitle, kDecoderImage, 99U})
        {
            const tagDecProp prop = Record(path, type);
            const DecoderPtr decoder = Get(path, prop);
            EXPECT_NE(dynamic_cast<CGifDecoder*>(decoder.Get()), nullptr) << path << ' ' << type;
            EXPECT_TRUE(IsDecoderFor(decoder.Get(), prop));
            EXPECT_FALSE(IsDecoderFor(decoder.Get(), Record(L"a.png", kDecoderImage)));
            RemoveDecoder(path);
        }
    }
    const tagDecProp movie = Record(L"a.swf", kDecoderImage);
    const DecoderPtr flash = Get(L"flash", movie);
    EXPECT_NE(dynamic_cast<CFlashDecoder*>(flash.Get()), nullptr);
    EXPECT_TRUE(IsDecoderFor(flash.Get(), movie));
    EXPECT_FALSE(IsDecoderFor(flash.Get(), Record(L"a.mp4")));
}

TEST_F(DecoderCache, TypeFourMakesAnImageDecoder)
{
    const tagDecProp prop = Record(L"a.png", kDecoderImage);
    const DecoderPtr decoder = Get(L"key", prop);
    EXPECT_NE(dynamic_cast<CImageDecoder*>(decoder.Get()), nullptr);
    EXPECT_EQ(dynamic_cast<CGifDecoder*>(decoder.Get()), nullptr);
    EXPECT_TRUE(IsDecoderFor(decoder.Get(), prop));
    EXPECT_FALSE(IsDecoderFor(decoder.Get(), Record(L"a.gif")));
    EXPECT_FALSE(IsDecoderFor(decoder.Get(), Record(L"a.png")));
}

TEST_F(DecoderCache, TypesOneAndTwoMakeTitleAndKeystrokeDecoders)
{
    const DecoderPtr title = Get(L"title", Record(L"", kDecoderTitle));
    const DecoderPtr keystroke = Get(L"keystroke", Record(L"", kDecoderKeystroke));
    EXPECT_NE(dynamic_cast<CTitleDecoder*>(title.Get()), nullptr);
    EXPECT_NE(dynamic_cast<CKeystrokeDecoder*>(keystroke.Get()), nullptr);
    EXPECT_TRUE(IsDecoderFor(title.Get(), Record(L"", kDecoderTitle)));
    EXPECT_FALSE(IsDecoderFor(title.Get(), Record(L"", kDecoderKeystroke)));
    EXPECT_TRUE(IsDecoderFor(keystroke.Get(), Record(L"", kDecoderKeystroke)));
    EXPECT_FALSE(IsDecoderFor(keystroke.Get(), Record()));
}

TEST_F(DecoderCache, TypeThreeMakesACameraClipDecoder)
{
    const DecoderPtr decoder = Get(L"key", Record(L"cam.mjpg", kDecoderCamera));
    EXPECT_NE(dynamic_cast<CCameraClipDecoder*>(decoder.Get()), nullptr);
    EXPECT_TRUE(IsDecoderFor(decoder.Get(), Record(L"cam.mjpg", kDecoderCamera)));
    EXPECT_FALSE(IsDecoderFor(decoder.Get(), Record(L"cam.mjpg", kDecoderVideo)));
}

TEST_F(DecoderCache, RecordWithoutAClassGivesNullAndNoEntry)
{
    EXPECT_FALSE(Get(L"key", Record(L"a.mp4", 5)));
    EXPECT_FALSE(Get(L"key", Record(L"a.mp4", 0xFFFFFFFFU)));
    EXPECT_TRUE(Get(L"key")); // an entry would be returned as it is
    EXPECT_EQ(CFakeSystem::ReadersMade(), 1);
}

TEST_F(DecoderCache, FileThatCannotBeOpenedIsKeptAndGivesBlankFrames)
{
    const DecoderPtr decoder = Get(L"key", Record(L"nothing.mp4"));
    ASSERT_TRUE(decoder);
    bool flag = false;
    EXPECT_TRUE(SampleBufferPtr::Adopt(decoder->GetClipVideoFrame(0, flag)));
    EXPECT_EQ(Get(L"key").Get(), decoder.Get());
}

TEST_F(DecoderCache, RemovedDecoderLivesOnWhileItIsHeld)
{
    DecoderPtr held = Get(L"key");
    RemoveDecoder(L"key");
    EXPECT_EQ(CountOf(held), 1U);
    EXPECT_EQ(CFakeSystem::LiveReaders(), 1);
    const DecoderPtr next = Get(L"key");
    EXPECT_NE(next.Get(), held.Get());
    held = {};
    EXPECT_EQ(CFakeSystem::LiveReaders(), 1);
}

TEST_F(DecoderCache, RemovalOfTheLastReferenceDeletesTheDecoder)
{
    Get(L"key");
    EXPECT_EQ(CFakeSystem::LiveReaders(), 1);
    RemoveDecoder(L"other");
    EXPECT_EQ(CFakeSystem::LiveReaders(), 1);
    RemoveDecoder(L"key");
    EXPECT_EQ(CFakeSystem::LiveReaders(), 0);
    RemoveDecoder(L"key");
}

TEST_F(DecoderCache, RemovalOfAllGoesInAscendingOrderOfTheKeys)
{
    FakeMedia files[3];
    const std::wstring names[3] = {L"0.mp4", L"1.mp4", L"2.mp4"};
    const std::wstring keys[3] = {L"b", L"c", L"a"};
    for (int n = 0; n < 3; ++n)
    {
        CFakeSystem::Install(names[n], &files[n]);
        Get(keys[n], Record(names[n]));
    }
    RemoveAllDecoders();
    EXPECT_EQ(CFakeSystem::LiveReaders(), 0);
    EXPECT_LT(files[2].flushedAt, files[0].flushedAt);
    EXPECT_LT(files[0].flushedAt, files[1].flushedAt);
    for (const std::wstring& name : names)
        CFakeSystem::Install(name, nullptr);
}

TEST_F(DecoderCache, RemovalOfAllFromAnEmptyCacheDoesNothing)
{
    RemoveAllDecoders();
    RemoveAllDecoders();
    EXPECT_TRUE(Get(L"key"));
}

TEST_F(DecoderCache, NullRecordIsRefused)
{
    EXPECT_EQ(GetDecoder(L"key", NullReference<const tagDecProp>()), nullptr);
}

TEST_F(DecoderCache, ShortMemoryGivesNullAndNoEntryOrADecoderThatIsKept)
{
    const tagDecProp prop = Record();
    for (int allowed = 0;; ++allowed)
    {
        ASSERT_LT(allowed, 200);
        std::wstring key(50, L'k');
        IDecoder* decoder = nullptr;
        bool refused = false;
        {
            const CAllocationFailure failure(allowed);
            decoder = GetDecoder(std::move(key), prop);
            refused = CAllocationFailure::Happened();
        }
        if (decoder == nullptr)
            EXPECT_EQ(CFakeSystem::LiveReaders(), 0);
        else
            EXPECT_EQ(decoder->Release(), 1U);
        RemoveAllDecoders();
        EXPECT_EQ(CFakeSystem::LiveReaders(), 0);
        if (!refused)
            break;
    }
}

TEST_F(DecoderCache, ManyThreadsMakeShareAndRemoveAndEachDecoderDiesOnce)
{
    constexpr unsigned kThreads = 8;
    constexpr int kRounds = 10'000;
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (unsigned n = 0; n < kThreads; ++n)
    {
        threads.emplace_back(
            [n]
            {
                std::minstd_rand random(n + 1); // the mix of operations is the same in every run
                for (int round = 0; round < kRounds; ++round)
                {
                    const std::wstring key(1, static_cast<wchar_t>(L'a' + random() % 5));
                    switch (random() % 16)
                    {
                    case 0:
                        RemoveAllDecoders();
                        break;
                    case 1:
                    case 2:
                        RemoveDecoder(key);
                        break;
                    default:
                        const DecoderPtr decoder = Get(key);
                        ASSERT_TRUE(decoder);
                        ASSERT_GE(CountOf(decoder), 1U);
                        break;
                    }
                }
            });
    }
    for (std::thread& thread : threads)
        thread.join();
    RemoveAllDecoders();
    EXPECT_EQ(CFakeSystem::LiveReaders(), 0); // none left; one that died twice would have gone below
    EXPECT_GT(CFakeSystem::ReadersMade(), 100);
}
} // namespace
