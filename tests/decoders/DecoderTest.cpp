#include "engine/decoders/Decoder.h"

#include "tests/decoders/NullReference.h"
#include "tests/model/AllocationFailure.h"
#include "tests/model/SlotOf.h"

#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <thread>
#include <vector>

namespace
{
class CCountedDecoder : public CDecoder
{
public:
    explicit CCountedDecoder(int& nDeleted) : m_nDeleted(nDeleted) {}
    CCountedDecoder(const CCountedDecoder& other) = default;
    CCountedDecoder& operator=(const CCountedDecoder& other)
    {
        CDecoder::operator=(other);
        return *this;
    }

protected:
    ~CCountedDecoder() override { ++m_nDeleted; }

private:
    int& m_nDeleted;
};

tagDecProp FullRecord()
{
    tagDecProp prop(L"clip.mp4", 5);
    prop.flags = 9;
    prop.outPoint = 77;
    prop.currentTime = 6;
    prop.frameRate = 25;
    prop.frameDuration = 400'000;
    prop.rotation = 90;
    prop.decoderType = kDecoderImage;
    prop.width = 640;
    prop.height = 360;
    return prop;
}

TEST(tagDecProp, TakesPathAndTimeAndDefaultsForTheRest)
{
    const tagDecProp prop(L"a.mp4", 42);
    EXPECT_EQ(prop.flags, 1U);
    EXPECT_EQ(prop.filePath, L"a.mp4");
    EXPECT_EQ(prop.inPoint, 42U);
    EXPECT_EQ(prop.outPoint, ~0ULL);
    EXPECT_EQ(prop.currentTime, 42U);
    EXPECT_EQ(prop.frameRate, 30.0);
    EXPECT_EQ(prop.frameDuration, 333'333U);
    EXPECT_EQ(prop.rotation, 0U);
    EXPECT_EQ(prop.decoderType, 0U);
    EXPECT_EQ(prop.width, 0U);
    EXPECT_EQ(prop.height, 0U);
}

TEST(tagDecProp, AssignedToItselfChangesNothing)
{
    tagDecProp prop = FullRecord();
    const tagDecProp& same = prop;
    prop = same;
    EXPECT_EQ(prop, FullRecord());
}

TEST(tagDecProp, CopyHasAPathOfItsOwn)
{
    tagDecProp prop = FullRecord();
    const tagDecProp copy = prop;
    prop.filePath[0] = L'X';
    EXPECT_EQ(copy.filePath, L"clip.mp4");
}

TEST(FrameDurationFromRate, TruncatesTowardZero)
{
    EXPECT_EQ(FrameDurationFromRate(30.0), 333'333U);
    EXPECT_EQ(FrameDurationFromRate(25.0), 400'000U);
    EXPECT_EQ(FrameDurationFromRate(60.0), 166'666U);
    EXPECT_EQ(FrameDurationFromRate(30'000.0 / 1'001.0), 333'666U);
    EXPECT_EQ(FrameDurationFromRate(1e9), 0U);
}

TEST(FrameDurationFromRate, KeepsTheFullUnsignedRange)
{
    EXPECT_EQ(FrameDurationFromRate(1e7 / 1.2e19), 12'000'000'000'000'000'000ULL);
    EXPECT_GT(FrameDurationFromRate(1e7 / 1.8e19), 1ULL << 63);
}

TEST(FrameDurationFromRate, WhatNoUnsignedNumberHoldsIsAllOnes)
{
    EXPECT_EQ(FrameDurationFromRate(0.0), ~0ULL);
    EXPECT_EQ(FrameDurationFromRate(-0.0), ~0ULL);
    EXPECT_EQ(FrameDurationFromRate(1e-300), ~0ULL);
    EXPECT_EQ(FrameDurationFromRate(-1e-300), ~0ULL);
    EXPECT_EQ(FrameDurationFromRate(std::numeric_limits<double>::quiet_NaN()), ~0ULL);
    EXPECT_EQ(FrameDurationFromRate(std::numeric_limits<double>::infinity()), 0U);
}

TEST(FrameDurationFromRate, NegativeRateWrapsAround)
{
    EXPECT_EQ(FrameDurationFromRate(-30.0), 0ULL - 333'333U);
}

TEST(CDecoder, NewOneHoldsARecordOfZeros)
{
    CDecoder* const decoder = new CDecoder;
    const tagDecProp* const prop = decoder->GetProperty();
    EXPECT_EQ(prop->flags, 0U);
    EXPECT_TRUE(prop->filePath.empty());
    EXPECT_EQ(prop->inPoint, 0U);
    EXPECT_EQ(prop->outPoint, 0U);
    EXPECT_EQ(prop->currentTime, 0U);
    EXPECT_EQ(prop->frameRate, 0.0);
    EXPECT_EQ(prop->frameDuration, 0U);
    EXPECT_EQ(prop->rotation, 0U);
    EXPECT_EQ(prop->decoderType, 0U);
    EXPECT_EQ(prop->width, 0U);
    EXPECT_EQ(prop->height, 0U);
    EXPECT_EQ(decoder->Release(), 0U);
}

TEST(CDecoder, CountsReferencesAndDiesWithTheLast)
{
    int nDeleted = 0;
    IDecoder* const decoder = new CCountedDecoder(nDeleted);
    EXPECT_EQ(decoder->AddRef(), 2U);
    EXPECT_EQ(decoder->Release(), 1U);
    EXPECT_EQ(nDeleted, 0);
    EXPECT_EQ(decoder->Release(), 0U);
    EXPECT_EQ(nDeleted, 1);
}

TEST(CDecoder, KeepsACopyOfTheRecordItIsGiven)
{
    const DecoderPtr decoder = DecoderPtr::Adopt(new CDecoder);
    EXPECT_TRUE(decoder->Initialize(FullRecord()));
    EXPECT_EQ(*decoder->GetProperty(), FullRecord());
    tagDecProp other = FullRecord();
    other.rotation = 270;
    decoder->SetDecoderProperty(other);
    EXPECT_EQ(*decoder->GetProperty(), other);
}

TEST(CDecoder, RecordIsAssignedToItselfUnharmed)
{
    const DecoderPtr decoder = DecoderPtr::Adopt(new CDecoder);
    decoder->SetDecoderProperty(FullRecord());
    decoder->SetDecoderProperty(*decoder->GetProperty());
    EXPECT_EQ(*decoder->GetProperty(), FullRecord());
}

TEST(CDecoder, CallerWritesThroughTheRecord)
{
    const DecoderPtr decoder = DecoderPtr::Adopt(new CDecoder);
    decoder->GetProperty()->frameDuration = 12;
    EXPECT_EQ(decoder->GetProperty()->frameDuration, 12U);
}

TEST(CDecoder, HasNoPictureAndLeavesTheFlagAlone)
{
    const DecoderPtr decoder = DecoderPtr::Adopt(new CDecoder);
    for (const bool before : {false, true})
    {
        bool flag = before;
        EXPECT_EQ(decoder->GetClipVideoFrame(123, flag), nullptr);
        EXPECT_EQ(flag, before);
    }
    EXPECT_EQ(decoder->GetLastFrame(), nullptr);
}

TEST(CDecoder, CopyTakesCountAndRecord)
{
    int nDeleted = 0;
    CCountedDecoder* const source = new CCountedDecoder(nDeleted);
    source->SetDecoderProperty(FullRecord());
    source->AddRef();
    CCountedDecoder* const copy = new CCountedDecoder(*source);
    EXPECT_EQ(*copy->GetProperty(), FullRecord());
    EXPECT_EQ(copy->Release(), 1U);
    CCountedDecoder* const assigned = new CCountedDecoder(nDeleted);
    *assigned = *source;
    EXPECT_EQ(*assigned->GetProperty(), FullRecord());
    EXPECT_EQ(assigned->Release(), 1U);
    for (CCountedDecoder* const decoder : {source, copy, assigned})
    {
        while (decoder->Release() != 0)
        {
        }
    }
    EXPECT_EQ(nDeleted, 3);
}

TEST(CDecoder, NullRecordIsRefused)
{
    const DecoderPtr decoder = DecoderPtr::Adopt(new CDecoder);
    decoder->SetDecoderProperty(FullRecord());
    EXPECT_FALSE(decoder->Initialize(NullReference<const tagDecProp>()));
    decoder->SetDecoderProperty(NullReference<const tagDecProp>());
    EXPECT_EQ(*decoder->GetProperty(), FullRecord());
}

TEST(CDecoder, ShortMemoryIsNoException)
{
    const DecoderPtr decoder = DecoderPtr::Adopt(new CDecoder);
    const tagDecProp prop(std::wstring(100, L'a'), 0);
    const CAllocationFailure failure;
    EXPECT_FALSE(decoder->Initialize(prop));
}

TEST(CDecoder, ReferencesFromManyThreadsEndInOneDeath)
{
    constexpr int kThreads = 8;
    constexpr int kRounds = 10'000;
    int nDeleted = 0;
    IDecoder* const decoder = new CCountedDecoder(nDeleted);
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int n = 0; n < kThreads; ++n)
    {
        decoder->AddRef();
        threads.emplace_back(
            [decoder]
            {
                for (int round = 0; round < kRounds; ++round)
                {
                    decoder->AddRef();
                    decoder->Release();
                }
                decoder->Release();
            });
    }
    decoder->Release();
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(nDeleted, 1);
}

/// A protected destructor takes its entries in the table like a public one.
TEST(IDecoderSlots, AreWhereTheBinaryInterfaceHasThem)
{
    EXPECT_EQ(SlotOf(&IDecoder::Initialize), 1);
    EXPECT_EQ(SlotOf(&IDecoder::SetDecoderProperty), 2);
    EXPECT_EQ(SlotOf(&IDecoder::GetProperty), 3);
    EXPECT_EQ(SlotOf(&IDecoder::GetClipVideoFrame), 4);
    EXPECT_EQ(SlotOf(&IDecoder::GetLastFrame), 5);
    EXPECT_EQ(SlotOf(&IDecoder::AddRef), 6);
    EXPECT_EQ(SlotOf(&IDecoder::Release), 7);
}
} // namespace
