#include "engine/clips/QMXAudioClip.h"

#include "engine/clips/QMXCameraClip.h"
#include "engine/clips/QMXVideoClip.h"
#include "tests/decoders/NullReference.h"
#include "tests/decoders/media/AudioDecoderFixture.h"
#include "tests/model/AllocationFailure.h"

#include <mferror.h>

#include <memory>

namespace
{
/// Every kind of clip that has sound plays it in the same way.
template <class Clip> class ClipSoundTest : public SoundFixture
{
protected:
    ClipSoundTest() { clip->SetFilePath(L"fake.mp3"); }
    ~ClipSoundTest() override { std::free(own); }
    void TearDown() override
    {
        clip.reset();
        SoundFixture::TearDown();
    }

    bool OpenAt(std::uint64_t time)
    {
        tagRenderProp request;
        request.audioParams = {48'000, time};
        return clip->OpenAudio(request);
    }
    /// A read of @p count bytes into a block of the caller's that was full of 0xEE.
    std::vector<std::uint8_t> Read(std::uint32_t count)
    {
        std::vector<std::uint8_t> bytes(count, 0xEE);
        std::uint8_t* pBytes = bytes.data();
        std::uint32_t size = count;
        last = clip->ReadAudio(&pBytes, &size);
        EXPECT_EQ(pBytes, bytes.data());
        EXPECT_EQ(size, count);
        return bytes;
    }
    std::vector<std::uint8_t> ReadAt(std::uint64_t time, std::uint32_t count)
    {
        std::vector<std::uint8_t> bytes(count, 0xEE);
        std::uint8_t* pBytes = bytes.data();
        std::uint32_t size = count;
        last = clip->GetAudioAtTime(time, &pBytes, &size);
        return bytes;
    }

    std::unique_ptr<Clip> clip = std::make_unique<Clip>();
    std::uint32_t last = 0; ///< what the last read returned
    std::uint8_t* own = nullptr;
};
using Kinds = testing::Types<CQMXAudioClip, CQMXVideoClip, CQMXCameraClip>;
TYPED_TEST_SUITE(ClipSoundTest, Kinds);

std::vector<std::uint8_t> Zeros(std::size_t count)
{
    return std::vector<std::uint8_t>(count, 0);
}
} // namespace

// ---- opening -----------------------------------------------------------------------------------------------------

TYPED_TEST(ClipSoundTest, ANewClipHasNoSoundOpen)
{
    EXPECT_FALSE(this->clip->IsAudioOpened()); // unlike the base clip, which counts silence as open
    EXPECT_EQ(this->Read(100), Zeros(100));
    EXPECT_EQ(this->last, 100U);
}

TYPED_TEST(ClipSoundTest, OpensAtTheTimeOfTheSourceThatTheTimelineShows)
{
    this->media.AddBlocks(200, kBlock);
    this->clip->SetStartTime(50 * kBlockTime);
    this->clip->SetInPoint(7 * kBlockTime);
    ASSERT_TRUE(this->OpenAt(53 * kBlockTime + 1));
    EXPECT_TRUE(this->clip->IsAudioOpened());
    EXPECT_EQ(this->media.seeks, std::vector<LONGLONG>{10 * kBlockTime + 1});
    EXPECT_EQ(this->Read(100), this->Bytes(10 * kBlock, 100));
}

TYPED_TEST(ClipSoundTest, ATimeBeforeTheClipWrapsAround)
{
    this->media.AddBlocks(2, kBlock);
    this->clip->SetStartTime(1'000);
    ASSERT_TRUE(this->OpenAt(400));
    EXPECT_EQ(this->media.seeks, std::vector<LONGLONG>{-600});
    EXPECT_EQ(this->Read(100), Zeros(100)); // there is nothing
}

TYPED_TEST(ClipSoundTest, AMissingFilePlaysAsSilence)
{
    this->clip->SetFilePath(L"missing.mp3");
    EXPECT_TRUE(this->OpenAt(0));
    EXPECT_TRUE(this->clip->IsAudioOpened());
    std::uint32_t size = 0;
    EXPECT_EQ(this->clip->ReadAudio(&this->own, &size), 5'760U);
    EXPECT_EQ(size, 5'760U);
    ASSERT_NE(this->own, nullptr);
    EXPECT_EQ(std::vector<std::uint8_t>(this->own, this->own + 5'760), Zeros(5'760));
    EXPECT_EQ(this->Read(64), Zeros(64));
    EXPECT_EQ(this->last, 64U);
    EXPECT_EQ(this->clip->ReadAudio(nullptr, &size), 0U);
    EXPECT_EQ(this->ReadAt(10, 64), Zeros(64));
}

TYPED_TEST(ClipSoundTest, AFileWithoutSoundPlaysAsSilence)
{
    this->media.AddBlocks(2, kBlock);
    this->media.failing = {"Select"};
    EXPECT_TRUE(this->OpenAt(0));
    EXPECT_TRUE(this->clip->IsAudioOpened());
    EXPECT_EQ(this->Read(64), Zeros(64));
    EXPECT_TRUE(this->media.seeks.empty());
}

TYPED_TEST(ClipSoundTest, OpeningAgainStartsAnew)
{
    this->media.AddBlocks(4, kBlock);
    ASSERT_TRUE(this->OpenAt(0));
    this->Read(100);
    ASSERT_TRUE(this->OpenAt(0));
    EXPECT_EQ(CFakeSystem::LiveReaders(), 1);
    EXPECT_EQ(this->Read(100), this->Bytes(0, 100));
    this->media.failing = {"Open"};
    ASSERT_TRUE(this->OpenAt(0));
    EXPECT_EQ(this->Read(100), Zeros(100));
    this->media.failing.clear();
    ASSERT_TRUE(this->OpenAt(0));
    EXPECT_EQ(this->Read(100), this->Bytes(0, 100));
}

TYPED_TEST(ClipSoundTest, ShortMemoryPlaysAsSilence)
{
    this->media.AddBlocks(1, kBlock);
    {
        const CAllocationFailure failure;
        EXPECT_TRUE(this->OpenAt(0));
    }
    EXPECT_FALSE(this->clip->IsAudioOpened());
    EXPECT_EQ(this->Read(64), Zeros(64));
    {
        const CAllocationFailure failure(1); // for the decoder, not for its path
        EXPECT_TRUE(this->OpenAt(0));
    }
    EXPECT_EQ(this->Read(64), Zeros(64));
}

TYPED_TEST(ClipSoundTest, ResetClosesTheSound)
{
    this->media.AddBlocks(2, kBlock);
    ASSERT_TRUE(this->OpenAt(0));
    this->Read(100);
    EXPECT_TRUE(this->clip->ResetAudio());
    EXPECT_FALSE(this->clip->IsAudioOpened());
    EXPECT_EQ(CFakeSystem::LiveReaders(), 0);
    EXPECT_EQ(this->Read(100), Zeros(100));
    EXPECT_TRUE(this->clip->ResetAudio());
}

TYPED_TEST(ClipSoundTest, NullRequestIsRefused)
{
    EXPECT_FALSE(this->clip->OpenAudio(NullReference<const tagRenderProp>()));
}

// ---- reading -----------------------------------------------------------------------------------------------------

TYPED_TEST(ClipSoundTest, AReadTakesFromAsManyBlocksAsItNeedsAndTheNextGoesOnThere)
{
    this->media.AddBlocks(10, 64);
    ASSERT_TRUE(this->OpenAt(0));
    EXPECT_EQ(this->Read(100), this->Bytes(0, 100)); // 64 of the first block, 36 of the second
    EXPECT_EQ(this->last, 100U);
    EXPECT_EQ(this->media.nReads, 2);
    EXPECT_EQ(this->Read(28), this->Bytes(100, 28)); // the rest of the second
    EXPECT_EQ(this->media.nReads, 2);
    EXPECT_EQ(this->Read(200), this->Bytes(128, 200));
}

TYPED_TEST(ClipSoundTest, BlocksOfEverySizeAreJoinedWithoutLoss)
{
    for (const std::uint32_t cb : {4U, 1'000U, 64U, 8U, 3'000U})
        this->media.AddBlocks(1, cb);
    ASSERT_TRUE(this->OpenAt(0));
    std::vector<std::uint8_t> all;
    while (all.size() < 4'076)
    {
        const std::vector<std::uint8_t> part = this->Read(76);
        ASSERT_EQ(this->last, std::min<std::size_t>(76, 4'076 - all.size()));
        all.insert(all.end(), part.begin(), part.begin() + this->last);
    }
    EXPECT_EQ(all, this->Bytes(0, 4'076));
}

TYPED_TEST(ClipSoundTest, TheReadThatMeetsTheEndIsShortAndLeavesTheRestAlone)
{
    this->media.AddBlocks(1, 64);
    ASSERT_TRUE(this->OpenAt(0));
    std::vector<std::uint8_t> expected = this->Bytes(0, 64);
    expected.resize(100, 0xEE);
    EXPECT_EQ(this->Read(100), expected);
    EXPECT_EQ(this->last, 64U);
}

TYPED_TEST(ClipSoundTest, PastTheEndThereIsSilenceOfTheLengthThatIsAskedFor)
{
    this->media.AddBlocks(1, 64);
    ASSERT_TRUE(this->OpenAt(0));
    this->Read(64);
    EXPECT_EQ(this->Read(100), Zeros(100));
    EXPECT_EQ(this->last, 100U);
    EXPECT_EQ(this->Read(100), Zeros(100));
}

TYPED_TEST(ClipSoundTest, AFailingReadIsSilence)
{
    this->media.AddBlocks(4, 64);
    ASSERT_TRUE(this->OpenAt(0));
    this->Read(64);
    this->media.failing = {"ReadSample"};
    EXPECT_EQ(this->Read(100), Zeros(100));
}

TYPED_TEST(ClipSoundTest, WithoutABlockOfTheCallersTheDecoderHandsOverItsOwn)
{
    this->media.AddBlocks(3, 64);
    ASSERT_TRUE(this->OpenAt(0));
    std::uint32_t size = 999;
    EXPECT_EQ(this->clip->ReadAudio(&this->own, &size), 64U);
    EXPECT_EQ(size, 64U);
    ASSERT_NE(this->own, nullptr);
    EXPECT_EQ(std::vector<std::uint8_t>(this->own, this->own + 64), this->Bytes(0, 64));
    EXPECT_EQ(this->Read(10), this->Bytes(64, 10));
}

TYPED_TEST(ClipSoundTest, NothingAskedForGivesNothing)
{
    this->media.AddBlocks(1, 64);
    ASSERT_TRUE(this->OpenAt(0));
    std::uint8_t byte = 7;
    std::uint8_t* pByte = &byte;
    std::uint32_t size = 0;
    EXPECT_EQ(this->clip->ReadAudio(&pByte, &size), 0U);
    EXPECT_EQ(byte, 7);
    size = 8;
    EXPECT_EQ(this->clip->ReadAudio(nullptr, &size), 0U);
    EXPECT_EQ(this->clip->ReadAudio(&this->own, nullptr), 0U);
    EXPECT_EQ(this->media.nReads, 1); // that of opening
}

// ---- seeking and opening on demand -------------------------------------------------------------------------------

TYPED_TEST(ClipSoundTest, ASeekDiscardsWhatIsLeftOfTheBlock)
{
    this->media.AddBlocks(20, kBlock);
    this->clip->SetStartTime(2 * kBlockTime);
    this->clip->SetInPoint(kBlockTime);
    ASSERT_TRUE(this->OpenAt(2 * kBlockTime));
    this->Read(10);
    EXPECT_EQ(this->ReadAt(9 * kBlockTime + 1, 100), this->Bytes(8 * kBlock, 100));
    EXPECT_EQ(this->last, 100U);
    EXPECT_EQ(this->media.seeks.back(), static_cast<LONGLONG>(8 * kBlockTime + 1));
    EXPECT_EQ(this->Read(100), this->Bytes(8 * kBlock + 100, 100));
}

TYPED_TEST(ClipSoundTest, ASeekOfAClipThatIsNotOpenGivesSilence)
{
    EXPECT_EQ(this->ReadAt(0, 100), Zeros(100));
}

TYPED_TEST(ClipSoundTest, AudioDataOpensOnDemandAndThenReadsOn)
{
    this->media.AddBlocks(20, kBlock);
    std::vector<std::uint8_t> bytes(100);
    std::uint8_t* pBytes = bytes.data();
    std::uint32_t size = 100;
    EXPECT_EQ(this->clip->GetAudioData(&pBytes, &size, 3 * kBlockTime + 1), 100U);
    EXPECT_EQ(bytes, this->Bytes(3 * kBlock, 100));
    EXPECT_EQ(this->clip->GetAudioData(&pBytes, &size, 0), 100U); // the time counts only when it opens
    EXPECT_EQ(bytes, this->Bytes(3 * kBlock + 100, 100));
    EXPECT_EQ(this->media.seeks.size(), 1U);
}

TEST(CQMXAudioClip, HasNoPictures)
{
    CQMXAudioClip clip;
    EXPECT_EQ(clip.GetClipType(), QMXClipType_Audio);
    EXPECT_FALSE(clip.IsVideoOpened());
    EXPECT_TRUE(clip.Open(tagRenderProp()));
    FrameResult result;
    EXPECT_FALSE(clip.GetVideoFrame(0, &result));
    tagRenderProp request;
    bool flag = true;
    EXPECT_EQ(clip.GetFrame(request, 0, &flag), nullptr);
    EXPECT_FALSE(flag);
    EXPECT_EQ(clip.GetLastFrame(), nullptr);
    clip.SetAttachment(0, &clip);
    EXPECT_TRUE(clip.Close());
}
