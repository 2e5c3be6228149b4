#include "engine/platform/RefPtr.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <mferror.h>
#include <mfreadwrite.h>

#include <string>

namespace
{
HRESULT Open(const std::wstring& path)
{
    ComPtr<IMFSourceReader> pReader;
    const HRESULT hr = MFCreateSourceReaderFromURL(path.c_str(), nullptr, pReader.Put());
    EXPECT_EQ(SUCCEEDED(hr), static_cast<bool>(pReader));
    return hr;
}

/// Opens a file of this name with these bytes.
HRESULT OpenNew(const std::string& name, const std::string& bytes)
{
    const test_support::TemporaryFolder folder;
    return Open(folder.Write(name, bytes).wstring());
}
} // namespace

TEST(SourceReader, SaysThatAFileIsMissing)
{
    EXPECT_EQ(Open(L"/no/such/file.mp4"), HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
}

TEST(SourceReader, RefusesWhatIsNoMediaFile)
{
    EXPECT_EQ(Open(L"/"), HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED));
    EXPECT_EQ(Open(L"/dev/zero"), HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED));
    EXPECT_EQ(OpenNew("empty.mp4", ""), MF_E_UNSUPPORTED_BYTESTREAM_TYPE);
    EXPECT_EQ(OpenNew("text.txt", "Some words, and a line.\n"), MF_E_UNSUPPORTED_BYTESTREAM_TYPE);
    EXPECT_EQ(Open(L"http://localhost/x.mp4"), HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
}

TEST(SourceReader, RefusesPlaylistsThatReachOut)
{
    EXPECT_EQ(OpenNew("list.m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:5\n#EXTINF:5,\nhttp://localhost/a.ts\n"),
              MF_E_UNSUPPORTED_BYTESTREAM_TYPE);
    EXPECT_EQ(OpenNew("list.ffconcat", "ffconcat version 1.0\nfile '/etc/passwd'\n"), MF_E_UNSUPPORTED_BYTESTREAM_TYPE);
    EXPECT_EQ(OpenNew("list.srt", "1\n00:00:00,000 --> 00:00:01,000\nWords\n"), MF_E_UNSUPPORTED_BYTESTREAM_TYPE);
}

TEST(SourceReader, GuardsItsArguments)
{
    EXPECT_EQ(MFCreateSourceReaderFromURL(nullptr, nullptr, nullptr), E_POINTER);
    ComPtr<IMFSourceReader> pReader;
    EXPECT_EQ(MFCreateSourceReaderFromURL(nullptr, nullptr, pReader.Put()), E_POINTER);
}
