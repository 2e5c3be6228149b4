#include "engine/platform/SampleBuffer.h"
#include "tests/companions/SystemMemory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

namespace
{
SampleBufferPtr Make(std::uint32_t format, std::uint32_t width, std::uint32_t height, std::uint32_t flag = 0)
{
    return SampleBufferPtr::Adopt(CreateSampleBuffer(format, width, height, flag));
}

std::uint8_t* PixelsOf(const SampleBufferPtr& pBuffer)
{
    std::uint8_t* p = nullptr;
    EXPECT_TRUE(pBuffer->GetBuffer(&p, nullptr));
    return p;
}

std::uint32_t LengthOf(const SampleBufferPtr& pBuffer)
{
    std::uint8_t* p = nullptr;
    std::uint32_t cb = 0;
    EXPECT_TRUE(pBuffer->GetBuffer(&p, &cb));
    return cb;
}

std::uint64_t LiveBuffers()
{
    tagSampleBufferPoolInfo info;
    GetSampleBufferPoolInfo(&info);
    return info.nLive;
}

TEST(CreateSampleBuffer, MakesABgraPictureWithItsSizeAsDisplayAspect)
{
    const SampleBufferPtr pBuffer = Make(kSampleFormatBgra, 7, 5);
    ASSERT_TRUE(pBuffer);
    EXPECT_EQ(pBuffer->GetFormat(), 32U);
    EXPECT_EQ(pBuffer->GetWidth(), 7U);
    EXPECT_EQ(pBuffer->GetHeight(), 5U);
    EXPECT_EQ(pBuffer->GetStride(), 28U);
    EXPECT_EQ(LengthOf(pBuffer), 140U);
    EXPECT_EQ(pBuffer->GetRatioX(), 7U);
    EXPECT_EQ(pBuffer->GetRatioY(), 5U);
    EXPECT_EQ(pBuffer->GetFlag(), 0U);
    EXPECT_FALSE(pBuffer->GetAlphaFlag());
}

TEST(CreateSampleBuffer, KeepsTheCreationFlag)
{
    const SampleBufferPtr pBuffer = Make(kSampleFormatBgra, 4, 4, 1);
    ASSERT_TRUE(pBuffer);
    EXPECT_EQ(pBuffer->GetFlag(), 1U);
    EXPECT_FALSE(pBuffer->GetAlphaFlag());
}

TEST(CreateSampleBuffer, GivesNv12ChromaForTheLastOddColumnAndRow)
{
    EXPECT_EQ(kSampleFormatNv12, 'N' | 'V' << 8 | '1' << 16 | '2' << 24);
    const std::vector<std::pair<std::pair<std::uint32_t, std::uint32_t>, std::uint32_t>> lengths = {
        {{4, 2}, 8 + 4}, {{5, 2}, 10 + 6}, {{4, 3}, 12 + 8}, {{5, 3}, 15 + 12}, {{1, 1}, 1 + 2}};
    for (const auto& [size, cb] : lengths)
    {
        SCOPED_TRACE(testing::Message() << size.first << " x " << size.second);
        const SampleBufferPtr pBuffer = Make(kSampleFormatNv12, size.first, size.second);
        ASSERT_TRUE(pBuffer);
        EXPECT_EQ(LengthOf(pBuffer), cb);
        EXPECT_EQ(pBuffer->GetStride(), size.first);
        EXPECT_EQ(pBuffer->GetFormat(), kSampleFormatNv12);
    }
}

TEST(CreateSampleBuffer, RefusesUnknownFormatsAndSizes)
{
    const std::uint64_t before = LiveBuffers();
    EXPECT_FALSE(Make(24, 4, 4));
    EXPECT_FALSE(Make(0, 4, 4));
    EXPECT_FALSE(Make(kSampleFormatBgra, 0, 4));
    EXPECT_FALSE(Make(kSampleFormatBgra, 4, 0));
    EXPECT_FALSE(Make(kSampleFormatBgra, 32'768, 1));
    EXPECT_FALSE(Make(kSampleFormatBgra, 1, 32'768));
    EXPECT_FALSE(Make(kSampleFormatBgra, 0xFFFFFFFF, 0xFFFFFFFF));
    EXPECT_FALSE(Make(kSampleFormatBgra, 16'384, 16'385)); // one row above 1 GiB
    EXPECT_FALSE(Make(kSampleFormatNv12, 32'767, 32'767)); // 1.5 GiB
    EXPECT_EQ(LiveBuffers(), before);
}

TEST(CreateSampleBuffer, TakesTheLargestSizes)
{
    EXPECT_TRUE(Make(kSampleFormatBgra, 32'767, 1));
    EXPECT_TRUE(Make(kSampleFormatBgra, 1, 32'767));
    const SampleBufferPtr pWhole = Make(kSampleFormatBgra, 16'384, 16'384);
    ASSERT_TRUE(pWhole);
    EXPECT_EQ(LengthOf(pWhole), 1U << 30);
}

TEST(CreateSampleBuffer, AnswersNullWhenMemoryIsShort)
{
    const std::uint64_t before = LiveBuffers();
    SystemMemory::FailNext(1'000);
    EXPECT_FALSE(Make(kSampleFormatBgra, 3'001, 1'003));
    EXPECT_EQ(AllocateSamplePixels(777'777), nullptr);
    SystemMemory::FailNext(0);
    EXPECT_EQ(LiveBuffers(), before);
    EXPECT_TRUE(Make(kSampleFormatBgra, 3'001, 1'003));
}

TEST(CreateSampleBuffer, GivesBackWhatRestsBeforeItAnswersThatMemoryIsShort)
{
    Make(kSampleFormatBgra, 640, 480); // rests now
    SystemMemory::FailNext(1);
    EXPECT_TRUE(Make(kSampleFormatBgra, 3'001, 2'003));
    SystemMemory::FailNext(0);
    tagSampleBufferPoolInfo info;
    GetSampleBufferPoolInfo(&info);
    EXPECT_LT(info.cbPooled, 3'001U * 2'003U * 5U); // nothing but the last buffer's own storage
    EXPECT_GE(info.cbPooled, 3'001U * 2'003U * 4U);
}

TEST(ISampleBuffer, HandsOutAlignedRowsWithRoomBehindThem)
{
    for (const std::uint32_t width : {1U, 3U, 17U, 255U, 1'024U, 1'921U})
    {
        const SampleBufferPtr pBuffer = Make(kSampleFormatBgra, width, 3);
        ASSERT_TRUE(pBuffer);
        std::uint8_t* const p = PixelsOf(pBuffer);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(p) % 64, 0U);
        std::memset(p, 0x5A, LengthOf(pBuffer) + 64); // a kernel's last whole vector
    }
}

TEST(ISampleBuffer, GetBufferNeedsSomewhereToPutThePointer)
{
    const SampleBufferPtr pBuffer = Make(kSampleFormatBgra, 4, 4);
    std::uint32_t cb = 12'345;
    EXPECT_FALSE(pBuffer->GetBuffer(nullptr, &cb));
    EXPECT_EQ(cb, 12'345U);
}

TEST(ISampleBuffer, CountsItsReferences)
{
    const std::uint64_t before = LiveBuffers();
    ISampleBuffer* const pBuffer = CreateSampleBuffer(kSampleFormatBgra, 4, 4, 0);
    ASSERT_NE(pBuffer, nullptr);
    EXPECT_EQ(LiveBuffers(), before + 1);
    EXPECT_EQ(pBuffer->AddRef(), 2U);
    EXPECT_EQ(pBuffer->AddRef(), 3U);
    EXPECT_EQ(pBuffer->Release(), 2U);
    EXPECT_EQ(pBuffer->Release(), 1U);
    EXPECT_EQ(LiveBuffers(), before + 1);
    EXPECT_EQ(pBuffer->Release(), 0U);
    EXPECT_EQ(LiveBuffers(), before);
}

TEST(ISampleBuffer, KeepsTheDisplayAspectAndTheAlphaFlagItIsGiven)
{
    const SampleBufferPtr pBuffer = Make(kSampleFormatBgra, 4, 4);
    pBuffer->SetRatioX(16);
    pBuffer->SetRatioY(9);
    pBuffer->SetAlphaFlag(true);
    EXPECT_EQ(pBuffer->GetRatioX(), 16U);
    EXPECT_EQ(pBuffer->GetRatioY(), 9U);
    EXPECT_TRUE(pBuffer->GetAlphaFlag());
    pBuffer->SetAlphaFlag(false);
    EXPECT_FALSE(pBuffer->GetAlphaFlag());
}

TEST(ISampleBuffer, SetSizeDeclaresTheRowsAnewOverTheSamePixels)
{
    const SampleBufferPtr pBuffer = Make(kSampleFormatBgra, 6, 4);
    std::uint8_t* const p = PixelsOf(pBuffer);
    std::fill_n(p, 96, std::uint8_t{7});
    pBuffer->SetSize(4, 6); // a quarter turn
    EXPECT_EQ(pBuffer->GetWidth(), 4U);
    EXPECT_EQ(pBuffer->GetHeight(), 6U);
    EXPECT_EQ(pBuffer->GetStride(), 16U);
    EXPECT_EQ(LengthOf(pBuffer), 96U);
    EXPECT_EQ(PixelsOf(pBuffer), p);
    EXPECT_EQ(p[95], 7);
    EXPECT_EQ(pBuffer->GetRatioX(), 6U);
    EXPECT_EQ(pBuffer->GetRatioY(), 4U);
    pBuffer->SetSize(3, 2);
    EXPECT_EQ(LengthOf(pBuffer), 24U);
    pBuffer->SetSize(6, 4); // the storage has not become smaller
    EXPECT_EQ(LengthOf(pBuffer), 96U);
}

TEST(ISampleBuffer, SetSizeIgnoresWhatDoesNotFitTheStorage)
{
    const SampleBufferPtr pBuffer = Make(kSampleFormatBgra, 6, 4);
    const auto refuses = [&](std::uint32_t width, std::uint32_t height)
    {
        pBuffer->SetSize(width, height);
        return pBuffer->GetWidth() == 6 && pBuffer->GetHeight() == 4;
    };
    EXPECT_TRUE(refuses(5, 5)); // 25 pixels into 24
    EXPECT_TRUE(refuses(0, 4));
    EXPECT_TRUE(refuses(6, 0));
    EXPECT_TRUE(refuses(0x40000001, 4)); // 16 bytes a row when counted in 32 bits
    EXPECT_TRUE(refuses(32'768, 1));
}

TEST(ISampleBuffer, SetSizeCountsNv12Planes)
{
    const SampleBufferPtr pBuffer = Make(kSampleFormatNv12, 4, 4); // 24 bytes
    pBuffer->SetSize(5, 3);                                        // 15 + 12
    EXPECT_EQ(pBuffer->GetWidth(), 4U);
    pBuffer->SetSize(2, 8); // 16 + 8
    EXPECT_EQ(pBuffer->GetWidth(), 2U);
    EXPECT_EQ(LengthOf(pBuffer), 24U);
}

TEST(ISampleBuffer, CopyFromTakesThePixelsAndNothingElse)
{
    for (const std::uint32_t format : {kSampleFormatBgra, kSampleFormatNv12})
    {
        const SampleBufferPtr pSource = Make(format, 5, 3, 1);
        const SampleBufferPtr pTarget = Make(format, 5, 3);
        const std::uint32_t cb = LengthOf(pSource);
        for (std::uint32_t i = 0; i < cb; ++i)
            PixelsOf(pSource)[i] = static_cast<std::uint8_t>(i * 3 + 1);
        pSource->SetAlphaFlag(true);
        pSource->SetRatioX(4);
        EXPECT_TRUE(pTarget->CopyFrom(pSource.Get()));
        EXPECT_EQ(std::memcmp(PixelsOf(pTarget), PixelsOf(pSource), cb), 0);
        EXPECT_FALSE(pTarget->GetAlphaFlag());
        EXPECT_EQ(pTarget->GetRatioX(), 5U);
        EXPECT_EQ(pTarget->GetFlag(), 0U);
    }
}

TEST(ISampleBuffer, CopyFromRefusesAnotherSizeOrFormatAndChangesNothing)
{
    const SampleBufferPtr pTarget = Make(kSampleFormatBgra, 4, 2);
    std::fill_n(PixelsOf(pTarget), 32, std::uint8_t{9});
    const SampleBufferPtr pTurned = Make(kSampleFormatBgra, 2, 4);
    std::fill_n(PixelsOf(pTurned), 32, std::uint8_t{1});
    const SampleBufferPtr pNv12 = Make(kSampleFormatNv12, 4, 2);
    EXPECT_FALSE(pTarget->CopyFrom(nullptr));
    EXPECT_FALSE(pTarget->CopyFrom(pTurned.Get()));
    EXPECT_FALSE(pTarget->CopyFrom(pNv12.Get()));
    EXPECT_EQ(std::count(PixelsOf(pTarget), PixelsOf(pTarget) + 32, 9), 32);
    pTurned->SetSize(4, 2); // the declared size counts
    EXPECT_TRUE(pTarget->CopyFrom(pTurned.Get()));
    EXPECT_EQ(PixelsOf(pTarget)[31], 1);
}

TEST(ISampleBuffer, CopyFromItselfIsNoHarm)
{
    const SampleBufferPtr pBuffer = Make(kSampleFormatBgra, 4, 2);
    std::fill_n(PixelsOf(pBuffer), 32, std::uint8_t{9});
    EXPECT_TRUE(pBuffer->CopyFrom(pBuffer.Get()));
    EXPECT_EQ(PixelsOf(pBuffer)[31], 9);
}

TEST(ISampleBuffer, HasHarmlessReservedSlots)
{
    const SampleBufferPtr pBuffer = Make(kSampleFormatBgra, 4, 2);
    pBuffer->Reserved4();
    pBuffer->Reserved5();
    pBuffer->Reserved6();
    pBuffer->Reserved7();
    pBuffer->Reserved8();
    pBuffer->Reserved9();
    pBuffer->Reserved10();
    pBuffer->Reserved18();
    pBuffer->Reserved20();
    EXPECT_EQ(pBuffer->GetWidth(), 4U);
}

class AdoptedPixels : public testing::Test
{
protected:
    void SetUp() override
    {
        m_info.pData = AllocateSamplePixels(96);
        ASSERT_NE(m_info.pData, nullptr);
        std::fill_n(m_info.pData, 96, std::uint8_t{42});
        m_info.nWidth = 6;
        m_info.nHeight = 4;
        m_info.nStride = 24;
    }

    tagSampleInfo m_info;
};

TEST_F(AdoptedPixels, BecomeABufferWithoutACopy)
{
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(m_info.pData) % 64, 0U);
    const SampleBufferPtr pBuffer = SampleBufferPtr::Adopt(CreateSampleBufferEx(kSampleFormatBgra, &m_info));
    ASSERT_TRUE(pBuffer);
    EXPECT_EQ(PixelsOf(pBuffer), m_info.pData);
    EXPECT_EQ(LengthOf(pBuffer), 96U);
    EXPECT_EQ(PixelsOf(pBuffer)[95], 42);
    EXPECT_EQ(pBuffer->GetFormat(), 32U);
    EXPECT_EQ(pBuffer->GetFlag(), 0U);
    EXPECT_EQ(pBuffer->GetRatioX(), 6U); // 16 and 9 in the record say nothing about the picture
    EXPECT_EQ(pBuffer->GetRatioY(), 4U);
    EXPECT_FALSE(pBuffer->GetAlphaFlag());
}

TEST_F(AdoptedPixels, StayTheCallersWhenTheyAreRefused)
{
    const std::uint64_t before = LiveBuffers();
    const auto refuses = [&](std::uint32_t format, auto change)
    {
        tagSampleInfo info = m_info;
        change(info);
        return CreateSampleBufferEx(format, &info) == nullptr;
    };
    EXPECT_TRUE(refuses(kSampleFormatNv12, [](tagSampleInfo&) {}));
    EXPECT_TRUE(refuses(24, [](tagSampleInfo&) {}));
    EXPECT_TRUE(refuses(kSampleFormatBgra, [](tagSampleInfo& i) { i.pData = nullptr; }));
    EXPECT_TRUE(refuses(kSampleFormatBgra, [](tagSampleInfo& i) { i.nWidth = 0; }));
    EXPECT_TRUE(refuses(kSampleFormatBgra, [](tagSampleInfo& i) { i.nHeight = 40'000; }));
    EXPECT_TRUE(refuses(kSampleFormatBgra, [](tagSampleInfo& i) { i.nHeight = 5; })); // does not fit the memory
    EXPECT_TRUE(refuses(kSampleFormatBgra, [](tagSampleInfo& i) { i.nStride = 28; }));
    EXPECT_EQ(CreateSampleBufferEx(kSampleFormatBgra, nullptr), nullptr);
    EXPECT_EQ(LiveBuffers(), before);
    EXPECT_EQ(m_info.pData[95], 42);
    FreeSamplePixels(m_info.pData);
}

TEST(AllocateSamplePixels, RefusesNothingAndTooMuch)
{
    EXPECT_EQ(AllocateSamplePixels(0), nullptr);
    EXPECT_EQ(AllocateSamplePixels((std::size_t{1} << 30) + 1), nullptr);
    EXPECT_EQ(AllocateSamplePixels(~std::size_t{0}), nullptr);
    std::uint8_t* const p = AllocateSamplePixels(std::size_t{1} << 30);
    EXPECT_NE(p, nullptr);
    FreeSamplePixels(p);
    FreeSamplePixels(nullptr);
}

TEST(GetSampleBufferPoolInfo, ToleratesNull)
{
    GetSampleBufferPoolInfo(nullptr);
}
} // namespace
