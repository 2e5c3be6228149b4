/// @file ImageBytes.h
/// The bytes of a picture file, or of a part of one.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstring>
#include <memory>
#include <string>

namespace pal
{
/// A view that keeps what it looks at alive. Reads beyond the end give zeros; who must know asks Has().
class ImageBytes
{
public:
    ImageBytes() = default;
    ImageBytes(std::shared_ptr<const BYTE[]> pOwner, std::size_t cb)
        : m_pOwner(std::move(pOwner)), m_pFirst(m_pOwner.get()), m_cb(cb)
    {
    }

    /// Reads the regular file @p path whole, if its first bytes belong to a picture.
    /// @retval WINCODEC_ERR_COMPONENTNOTFOUND  they do not  @retval WINCODEC_ERR_IMAGESIZEOUTOFRANGE  a huge file
    /// Throws std::bad_alloc.
    static HRESULT ReadFile(const std::wstring& path, ImageBytes& bytes);

    const BYTE* Data() const { return m_pFirst; }
    std::size_t Size() const { return m_cb; }
    bool Has(std::size_t offset, std::size_t cb) const { return offset <= m_cb && cb <= m_cb - offset; }
    /// Bytes from @p offset on, at most @p cb of them; none when it lies behind the end.
    ImageBytes Part(std::size_t offset, std::size_t cb) const
    {
        ImageBytes part = *this;
        offset = offset < m_cb ? offset : m_cb;
        part.m_pFirst += offset;
        part.m_cb = cb < m_cb - offset ? cb : m_cb - offset;
        return part;
    }
    bool StartsWith(const char* pText, std::size_t cb) const
    {
        return Has(0, cb) && std::memcmp(m_pFirst, pText, cb) == 0;
    }

    BYTE Byte(std::size_t offset) const { return Has(offset, 1) ? m_pFirst[offset] : BYTE{0}; }
    UINT Little16(std::size_t offset) const { return Byte(offset) | static_cast<UINT>(Byte(offset + 1)) << 8; }
    UINT Little32(std::size_t offset) const { return Little16(offset) | Little16(offset + 2) << 16; }
    UINT Big16(std::size_t offset) const { return static_cast<UINT>(Byte(offset)) << 8 | Byte(offset + 1); }
    UINT Big32(std::size_t offset) const { return Big16(offset) << 16 | Big16(offset + 2); }

private:
    std::shared_ptr<const BYTE[]> m_pOwner;
    const BYTE* m_pFirst = nullptr;
    std::size_t m_cb = 0;
};
} // namespace pal
