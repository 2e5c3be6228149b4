/// @file MediaSource.h
/// What a file says about itself as a whole, behind the interfaces of a media source.
#pragma once

#include "pal/kernel/ComObject.h"

#include <mfidl.h>
#include <propsys.h>

#include <cstdint>
#include <optional>

namespace pal
{
/// The property store of a file.
class FileProperties final : public ComObject<FileProperties, IPropertyStore>
{
public:
    explicit FileProperties(std::optional<std::uint64_t> dateEncoded) : m_dateEncoded(dateEncoded) {}

    HRESULT STDMETHODCALLTYPE GetValue(REFPROPERTYKEY key, PROPVARIANT* pValue) override;

private:
    const std::optional<std::uint64_t> m_dateEncoded; ///< 100 ns since 1601, UTC
};

/// The file is read when the source is made and closed again: a source holds facts alone.
class MediaSource final : public ComObject<MediaSource, IMFMediaSource>
{
public:
    explicit MediaSource(std::optional<std::uint64_t> dateEncoded) : m_services(*this), m_dateEncoded(dateEncoded) {}

    HRESULT STDMETHODCALLTYPE Shutdown() override;

    HRESULT QueryFurther(REFIID iid, void** ppObject);

private:
    /// The second interface; counts with the source.
    class Services final : public IMFGetService
    {
    public:
        explicit Services(MediaSource& source) : m_source(source) {}
        ~Services() = default;
        HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override;
        ULONG STDMETHODCALLTYPE AddRef() override { return m_source.AddRef(); }
        ULONG STDMETHODCALLTYPE Release() override { return m_source.Release(); }
        HRESULT STDMETHODCALLTYPE GetService(REFGUID service, REFIID iid, LPVOID* ppObject) override;

    private:
        MediaSource& m_source;
    };

    Services m_services;
    const std::optional<std::uint64_t> m_dateEncoded;
    std::atomic<bool> m_isShutDown{false};
};
} // namespace pal
