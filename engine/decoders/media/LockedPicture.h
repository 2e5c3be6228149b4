/// @file LockedPicture.h
/// Read access to the pixels of a media sample.
#pragma once

#include "engine/platform/RefPtr.h"

#include <mfobjects.h>

#include <cstdint>

/// Locks the picture of a sample for as long as it lives.
class CLockedPicture
{
public:
    CLockedPicture() = default;
    ~CLockedPicture(); ///< unlocks
    CLockedPicture(const CLockedPicture&) = delete;
    CLockedPicture& operator=(const CLockedPicture&) = delete;

    /// Locks the sample's one contiguous buffer, as a picture with a pitch where it is one. At most once per object.
    /// @return the first failure; nothing is locked then.
    [[nodiscard]] HRESULT Lock(IMFSample* pSample);

    const std::uint8_t* GetPixels() const { return m_pPixels; } ///< first row
    /// Bytes from one row to the next, negative for rows stored bottom-up; 0 when the buffer does not say.
    LONG GetPitch() const { return m_nPitch; }
    DWORD GetLength() const { return m_cbLength; } ///< bytes of the picture without what pads the rows
    /// Bytes from one row to the next where a row has @p cbRow bytes. Below zero for rows stored bottom-up.
    std::int64_t GetStride(std::uint64_t cbRow) const
    {
        return m_nPitch != 0 ? m_nPitch : static_cast<std::int64_t>(cbRow);
    }
    /// True when @p nRows rows of @p cbRow bytes can be read.
    /// @param cbStored  bytes of a row as it is stored, without padding: what the media type says, or 0.
    bool Holds(std::uint64_t cbRow, std::uint64_t nRows, std::uint64_t cbStored) const;

private:
    ComPtr<IMFMediaBuffer> m_pBuffer; // locked itself where it is no picture with a pitch
    ComPtr<IMF2DBuffer> m_pPicture;   // locked where there is one
    BYTE* m_pPixels = nullptr;
    LONG m_nPitch = 0;
    DWORD m_cbLength = 0;
};
