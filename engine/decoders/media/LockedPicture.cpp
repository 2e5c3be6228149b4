#include "engine/decoders/media/LockedPicture.h"

#include <algorithm>
#include <cstdlib>

CLockedPicture::~CLockedPicture()
{
    if (m_pPixels == nullptr)
        return;
    if (m_pPicture)
        m_pPicture->Unlock2D();
    else
        m_pBuffer->Unlock();
}

HRESULT CLockedPicture::Lock(IMFSample* pSample)
{
    HRESULT hr = pSample->ConvertToContiguousBuffer(m_pBuffer.Put());
    if (FAILED(hr))
        return hr;
    BYTE* pPixels = nullptr;
    if (SUCCEEDED(m_pBuffer->QueryInterface(IID_PPV_ARGS(m_pPicture.Put()))) && m_pPicture)
    {
        hr = m_pPicture->Lock2D(&pPixels, &m_nPitch);
        if (SUCCEEDED(hr) && FAILED(hr = m_pPicture->GetContiguousLength(&m_cbLength)))
            m_pPicture->Unlock2D();
    }
    else
    {
        DWORD cbMax = 0;
        m_pPicture = {};
        hr = m_pBuffer->Lock(&pPixels, &cbMax, &m_cbLength);
    }
    if (FAILED(hr))
        return hr;
    m_pPixels = pPixels;
    return m_pPixels != nullptr ? S_OK : E_UNEXPECTED;
}

bool CLockedPicture::Holds(std::uint64_t cbRow, std::uint64_t nRows, std::uint64_t cbStored) const
{
    if (cbRow == 0 || nRows == 0)
        return false;
    if (m_nPitch == 0)
        return nRows <= m_cbLength / cbRow;
    // The length counts rows without padding. Where nobody says how long such a row is, the pitch is the safe guess.
    const auto cbPitch = static_cast<std::uint64_t>(std::abs(static_cast<std::int64_t>(m_nPitch)));
    const std::uint64_t cbTight = cbStored != 0 ? std::min(cbStored, cbPitch) : cbPitch;
    return cbRow <= cbTight && nRows <= m_cbLength / cbTight;
}
