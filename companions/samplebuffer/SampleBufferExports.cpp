#include "companions/samplebuffer/SampleBuffer.h"
#include "companions/samplebuffer/SamplePool.h"
#include "engine/platform/SampleBuffer.h"

#include <cstddef>

namespace
{
constexpr std::size_t kMaxBytes = std::size_t{1} << 30;
}

ISampleBuffer* CreateSampleBuffer(std::uint32_t format, std::uint32_t width, std::uint32_t height, std::uint32_t flag)
{
    const std::uint32_t cb = SampleBytes(format, width, height);
    if (cb == 0)
        return nullptr;
    CSampleBlock* const pBlock = CSamplePool::Instance().Take(cb);
    return pBlock ? CSampleBuffer::Create(pBlock, format, width, height, flag) : nullptr;
}

ISampleBuffer* CreateSampleBufferEx(std::uint32_t format, tagSampleInfo* pInfo)
{
    if (!pInfo || !pInfo->pData || format != kSampleFormatBgra)
        return nullptr;
    const std::uint32_t cb = SampleBytes(format, pInfo->nWidth, pInfo->nHeight);
    if (cb == 0 || pInfo->nStride != pInfo->nWidth * 4)
        return nullptr;
    CSampleBlock* const pBlock = CSampleBlock::FromPixels(pInfo->pData);
    return cb <= pBlock->cbPixels ? CSampleBuffer::Create(pBlock, format, pInfo->nWidth, pInfo->nHeight, 0) : nullptr;
}

std::uint8_t* AllocateSamplePixels(std::size_t cb)
{
    if (cb == 0 || cb > kMaxBytes)
        return nullptr;
    CSampleBlock* const pBlock = CSamplePool::Instance().Take(cb);
    return pBlock ? pBlock->Pixels() : nullptr;
}

void FreeSamplePixels(std::uint8_t* pPixels)
{
    if (pPixels)
        CSamplePool::Instance().Return(CSampleBlock::FromPixels(pPixels));
}

void GetSampleBufferPoolInfo(tagSampleBufferPoolInfo* pInfo)
{
    if (pInfo)
        CSamplePool::Instance().GetInfo(*pInfo);
}
