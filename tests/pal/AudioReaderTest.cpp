#include "engine/platform/RefPtr.h"
#include "tests/pal/SoundBytes.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <mfapi.h>
#include <mferror.h>
#include <mfreadwrite.h>

#include <cmath>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace
{
constexpr DWORD kStream = MF_SOURCE_READER_FIRST_AUDIO_STREAM;

class AudioReader : public testing::Test
{
protected:
    /// Opens a file with these bytes.
    HRESULT Open(const std::string& bytes, const std::string& name = "sound.wav")
    {
        const test_support::TemporaryFolder folder; // an open file stays
        return MFCreateSourceReaderFromURL(folder.Write(name, bytes).wstring().c_str(), nullptr, reader.Put());
    }
    HRESULT Ask(const GUID& subtype, std::optional<UINT32> rate, std::optional<UINT32> channels)
    {
        ComPtr<IMFMediaType> pType;
        MFCreateMediaType(pType.Put());
        pType->SetGUID(MF_MT_MAJOR_TYPE, MFMediaType_Audio);
        pType->SetGUID(MF_MT_SUBTYPE, subtype);
        if (rate)
            pType->SetUINT32(MF_MT_AUDIO_SAMPLES_PER_SECOND, *rate);
        if (channels)
            pType->SetUINT32(MF_MT_AUDIO_NUM_CHANNELS, *channels);
        return reader->SetCurrentMediaType(kStream, nullptr, pType.Get());
    }
    void Seek(LONGLONG time)
    {
        PROPVARIANT position;
        PropVariantInit(&position);
        position.vt = VT_I8;
        position.hVal.QuadPart = time;
        EXPECT_EQ(reader->SetCurrentPosition(GUID_NULL, position), S_OK);
    }
    /// The next chunk; its time and flags go to #time and #flags. Empty at the end.
    template <class T> std::vector<T> Next()
    {
        ComPtr<IMFSample> pSample;
        DWORD index = 99;
        EXPECT_EQ(reader->ReadSample(kStream, 0, &index, &flags, &time, pSample.Put()), S_OK);
        std::vector<T> values;
        EXPECT_EQ(static_cast<bool>(pSample), (flags & MF_SOURCE_READERF_ENDOFSTREAM) == 0);
        if (!pSample)
            return values;
        LONGLONG sampleTime = -1;
        EXPECT_EQ(pSample->GetSampleTime(&sampleTime), S_OK);
        EXPECT_EQ(sampleTime, time);
        EXPECT_EQ(pSample->GetSampleDuration(&duration), S_OK);
        ComPtr<IMFMediaBuffer> pBuffer;
        BYTE* pBytes = nullptr;
        DWORD cb = 0;
        EXPECT_EQ(pSample->ConvertToContiguousBuffer(pBuffer.Put()), S_OK);
        EXPECT_EQ(pBuffer->Lock(&pBytes, nullptr, &cb), S_OK);
        values.resize(cb / sizeof(T));
        std::memcpy(values.data(), pBytes, cb);
        pBuffer->Unlock();
        return values;
    }
    template <class T> std::vector<T> All()
    {
        std::vector<T> all;
        for (std::vector<T> part = Next<T>(); !part.empty(); part = Next<T>())
            all.insert(all.end(), part.begin(), part.end());
        return all;
    }
    UINT32 Native(const GUID& key)
    {
        ComPtr<IMFMediaType> pType;
        UINT32 value = 0;
        EXPECT_EQ(reader->GetNativeMediaType(kStream, 0, pType.Put()), S_OK);
        return SUCCEEDED(pType->GetUINT32(key, &value)) ? value : 0;
    }
    UINT32 Current(const GUID& key)
    {
        ComPtr<IMFMediaType> pType;
        UINT32 value = 0;
        EXPECT_EQ(reader->GetCurrentMediaType(kStream, pType.Put()), S_OK);
        return SUCCEEDED(pType->GetUINT32(key, &value)) ? value : 0;
    }

    ComPtr<IMFSourceReader> reader;
    DWORD flags = 0;
    LONGLONG time = 0;
    LONGLONG duration = 0;
};

/// Samples 0, 1, 2, ... of one channel.
std::vector<std::int16_t> Ramp(std::size_t count)
{
    std::vector<std::int16_t> values(count);
    for (std::size_t i = 0; i < count; ++i)
        values[i] = static_cast<std::int16_t>(i % 30'000);
    return values;
}
} // namespace

TEST_F(AudioReader, NativeTypeTellsHowTheSoundIsStored)
{
    ASSERT_EQ(Open(WaveBytes(Ramp(600), 32'000, 2)), S_OK);
    ComPtr<IMFMediaType> pType;
    ASSERT_EQ(reader->GetNativeMediaType(kStream, 0, pType.Put()), S_OK);
    GUID guid = GUID_NULL;
    EXPECT_EQ(pType->GetMajorType(&guid), S_OK);
    EXPECT_EQ(guid, MFMediaType_Audio);
    EXPECT_EQ(pType->GetGUID(MF_MT_SUBTYPE, &guid), S_OK);
    EXPECT_EQ(guid, MFAudioFormat_PCM);
    EXPECT_EQ(Native(MF_MT_AUDIO_SAMPLES_PER_SECOND), 32'000U);
    EXPECT_EQ(Native(MF_MT_AUDIO_NUM_CHANNELS), 2U);
    EXPECT_EQ(Native(MF_MT_AUDIO_BITS_PER_SAMPLE), 16U);
    EXPECT_EQ(Native(MF_MT_AUDIO_BLOCK_ALIGNMENT), 4U);
    EXPECT_EQ(Native(MF_MT_AUDIO_AVG_BYTES_PER_SECOND), 128'000U);
    EXPECT_EQ(reader->GetNativeMediaType(kStream, 1, pType.Put()), MF_E_NO_MORE_TYPES);
    EXPECT_EQ(reader->GetNativeMediaType(MF_SOURCE_READER_FIRST_VIDEO_STREAM, 0, pType.Put()),
              MF_E_INVALIDSTREAMNUMBER);
    EXPECT_EQ(reader->GetNativeMediaType(0, 0, pType.Put()), S_OK); // by its number
}

TEST_F(AudioReader, DeliversTheSamplesOfTheFile)
{
    const std::vector<std::int16_t> ramp = Ramp(20'000);
    ASSERT_EQ(Open(WaveBytes(ramp, 48'000, 2)), S_OK);
    ASSERT_EQ(Ask(MFAudioFormat_PCM, 48'000, 2), S_OK);
    EXPECT_EQ(All<std::int16_t>(), ramp);
    EXPECT_EQ(flags, MF_SOURCE_READERF_ENDOFSTREAM);
    EXPECT_TRUE(Next<std::int16_t>().empty()); // and stays there
}

TEST_F(AudioReader, TimesFollowEachOtherWithoutAGap)
{
    ASSERT_EQ(Open(WaveBytes(Ramp(44'100), 44'100, 1)), S_OK);
    ASSERT_EQ(Ask(MFAudioFormat_PCM, 48'000, 2), S_OK);
    std::size_t samples = 0;
    LONGLONG end = 0;
    for (std::vector<std::int16_t> part = Next<std::int16_t>(); !part.empty(); part = Next<std::int16_t>())
    {
        EXPECT_EQ(time, end);
        EXPECT_EQ(time, std::llround(static_cast<double>(samples) * 1e7 / 48'000));
        samples += part.size() / 2;
        end = time + duration;
    }
    EXPECT_EQ(samples, 48'000U);
    EXPECT_EQ(end, 10'000'000);
}

TEST_F(AudioReader, DeliversFloatAtTheFullScaleOfOne)
{
    ASSERT_EQ(Open(WaveBytes({16'384, -32'768, 0, 8'192}, 48'000, 1)), S_OK);
    ASSERT_EQ(Ask(MFAudioFormat_Float, std::nullopt, std::nullopt), S_OK);
    EXPECT_EQ(Current(MF_MT_AUDIO_BITS_PER_SAMPLE), 32U);
    EXPECT_EQ(All<float>(), (std::vector<float>{0.5F, -1, 0, 0.25F}));
}

TEST_F(AudioReader, WhatATypeLeavesOpenFollowsTheStream)
{
    ASSERT_EQ(Open(WaveBytes(Ramp(300), 22'050, 3)), S_OK);
    ASSERT_EQ(Ask(MFAudioFormat_PCM, std::nullopt, std::nullopt), S_OK);
    EXPECT_EQ(Current(MF_MT_AUDIO_SAMPLES_PER_SECOND), 22'050U);
    EXPECT_EQ(Current(MF_MT_AUDIO_NUM_CHANNELS), 3U);
    EXPECT_EQ(Current(MF_MT_AUDIO_BLOCK_ALIGNMENT), 6U);
    EXPECT_EQ(All<std::int16_t>(), Ramp(300));
}

TEST_F(AudioReader, ChannelsOfNoMeaningGoRoundInTurn)
{
    std::vector<std::int16_t> values;
    for (int i = 0; i < 100; ++i)
        for (const int value : {1'000, 2'000, 3'000, 4'000, 5'000, 6'000, 7'000, 8'000, 9'000, 10'000})
            values.push_back(static_cast<std::int16_t>(value));
    ASSERT_EQ(Open(WaveBytes(values, 48'000, 10)), S_OK);
    ASSERT_EQ(Ask(MFAudioFormat_PCM, 48'000, 2), S_OK);
    const std::vector<std::int16_t> mixed = All<std::int16_t>();
    ASSERT_EQ(mixed.size(), 200U);
    EXPECT_NEAR(mixed[0], 5'000, 2); // 1, 3, 5, 7, 9
    EXPECT_NEAR(mixed[1], 6'000, 2);
}

TEST_F(AudioReader, ASeekLeadsToTheNearestSample)
{
    const std::vector<std::int16_t> ramp = Ramp(30'000);
    ASSERT_EQ(Open(WaveBytes(ramp, 48'000, 1)), S_OK);
    ASSERT_EQ(Ask(MFAudioFormat_PCM, 48'000, 1), S_OK);
    for (const std::size_t sample : {0U, 1U, 10U, 29'999U, 12'345U, 12'346U, 500U})
    {
        const auto exact = static_cast<double>(sample) * 1e7 / 48'000;
        for (const double distance : {-100.0, 0.0, 100.0})
        {
            if (exact + distance < 0)
                continue;
            Seek(std::llround(exact + distance));
            const std::vector<std::int16_t> part = Next<std::int16_t>();
            ASSERT_FALSE(part.empty());
            EXPECT_EQ(part[0], ramp[sample]);
            EXPECT_EQ(time, std::llround(exact));
        }
    }
    Seek(-1);
    EXPECT_TRUE(Next<std::int16_t>().empty());
    Seek(INT64_MAX);
    EXPECT_TRUE(Next<std::int16_t>().empty());
    Seek(0);
    EXPECT_EQ(All<std::int16_t>(), ramp);
}

TEST_F(AudioReader, ANewTypeTakesOverAtTheSameTime)
{
    const std::vector<std::int16_t> ramp = Ramp(30'000);
    ASSERT_EQ(Open(WaveBytes(ramp, 48'000, 1)), S_OK);
    ASSERT_EQ(Ask(MFAudioFormat_PCM, 48'000, 1), S_OK);
    const std::size_t first = Next<std::int16_t>().size();
    ASSERT_EQ(Ask(MFAudioFormat_PCM, 48'000, 2), S_OK);
    const std::vector<std::int16_t> rest = All<std::int16_t>();
    EXPECT_EQ(first + rest.size() / 2, ramp.size());
    EXPECT_EQ(rest[0], rest[1]);
    EXPECT_NEAR(rest[0], ramp[first] * std::sqrt(0.5), 1); // the power of one channel spread over two
}

TEST_F(AudioReader, RefusesTypesThatItDoesNotDeliver)
{
    ASSERT_EQ(Open(WaveBytes(Ramp(100), 48'000, 1)), S_OK);
    EXPECT_EQ(Ask(MFAudioFormat_AAC, 48'000, 2), MF_E_INVALIDMEDIATYPE);
    EXPECT_EQ(Ask(MFAudioFormat_PCM, 48'000, 9), MF_E_INVALIDMEDIATYPE);
    EXPECT_EQ(Ask(MFAudioFormat_PCM, 100'000'000, 2), MF_E_INVALIDMEDIATYPE);
    ComPtr<IMFMediaType> pType;
    MFCreateMediaType(pType.Put());
    EXPECT_EQ(reader->SetCurrentMediaType(kStream, nullptr, pType.Get()), MF_E_INVALIDMEDIATYPE);
    pType->SetGUID(MF_MT_MAJOR_TYPE, MFMediaType_Audio);
    pType->SetGUID(MF_MT_SUBTYPE, MFAudioFormat_PCM);
    pType->SetUINT32(MF_MT_AUDIO_BITS_PER_SAMPLE, 24);
    EXPECT_EQ(reader->SetCurrentMediaType(kStream, nullptr, pType.Get()), MF_E_INVALIDMEDIATYPE);
    ComPtr<IMFSample> pSample;
    EXPECT_EQ(reader->ReadSample(kStream, 0, nullptr, nullptr, nullptr, pSample.Put()), MF_E_INVALIDREQUEST);
}

TEST_F(AudioReader, SelectionDecides)
{
    ASSERT_EQ(Open(WaveBytes(Ramp(100), 48'000, 1)), S_OK);
    BOOL selected = FALSE;
    EXPECT_EQ(reader->GetStreamSelection(kStream, &selected), S_OK);
    EXPECT_TRUE(selected); // there is nothing else
    ASSERT_EQ(Ask(MFAudioFormat_PCM, 48'000, 1), S_OK);
    ASSERT_EQ(reader->SetStreamSelection(MF_SOURCE_READER_ALL_STREAMS, FALSE), S_OK);
    ComPtr<IMFSample> pSample;
    EXPECT_EQ(reader->ReadSample(kStream, 0, nullptr, nullptr, nullptr, pSample.Put()), MF_E_INVALIDREQUEST);
    ASSERT_EQ(reader->SetStreamSelection(kStream, TRUE), S_OK);
    EXPECT_EQ(reader->ReadSample(MF_SOURCE_READER_ANY_STREAM, 0, nullptr, nullptr, nullptr, pSample.Put()), S_OK);
    EXPECT_TRUE(pSample);
    EXPECT_EQ(reader->SetStreamSelection(MF_SOURCE_READER_FIRST_VIDEO_STREAM, TRUE), MF_E_INVALIDSTREAMNUMBER);
    EXPECT_EQ(reader->Flush(kStream), S_OK);
}

TEST_F(AudioReader, AChangeOfTheStoredFormatIsReportedAndTheSoundGoesOn)
{
    // Two streams of ADTS frames, one after the other: 48 kHz, then 24 kHz. Each frame is silence of 1024 samples.
    std::string bytes;
    for (int i = 0; i < 40; ++i)
        bytes += SilentAdtsFrame(3);
    for (int i = 0; i < 40; ++i)
        bytes += SilentAdtsFrame(6);
    ASSERT_EQ(Open(bytes, "change.aac"), S_OK);
    ASSERT_EQ(Ask(MFAudioFormat_PCM, std::nullopt, std::nullopt), S_OK);
    EXPECT_EQ(Current(MF_MT_AUDIO_SAMPLES_PER_SECOND), 48'000U);
    int changes = 0;
    std::size_t before = 0;
    std::size_t after = 0;
    const auto channels = Current(MF_MT_AUDIO_NUM_CHANNELS);
    for (std::vector<std::int16_t> part = Next<std::int16_t>(); !part.empty(); part = Next<std::int16_t>())
    {
        if ((flags & MF_SOURCE_READERF_CURRENTMEDIATYPECHANGED) != 0)
        {
            EXPECT_NE(flags & MF_SOURCE_READERF_NATIVEMEDIATYPECHANGED, 0U);
            EXPECT_EQ(Current(MF_MT_AUDIO_SAMPLES_PER_SECOND), 24'000U);
            ++changes;
        }
        (changes == 0 ? before : after) += part.size() / channels;
    }
    EXPECT_EQ(changes, 1);
    EXPECT_NEAR(static_cast<double>(before), 40 * 1'024, 1'024);
    EXPECT_NEAR(static_cast<double>(after), 40 * 1'024, 2'048);

    // With a rate that is fixed, only the native type changes.
    ASSERT_EQ(Open(bytes, "change.aac"), S_OK);
    ASSERT_EQ(Ask(MFAudioFormat_PCM, 48'000, 2), S_OK);
    std::size_t all = 0;
    DWORD seen = 0;
    for (std::vector<std::int16_t> part = Next<std::int16_t>(); !part.empty(); part = Next<std::int16_t>())
    {
        seen |= flags;
        all += part.size() / 2;
    }
    EXPECT_EQ(seen, DWORD{MF_SOURCE_READERF_NATIVEMEDIATYPECHANGED});
    EXPECT_NEAR(static_cast<double>(all), 120 * 1'024, 4'096);
}

TEST_F(AudioReader, DurationOfABareStreamIsCounted)
{
    std::string bytes;
    for (int i = 0; i < 200; ++i)
        bytes += SilentAdtsFrame(3, i < 100 ? 0 : 200); // the rate of bits changes, so a guess is wrong
    ASSERT_EQ(Open(bytes, "bare.aac"), S_OK);
    PROPVARIANT value;
    ASSERT_EQ(reader->GetPresentationAttribute(MF_SOURCE_READER_MEDIASOURCE, MF_PD_DURATION, &value), S_OK);
    EXPECT_EQ(value.uhVal.QuadPart, 42'666'667U); // 200 * 1024 / 48,000 seconds
    ASSERT_EQ(Ask(MFAudioFormat_PCM, 48'000, 2), S_OK);
    const std::size_t first = Next<std::int16_t>().size();
    ASSERT_EQ(reader->GetPresentationAttribute(MF_SOURCE_READER_MEDIASOURCE, MF_PD_DURATION, &value), S_OK);
    EXPECT_EQ(first + All<std::int16_t>().size(), 200U * 1'024 * 2); // asking has not moved the position
}

TEST_F(AudioReader, AFileWithoutAnythingToDecodeEndsAtOnce)
{
    ASSERT_EQ(Open(WaveBytes({}, 48'000, 2)), S_OK);
    ASSERT_EQ(Ask(MFAudioFormat_PCM, 48'000, 2), S_OK);
    EXPECT_TRUE(Next<std::int16_t>().empty());
    Seek(5'000'000);
    EXPECT_TRUE(Next<std::int16_t>().empty());
}
