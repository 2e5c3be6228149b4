#include "engine/platform/SampleBuffer.h"
#include "tests/companions/SystemMemory.h"
#include "tests/companions/TestSeed.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstring>
#include <thread>
#include <vector>

namespace
{
constexpr std::uint64_t kLimit = std::uint64_t{256} << 20;

SampleBufferPtr Make(std::uint32_t width, std::uint32_t height)
{
    return SampleBufferPtr::Adopt(CreateSampleBuffer(kSampleFormatBgra, width, height, 0));
}

std::uint8_t* PixelsOf(const SampleBufferPtr& pBuffer)
{
    std::uint8_t* p = nullptr;
    EXPECT_TRUE(pBuffer->GetBuffer(&p, nullptr));
    return p;
}

tagSampleBufferPoolInfo Info()
{
    tagSampleBufferPoolInfo info;
    GetSampleBufferPoolInfo(&info);
    return info;
}

TEST(SamplePool, HandsTheStorageOfAReleasedBufferToTheNextOfItsSize)
{
    SampleBufferPtr pFirst = Make(1'920, 1'080);
    const std::uint8_t* const p = PixelsOf(pFirst);
    const tagSampleBufferPoolInfo before = Info();
    pFirst = SampleBufferPtr();
    EXPECT_GE(Info().cbPooled, before.cbPooled + std::uint64_t{1'920} * 1'080 * 4);
    const SampleBufferPtr pSecond = Make(1'920, 1'080);
    EXPECT_EQ(PixelsOf(pSecond), p);
    EXPECT_EQ(Info().nHits, before.nHits + 1);
    EXPECT_EQ(Info().nMisses, before.nMisses);
    EXPECT_EQ(Info().cbPooled, before.cbPooled);
}

TEST(SamplePool, ForgetsTheFormerOwnersSettings)
{
    {
        const SampleBufferPtr pFirst = SampleBufferPtr::Adopt(CreateSampleBuffer(kSampleFormatBgra, 64, 64, 1));
        pFirst->SetAlphaFlag(true);
        pFirst->SetSize(8, 8);
        pFirst->SetRatioX(3);
    }
    const SampleBufferPtr pSecond = Make(64, 64);
    EXPECT_EQ(pSecond->GetFlag(), 0U);
    EXPECT_FALSE(pSecond->GetAlphaFlag());
    EXPECT_EQ(pSecond->GetWidth(), 64U);
    EXPECT_EQ(pSecond->GetRatioX(), 64U);
    EXPECT_EQ(pSecond->AddRef(), 2U);
    EXPECT_EQ(pSecond->Release(), 1U);
}

TEST(SamplePool, ASmallerFrameOfTheSameClassDeclaresOnlyItsOwnBytes)
{
    // 1080 and 1079 rows share a class; the recycled storage must not let the smaller grow to the larger.
    Make(1'920, 1'080);
    const SampleBufferPtr pSmaller = Make(1'920, 1'079);
    pSmaller->SetSize(1'920, 1'080);
    EXPECT_EQ(pSmaller->GetHeight(), 1'079U);
}

TEST(SamplePool, TakesNoMemoryInASteadyState)
{
    const auto frame = []
    {
        const SampleBufferPtr pDecoded = Make(1'280, 720);
        const SampleBufferPtr pScaled = Make(640, 360);
    };
    frame();
    const std::uint64_t allocations = SystemMemory::Allocations();
    const std::uint64_t misses = Info().nMisses;
    for (int i = 0; i < 2'000; ++i)
        frame();
    EXPECT_EQ(SystemMemory::Allocations(), allocations);
    EXPECT_EQ(Info().nMisses, misses);
}

TEST(SamplePool, KeepsAtMostItsLimit)
{
    std::vector<SampleBufferPtr> buffers(40); // 340 MB
    for (SampleBufferPtr& pBuffer : buffers)
        pBuffer = Make(1'920, 1'100);
    buffers.clear();
    EXPECT_LE(Info().cbPooled, kLimit);
    EXPECT_GT(Info().cbPooled, kLimit / 2);
}

TEST(SamplePool, KeepsNoPictureLargerThanItsLimit)
{
    const std::uint64_t before = Info().cbPooled;
    Make(16'000, 5'000); // 320 MB
    EXPECT_EQ(Info().cbPooled, before);
}

TEST(SamplePool, LetsGoOfSizesThatAreNoLongerUsed)
{
    Make(3'840, 2'160);
    for (int i = 0; i < 700; ++i)
        Make(320, 240);
    const std::uint64_t misses = Info().nMisses;
    EXPECT_LT(Info().cbPooled, std::uint64_t{3'840} * 2'160 * 4);
    Make(3'840, 2'160);
    EXPECT_EQ(Info().nMisses, misses + 1);
}

TEST(SamplePool, BoundsTheNumberOfSmallBlocks)
{
    std::vector<SampleBufferPtr> buffers(1'000);
    const auto fill = [&buffers]
    {
        for (SampleBufferPtr& pBuffer : buffers)
            pBuffer = Make(16, 16);
    };
    fill();
    buffers.assign(1'000, SampleBufferPtr());
    const std::uint64_t misses = Info().nMisses;
    fill();
    EXPECT_GT(Info().nMisses, misses + 500);
}

TEST(SamplePool, RecyclesPixelsThatNobodyAdopted)
{
    std::uint8_t* const p = AllocateSamplePixels(500'000);
    FreeSamplePixels(p);
    std::uint8_t* const pAgain = AllocateSamplePixels(500'000);
    EXPECT_EQ(pAgain, p);
    FreeSamplePixels(pAgain);
}

#if defined(__SANITIZE_ADDRESS__)
TEST(SamplePoolDeathTest, ShowsLateAccessesToTheAddressSanitizer)
{
    const auto readLate = []
    {
        SampleBufferPtr pBuffer = Make(64, 64);
        volatile const std::uint8_t* const p = PixelsOf(pBuffer);
        pBuffer = SampleBufferPtr();
        return p[100];
    };
    EXPECT_DEATH(readLate(), "use-after-poison");
}
#endif

TEST(SamplePool, ServesManyThreadsWithStorageOfTheirOwn)
{
    constexpr std::size_t kThreads = 8;
    constexpr int kRounds = 400;
    const std::uint64_t live = Info().nLive;
    std::atomic<int> errors = 0;
    const auto work = [&errors](std::uint8_t mark)
    {
        std::array<SampleBufferPtr, 4> held;
        for (int i = 0; i < kRounds; ++i)
        {
            const auto slot = static_cast<std::size_t>(i) % held.size();
            if (held[slot])
            {
                const std::uint8_t* const p = PixelsOf(held[slot]);
                const std::size_t cb = std::size_t{held[slot]->GetWidth()} * held[slot]->GetHeight() * 4;
                errors += p[0] != mark || p[cb / 2] != mark || p[cb - 1] != mark;
            }
            held[slot] = Make(32 + static_cast<std::uint32_t>(i % 5) * 16, 32);
            std::memset(PixelsOf(held[slot]), mark, std::size_t{held[slot]->GetWidth()} * 128);
        }
    };
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < kThreads; ++i)
        threads.emplace_back(work, static_cast<std::uint8_t>(i + 1));
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(errors, 0);
    EXPECT_EQ(Info().nLive, live);
}

TEST(SamplePool, LetsAnyThreadReleaseTheLastReference)
{
    // The pixels are written by one thread and the buffer ends in whichever thread lets go last; the storage then
    // serves the first again. A missing ordering between them is what the thread sanitizer looks for here.
    std::vector<std::thread> threads;
    std::atomic<ISampleBuffer*> shared = nullptr;
    constexpr int kFrames = 2'000;
    constexpr std::size_t kBytes = std::size_t{64} * 64 * 4;
    threads.emplace_back(
        [&shared]
        {
            for (int i = 0; i < kFrames; ++i)
            {
                const SampleBufferPtr pFrame = Make(64, 64);
                std::memset(PixelsOf(pFrame), i, kBytes);
                ISampleBuffer* const pOurs = SampleBufferPtr(pFrame).Detach();
                if (ISampleBuffer* const pMissed = shared.exchange(pOurs))
                    pMissed->Release();
            }
        });
    std::atomic<bool> stop = false;
    threads.emplace_back(
        [&shared, &stop]
        {
            while (!stop)
            {
                const SampleBufferPtr pFrame = SampleBufferPtr::Adopt(shared.exchange(nullptr));
                if (!pFrame)
                    continue;
                EXPECT_EQ(PixelsOf(pFrame)[0], PixelsOf(pFrame)[kBytes - 1]);
            }
        });
    threads[0].join();
    stop = true;
    threads[1].join();
    SampleBufferPtr::Adopt(shared.exchange(nullptr));
}
} // namespace
