#include "engine/platform/RefPtr.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TinyMatroska.h"

#include <gtest/gtest.h>

#include <mferror.h>
#include <mfidl.h>
#include <mfreadwrite.h>
#include <propkey.h>
#include <propvarutil.h>

#include <cstdint>
#include <string>

namespace
{
class MediaSource : public testing::Test
{
protected:
    void Write(const std::string& bytes) const { m_folder.Write("film.mkv", bytes); }
    HRESULT Resolve(IUnknown** ppObject) const
    {
        ComPtr<IMFSourceResolver> pResolver;
        EXPECT_EQ(MFCreateSourceResolver(pResolver.Put()), S_OK);
        MF_OBJECT_TYPE type = MF_OBJECT_INVALID;
        const std::wstring path = (m_folder.Path() / "film.mkv").wstring();
        const HRESULT hr =
            pResolver->CreateObjectFromURL(path.c_str(), MF_RESOLUTION_MEDIASOURCE, nullptr, &type, ppObject);
        EXPECT_EQ(type, SUCCEEDED(hr) ? MF_OBJECT_MEDIASOURCE : MF_OBJECT_INVALID);
        return hr;
    }
    /// 100 ns since 1601; 0 when the file does not say.
    std::uint64_t DateEncoded() const
    {
        ComPtr<IUnknown> pObject;
        ComPtr<IPropertyStore> pProperties;
        EXPECT_EQ(Resolve(pObject.Put()), S_OK);
        EXPECT_EQ(MFGetService(pObject.Get(), MF_PROPERTY_HANDLER_SERVICE, IID_PPV_ARGS(pProperties.Put())), S_OK);
        PROPVARIANT value;
        EXPECT_EQ(pProperties->GetValue(PKEY_Media_DateEncoded, &value), S_OK);
        FILETIME time = {};
        const HRESULT hr = PropVariantToFileTime(value, PSTF_UTC, &time);
        EXPECT_EQ(hr, value.vt == VT_FILETIME ? S_OK : E_INVALIDARG);
        EXPECT_TRUE(value.vt == VT_FILETIME || value.vt == VT_EMPTY);
        PropVariantClear(&value);
        return static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
    }

private:
    const test_support::TemporaryFolder m_folder;
};
} // namespace

TEST_F(MediaSource, TellsTheContainersCreationTimeInUtc)
{
    constexpr std::int64_t kDate = 352'703'167'890'000'000;       // ns from 2001: 6 March 2012, 5:06:07.89 UTC
    constexpr std::uint64_t k2001 = 146'097ULL * 864'000'000'000; // 400 years of 100 ns from 1601
    Write(test_support::TinyMatroska(kDate));
    // The demuxer rounds down to microseconds.
    EXPECT_EQ(DateEncoded(), k2001 + kDate / 100);
    Write(test_support::TinyMatroska(-1'000'000'000));
    EXPECT_EQ(DateEncoded(), k2001 - 10'000'000);
}

TEST_F(MediaSource, HasNoDateWhereTheContainerHasNone)
{
    Write(test_support::TinyMatroska({}));
    EXPECT_EQ(DateEncoded(), 0U);
}

TEST_F(MediaSource, IsNotMadeOfWhatIsNoMediaFile)
{
    ComPtr<IUnknown> pObject;
    EXPECT_EQ(Resolve(pObject.Put()), HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    Write("Some words, and a line.\n");
    EXPECT_EQ(Resolve(pObject.Put()), MF_E_UNSUPPORTED_BYTESTREAM_TYPE);
    EXPECT_FALSE(pObject);
}

TEST_F(MediaSource, OffersItsInterfacesAndServices)
{
    Write(test_support::TinyMatroska({}));
    ComPtr<IUnknown> pObject;
    ASSERT_EQ(Resolve(pObject.Put()), S_OK);
    ComPtr<IMFMediaSource> pSource;
    ComPtr<IMFGetService> pServices;
    ComPtr<IUnknown> pSame;
    ComPtr<IMFSourceReader> pReader;
    ASSERT_EQ(pObject->QueryInterface(IID_PPV_ARGS(pSource.Put())), S_OK);
    ASSERT_EQ(pSource->QueryInterface(IID_PPV_ARGS(pServices.Put())), S_OK);
    ASSERT_EQ(pServices->QueryInterface(IID_PPV_ARGS(pSame.Put())), S_OK);
    EXPECT_EQ(pSame.Get(), pObject.Get());
    EXPECT_EQ(pSource->QueryInterface(IID_PPV_ARGS(pReader.Put())), E_NOINTERFACE);
    ComPtr<IPropertyStore> pProperties;
    EXPECT_EQ(pServices->GetService(GUID_NULL, IID_PPV_ARGS(pProperties.Put())), MF_E_UNSUPPORTED_SERVICE);
    EXPECT_EQ(pServices->GetService(MF_PROPERTY_HANDLER_SERVICE, IID_PPV_ARGS(pReader.Put())), E_NOINTERFACE);
    ASSERT_EQ(pServices->GetService(MF_PROPERTY_HANDLER_SERVICE, IID_PPV_ARGS(pProperties.Put())), S_OK);
    PROPVARIANT value;
    value.vt = VT_I4;
    EXPECT_EQ(pProperties->GetValue({MF_PROPERTY_HANDLER_SERVICE, 100}, &value), S_OK); // no such property
    EXPECT_EQ(value.vt, VT_EMPTY);
    EXPECT_EQ(pProperties->GetValue(PKEY_Media_DateEncoded, nullptr), E_POINTER);
}

TEST_F(MediaSource, GivesNoServiceAfterItsEnd)
{
    Write(test_support::TinyMatroska({}));
    ComPtr<IUnknown> pObject;
    ASSERT_EQ(Resolve(pObject.Put()), S_OK);
    ComPtr<IMFMediaSource> pSource;
    ASSERT_EQ(pObject->QueryInterface(IID_PPV_ARGS(pSource.Put())), S_OK);
    EXPECT_EQ(pSource->Shutdown(), S_OK);
    EXPECT_EQ(pSource->Shutdown(), MF_E_SHUTDOWN);
    ComPtr<IPropertyStore> pProperties;
    EXPECT_EQ(MFGetService(pSource.Get(), MF_PROPERTY_HANDLER_SERVICE, IID_PPV_ARGS(pProperties.Put())), MF_E_SHUTDOWN);
}

TEST_F(MediaSource, ArgumentsAreGuarded)
{
    EXPECT_EQ(MFCreateSourceResolver(nullptr), E_POINTER);
    ComPtr<IMFSourceResolver> pResolver;
    ASSERT_EQ(MFCreateSourceResolver(pResolver.Put()), S_OK);
    MF_OBJECT_TYPE type = MF_OBJECT_MEDIASOURCE;
    ComPtr<IUnknown> pObject;
    EXPECT_EQ(pResolver->CreateObjectFromURL(nullptr, MF_RESOLUTION_MEDIASOURCE, nullptr, &type, pObject.Put()),
              E_POINTER);
    EXPECT_EQ(pResolver->CreateObjectFromURL(L"a", 2, nullptr, &type, pObject.Put()), E_INVALIDARG);
    EXPECT_EQ(type, MF_OBJECT_INVALID);
    ComPtr<IPropertyStore> pProperties;
    EXPECT_EQ(MFGetService(nullptr, MF_PROPERTY_HANDLER_SERVICE, IID_PPV_ARGS(pProperties.Put())), E_POINTER);
    EXPECT_EQ(MFGetService(pResolver.Get(), MF_PROPERTY_HANDLER_SERVICE, IID_PPV_ARGS(pProperties.Put())),
              MF_E_UNSUPPORTED_SERVICE); // an object without services
}

TEST(PropVariantToFileTime, TakesFileTimesOnly)
{
    PROPVARIANT value;
    PropVariantInit(&value);
    FILETIME time = {3, 4};
    EXPECT_EQ(PropVariantToFileTime(value, PSTF_UTC, &time), E_INVALIDARG);
    value.vt = VT_UI8;
    EXPECT_EQ(PropVariantToFileTime(value, PSTF_UTC, &time), E_INVALIDARG);
    value.vt = VT_FILETIME;
    value.filetime = {1, 2};
    EXPECT_EQ(PropVariantToFileTime(value, 1, &time), E_INVALIDARG);
    EXPECT_EQ(time.dwLowDateTime, 3U);
    EXPECT_EQ(PropVariantToFileTime(value, PSTF_UTC, nullptr), E_POINTER);
    EXPECT_EQ(PropVariantToFileTime(value, PSTF_UTC, &time), S_OK);
    EXPECT_EQ(time.dwLowDateTime, 1U);
    EXPECT_EQ(time.dwHighDateTime, 2U);
}
