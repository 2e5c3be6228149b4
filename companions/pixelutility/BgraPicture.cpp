#include "companions/pixelutility/BgraPicture.h"

#include <cstring>

bool BgraPicture::FromDescriptor(const tagSampleInfo* pInfo, BgraPicture& picture)
{
    constexpr std::uint32_t kMaxSide = 32'767;
    if (!pInfo || !pInfo->pData || pInfo->nWidth == 0 || pInfo->nHeight == 0)
        return false;
    if (pInfo->nWidth > kMaxSide || pInfo->nHeight > kMaxSide)
        return false;
    if (pInfo->nStride < pInfo->nWidth * 4 || pInfo->nStride > 0x7FFFFFFF)
        return false;
    picture = {pInfo->pData, pInfo->nWidth, pInfo->nHeight, pInfo->nStride};
    return true;
}

void BgraPicture::Clear() const
{
    for (std::uint32_t y = 0; y < height; ++y)
        std::memset(Row(y), 0, RowBytes());
}
