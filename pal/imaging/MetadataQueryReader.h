/// @file MetadataQueryReader.h
/// Queries about a file or one of its frames.
#pragma once

#include "pal/imaging/ImageCodec.h"
#include "pal/kernel/ComObject.h"

#include <optional>

namespace pal
{
/// Knows the formats' own paths (see the codecs) and, for a frame, "System.Photo.Orientation", a VT_UI2 of 1 to 8.
/// Letter case does not count.
class MetadataQueryReader final : public ComObject<MetadataQueryReader, IWICMetadataQueryReader>
{
public:
    /// @param frame  nothing: the file's own values
    MetadataQueryReader(std::shared_ptr<ImageCodec> pCodec, std::optional<UINT> frame)
        : m_pCodec(std::move(pCodec)), m_frame(frame)
    {
    }

    HRESULT STDMETHODCALLTYPE GetContainerFormat(GUID* pFormat) override;
    HRESULT STDMETHODCALLTYPE GetLocation(UINT, WCHAR*, UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetMetadataByName(LPCWSTR name, PROPVARIANT* pValue) override;
    HRESULT STDMETHODCALLTYPE GetEnumerator(IEnumString**) override { return E_NOTIMPL; }

private:
    const std::shared_ptr<ImageCodec> m_pCodec;
    const std::optional<UINT> m_frame;
};
} // namespace pal
