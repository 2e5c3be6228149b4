/// @file MetadataValue.h
/// Metadata of a picture file as plain values.
#pragma once

#include <propidl.h>
#include <wincodec.h>

#include <cstddef>
#include <cstdint>

/// Answer when the file has the value, but not as the type that it must have.
inline constexpr HRESULT kWrongMetadataType = E_FAIL;

/// Asks @p reader for a value and hands it to @p take, which answers whether the type is right.
template <class Take> HRESULT ReadMetadata(IWICMetadataQueryReader* reader, const wchar_t* name, Take take)
{
    PROPVARIANT value;
    PropVariantInit(&value);
    HRESULT hr = reader->GetMetadataByName(name, &value);
    if (SUCCEEDED(hr))
        hr = take(value) ? S_OK : kWrongMetadataType;
    PropVariantClear(&value);
    return hr;
}

/// A VT_UI2. @param word  left as it is on failure
inline HRESULT ReadWord(IWICMetadataQueryReader* reader, const wchar_t* name, std::uint32_t& word)
{
    return ReadMetadata(reader, name,
                        [&](const PROPVARIANT& value)
                        {
                            if (value.vt != VT_UI2)
                                return false;
                            word = value.uiVal;
                            return true;
                        });
}

/// A VT_UI1. @param byte  left as it is on failure
inline HRESULT ReadByte(IWICMetadataQueryReader* reader, const wchar_t* name, std::uint32_t& byte)
{
    return ReadMetadata(reader, name,
                        [&](const PROPVARIANT& value)
                        {
                            if (value.vt != VT_UI1)
                                return false;
                            byte = value.bVal;
                            return true;
                        });
}

/// A VT_BOOL. @param flag  left as it is on failure
inline HRESULT ReadBool(IWICMetadataQueryReader* reader, const wchar_t* name, bool& flag)
{
    return ReadMetadata(reader, name,
                        [&](const PROPVARIANT& value)
                        {
                            if (value.vt != VT_BOOL)
                                return false;
                            flag = value.boolVal != VARIANT_FALSE;
                            return true;
                        });
}

/// A vector of bytes.
class MetadataBytes
{
public:
    MetadataBytes() { PropVariantInit(&m_value); }
    ~MetadataBytes() { PropVariantClear(&m_value); }
    MetadataBytes(const MetadataBytes&) = delete;
    MetadataBytes& operator=(const MetadataBytes&) = delete;

    /// Drops what was read before. @return a failure leaves it empty
    HRESULT Read(IWICMetadataQueryReader* reader, const wchar_t* name)
    {
        PropVariantClear(&m_value);
        const HRESULT hr = reader->GetMetadataByName(name, &m_value);
        if (SUCCEEDED(hr) && m_value.vt == (VT_VECTOR | VT_UI1))
            return S_OK;
        PropVariantClear(&m_value);
        return SUCCEEDED(hr) ? kWrongMetadataType : hr;
    }
    const std::uint8_t* Data() const { return m_value.caub.pElems; }
    std::size_t Size() const { return m_value.vt == (VT_VECTOR | VT_UI1) ? m_value.caub.cElems : 0; }

private:
    PROPVARIANT m_value;
};
