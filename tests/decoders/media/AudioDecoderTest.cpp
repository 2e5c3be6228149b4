#include "tests/decoders/media/AudioDecoderFixture.h"

#include "engine/platform/RefPtr.h"
#include "tests/model/AllocationFailure.h"

#include <mferror.h>

#include <memory>
#include <numeric>

namespace
{
using Probe = AudioDecoderProbe;

class CAudioDecoderTest : public SoundFixture
{
protected:
    ~CAudioDecoderTest() override { std::free(block); }
    void TearDown() override
    {
        decoder.reset();
        SoundFixture::TearDown();
    }

    HRESULT Open() { return decoder->Initialize(L"fake.mp3"); }
    /// The next block.
    std::vector<std::uint8_t> Next()
    {
        const unsigned int cb = decoder->GetSample(&block, size);
        return {block, block + cb};
    }

    std::unique_ptr<CAudioDecoder> decoder = std::make_unique<CAudioDecoder>();
    unsigned char* block = nullptr;
    DWORD size = 0;
};

ComPtr<IMFMediaType> MakeType(const GUID& major, const GUID& subtype)
{
    ComPtr<IMFMediaType> pType;
    MFCreateMediaType(pType.Put());
    pType->SetGUID(MF_MT_MAJOR_TYPE, major);
    pType->SetGUID(MF_MT_SUBTYPE, subtype);
    return pType;
}

UINT32 Value(IMFMediaType* pType, REFGUID key)
{
    UINT32 value = 0xDEADBEEF;
    EXPECT_EQ(pType->GetUINT32(key, &value), S_OK);
    return value;
}
} // namespace

// ---- opening -----------------------------------------------------------------------------------------------------

TEST_F(CAudioDecoderTest, SelectsTheFirstAudioStreamOnly)
{
    ASSERT_EQ(Open(), S_OK);
    const std::vector<std::pair<DWORD, BOOL>> expected{{0xFFFFFFFEU, FALSE}, {0xFFFFFFFDU, TRUE}};
    EXPECT_EQ(media.selections, expected);
    EXPECT_EQ(media.streams, std::vector<DWORD>{0xFFFFFFFDU});
}

TEST_F(CAudioDecoderTest, AsksFor48KilohertzStereoOf16BitsWhateverTheSource)
{
    media.sound.rate = 44'100;
    media.sound.channels = 1;
    ASSERT_EQ(Open(), S_OK);
    ASSERT_TRUE(media.outputSound);
    EXPECT_EQ(media.outputSubtype, MFAudioFormat_PCM);
    EXPECT_EQ(media.outputSound->rate, 48'000U);
    EXPECT_EQ(media.outputSound->channels, 2U);
    EXPECT_EQ(media.outputSound->bits, 16U);
    EXPECT_EQ(media.outputSound->blockAlignment, 4U);
    EXPECT_EQ(media.outputSound->bytesPerSecond, 192'000U);
    EXPECT_EQ(media.outputSound->mask, 3U);
    EXPECT_EQ(Probe::Rate(*decoder), 48'000U);
    EXPECT_EQ(Probe::Channels(*decoder), 2U);
    EXPECT_EQ(Probe::Bits(*decoder), 16U);
    EXPECT_EQ(Probe::BytesPerSecond(*decoder), 0U);
}

TEST_F(CAudioDecoderTest, OpeningReportsTheFirstFailure)
{
    EXPECT_EQ(decoder->Initialize(L"missing.mp3"), HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    EXPECT_FALSE(Probe::IsOpen(*decoder));
    media.failing = {"Open"};
    EXPECT_EQ(Open(), MF_E_UNSUPPORTED_BYTESTREAM_TYPE);
    for (const char* const pStep : {"DeselectAll", "Select", "SetCurrentMediaType"})
    {
        media.failing = {pStep};
        EXPECT_EQ(Open(), E_FAIL) << pStep;
    }
    media.failing = {"DeselectAll"};
    media.selections.clear();
    Open();
    EXPECT_TRUE(media.selections.empty());
    media.failing.clear();
    CFakeSystem::FailingFunctions() = {"MFCreateMediaType"};
    EXPECT_EQ(Open(), E_FAIL);
}

TEST_F(CAudioDecoderTest, OpeningAgainGivesUpTheOldFile)
{
    media.AddBlocks(2, 64);
    ASSERT_EQ(Open(), S_OK);
    decoder->Seek(0);
    EXPECT_NE(Probe::Pending(*decoder), 0U);
    ASSERT_EQ(Open(), S_OK);
    EXPECT_EQ(Probe::Pending(*decoder), 0U);
    EXPECT_EQ(CFakeSystem::LiveReaders(), 1);
    EXPECT_EQ(decoder->Initialize(L"missing.mp3"), HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    EXPECT_TRUE(Probe::IsOpen(*decoder)); // what was open stays
}

TEST_F(CAudioDecoderTest, EndFlushesTheStream)
{
    ASSERT_EQ(Open(), S_OK);
    decoder.reset();
    EXPECT_EQ(media.nFlushes, 1);
    EXPECT_EQ(media.streams.back(), 0xFFFFFFFDU);
}

TEST_F(CAudioDecoderTest, CopyTakesTheMembersOver)
{
    const CAudioDecoder copy(*decoder); // nothing is open: the pointer is copied without a reference
    EXPECT_EQ(Probe::Rate(copy), 48'000U);
    CAudioDecoder assigned;
    assigned = copy;
    EXPECT_FALSE(Probe::IsOpen(assigned));
}

// ---- reading -----------------------------------------------------------------------------------------------------

TEST_F(CAudioDecoderTest, DeliversBlockAfterBlockAndThenNothing)
{
    media.AddBlocks(3, 64);
    ASSERT_EQ(Open(), S_OK);
    EXPECT_EQ(Next(), Bytes(0, 64));
    EXPECT_EQ(Next(), Bytes(64, 64));
    EXPECT_EQ(Next(), Bytes(128, 64));
    EXPECT_TRUE(Next().empty());
    EXPECT_TRUE(Next().empty());
}

TEST_F(CAudioDecoderTest, ReplacesABufferOnlyWhenItIsTooSmall)
{
    media.AddBlocks(1, 64);
    media.AddBlocks(1, 32);
    media.AddBlocks(1, 100);
    ASSERT_EQ(Open(), S_OK);
    EXPECT_EQ(Next().size(), 64U);
    EXPECT_EQ(size, 64U);
    unsigned char* const first = block;
    EXPECT_EQ(Next(), Bytes(64, 32));
    EXPECT_EQ(block, first);
    EXPECT_EQ(size, 64U); // still what it holds
    EXPECT_EQ(Next(), Bytes(96, 100));
    EXPECT_EQ(size, 100U);
}

TEST_F(CAudioDecoderTest, ABufferOfExactlyTheRightSizeIsKept)
{
    media.AddBlocks(1, 64);
    ASSERT_EQ(Open(), S_OK);
    block = static_cast<unsigned char*>(std::malloc(64));
    unsigned char* const mine = block;
    size = 64;
    EXPECT_EQ(Next(), Bytes(0, 64));
    EXPECT_EQ(block, mine);
}

TEST_F(CAudioDecoderTest, APlainBufferIsTakenToHoldEverything)
{
    media.AddBlocks(2, 64);
    ASSERT_EQ(Open(), S_OK);
    unsigned char bytes[64] = {};
    EXPECT_EQ(decoder->GetSample(bytes), 64U);
    EXPECT_EQ(std::vector<std::uint8_t>(bytes, bytes + 64), Bytes(0, 64));
    EXPECT_EQ(decoder->GetSample(static_cast<unsigned char*>(nullptr)), 0U);
    EXPECT_EQ(decoder->GetSample(nullptr, size), 0U);
}

TEST_F(CAudioDecoderTest, NothingOpenGivesNothing)
{
    EXPECT_TRUE(Next().empty());
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(decoder->Seek(5), S_OK);
}

TEST_F(CAudioDecoderTest, AFailingReadGivesNothing)
{
    media.AddBlocks(2, 64);
    ASSERT_EQ(Open(), S_OK);
    media.failing = {"ReadSample"};
    EXPECT_TRUE(Next().empty());
    EXPECT_EQ(decoder->Seek(0), S_OK); // and comes back
    EXPECT_EQ(Probe::Pending(*decoder), 0U);
    media.failing = {"Lock"};
    EXPECT_TRUE(Next().empty());
    EXPECT_EQ(decoder->Seek(0), S_OK);
    EXPECT_EQ(Probe::Pending(*decoder), 0U);
    media.failing.clear();
    EXPECT_EQ(decoder->Seek(0), S_OK);
    EXPECT_EQ(Next(), Bytes(0, 64));
}

TEST_F(CAudioDecoderTest, AReadThatFailsLateKeepsNoSample)
{
    media.AddBlocks(1, 64);
    media.reads[0].hr = E_FAIL; // with a sample, against all rules
    ASSERT_EQ(Open(), S_OK);
    EXPECT_TRUE(Next().empty());
}

TEST_F(CAudioDecoderTest, GapsWithoutASampleArePassedOver)
{
    media.reads.resize(2);
    media.reads[0].flags = MF_SOURCE_READERF_STREAMTICK;
    media.AddBlocks(1, 64);
    ASSERT_EQ(Open(), S_OK);
    EXPECT_EQ(Next(), Bytes(0, 64));
    decoder->Seek(0);
    EXPECT_EQ(Next(), Bytes(0, 64));
}

TEST_F(CAudioDecoderTest, AReaderThatOnlyTicksIsGivenUp)
{
    media.reads.resize(1);
    media.endless = true;
    ASSERT_EQ(Open(), S_OK);
    EXPECT_TRUE(Next().empty());
    EXPECT_EQ(decoder->Seek(0), S_OK);
}

TEST_F(CAudioDecoderTest, AnEmptySampleGivesNothing)
{
    media.reads.resize(1);
    media.reads[0].emptySample = true;
    ASSERT_EQ(Open(), S_OK);
    EXPECT_TRUE(Next().empty());
}

// ---- seeking -----------------------------------------------------------------------------------------------------

TEST_F(CAudioDecoderTest, SeekKeepsTheWholeBlockThatHoldsTheTime)
{
    media.AddBlocks(10, kBlock);
    media.seek = [](LONGLONG) { return std::size_t{1}; }; // far before it
    ASSERT_EQ(Open(), S_OK);
    decoder->Seek(4 * kBlockTime + kBlockTime / 2);
    EXPECT_EQ(media.seeks, std::vector<LONGLONG>{450'000});
    EXPECT_EQ(Probe::Pending(*decoder), kBlock);
    EXPECT_EQ(Next(), Bytes(4 * kBlock, kBlock)); // starts half a block early
    EXPECT_EQ(Probe::Pending(*decoder), 0U);
    EXPECT_EQ(Next(), Bytes(5 * kBlock, kBlock));
}

TEST_F(CAudioDecoderTest, ABlockThatEndsAtTheTimeCounts)
{
    media.AddBlocks(10, kBlock);
    media.seek = [](LONGLONG) { return std::size_t{0}; };
    ASSERT_EQ(Open(), S_OK);
    decoder->Seek(3 * kBlockTime);
    EXPECT_EQ(Next(), Bytes(2 * kBlock, kBlock));
    decoder->Seek(3 * kBlockTime + 1);
    EXPECT_EQ(Next(), Bytes(3 * kBlock, kBlock));
}

TEST_F(CAudioDecoderTest, TheEndOfABlockIsRoundedDown)
{
    media.AddBlocks(2, 64); // 64 bytes are 3333.3 units
    media.seek = [](LONGLONG) { return std::size_t{0}; };
    ASSERT_EQ(Open(), S_OK);
    decoder->Seek(3'333);
    EXPECT_EQ(Next(), Bytes(0, 64));
    decoder->Seek(3'334);
    EXPECT_EQ(Next(), Bytes(64, 64));
    EXPECT_EQ(Probe::BytesPerSecond(*decoder), 192'000U); // computed when it was needed
}

TEST_F(CAudioDecoderTest, SeekPastTheEndGivesNothing)
{
    media.AddBlocks(2, kBlock);
    ASSERT_EQ(Open(), S_OK);
    decoder->Seek(kBlockTime / 2);
    EXPECT_NE(Probe::Pending(*decoder), 0U);
    decoder->Seek(20 * kBlockTime);
    EXPECT_TRUE(Next().empty()); // nor what the seek before had kept
}

TEST_F(CAudioDecoderTest, SeekTakesOverATypeThatChangesOnTheWay)
{
    media.AddBlocks(4, kBlock);
    FakeSoundType half;
    half.rate = 24'000;
    half.bytesPerSecond = 96'000;
    media.reads[1].newSound = half;
    media.reads[1].time = kBlockTime;
    media.reads[2].time = 3 * kBlockTime;
    media.reads[3].time = 5 * kBlockTime;
    media.seek = [](LONGLONG) { return std::size_t{0}; };
    ASSERT_EQ(Open(), S_OK);
    decoder->Seek(5 * kBlockTime - 1); // blocks last twice as long now
    EXPECT_EQ(Probe::Rate(*decoder), 24'000U);
    EXPECT_EQ(Probe::BytesPerSecond(*decoder), 96'000U);
    EXPECT_EQ(Next(), Bytes(2 * kBlock, kBlock));
}

TEST_F(CAudioDecoderTest, WhatAChangedTypeDoesNotSayStaysAsItWas)
{
    media.AddBlocks(2, kBlock);
    FakeSoundType silent;
    silent.rate = silent.bits = std::nullopt;
    silent.channels = 1;
    media.reads[0].newSound = silent;
    ASSERT_EQ(Open(), S_OK);
    decoder->Seek(1);
    EXPECT_EQ(Probe::Rate(*decoder), 48'000U);
    EXPECT_EQ(Probe::Bits(*decoder), 16U);
    EXPECT_EQ(Probe::Channels(*decoder), 1U);
    EXPECT_EQ(Probe::BytesPerSecond(*decoder), 96'000U); // computed from what it knows now
    media.failing = {"GetCurrentMediaType"};
    decoder->Seek(1);
    EXPECT_EQ(Probe::Channels(*decoder), 1U);
}

TEST_F(CAudioDecoderTest, AnEmptyBlockAtTheTimeEndsTheSearchAndKeepsNothing)
{
    media.AddBlocks(3, kBlock);
    media.reads[1].sound->clear();
    media.reads[1].time = kBlockTime + 10;
    media.seek = [](LONGLONG) { return std::size_t{0}; };
    ASSERT_EQ(Open(), S_OK);
    decoder->Seek(kBlockTime + 5);
    EXPECT_EQ(Probe::Pending(*decoder), 0U);
    EXPECT_EQ(Next(), Bytes(2 * kBlock, kBlock));
}

TEST_F(CAudioDecoderTest, SeekWithShortMemoryKeepsNothing)
{
    media.AddBlocks(2, kBlock);
    ASSERT_EQ(Open(), S_OK);
    {
        const CAllocationFailure failure;
        EXPECT_EQ(decoder->Seek(0), S_OK);
    }
    EXPECT_EQ(Probe::Pending(*decoder), 0U);
}

// ---- types -------------------------------------------------------------------------------------------------------

TEST_F(CAudioDecoderTest, TypesOfADecoderThatIsNotOpenAreNotTouched)
{
    auto* const untouched = reinterpret_cast<IMFMediaType*>(8);
    IMFMediaType* pType = untouched;
    EXPECT_EQ(decoder->GetNativeMediaType(&pType), S_FALSE);
    EXPECT_EQ(decoder->GetCurrentMediaType(&pType), S_FALSE);
    EXPECT_EQ(decoder->SetCurrentMediaType(pType), S_FALSE);
    EXPECT_EQ(pType, untouched);
}

TEST_F(CAudioDecoderTest, TypesPassStraightToTheReader)
{
    media.sound.rate = 22'050;
    ASSERT_EQ(Open(), S_OK);
    ComPtr<IMFMediaType> pNative;
    ASSERT_EQ(decoder->GetNativeMediaType(pNative.Put()), S_OK);
    EXPECT_EQ(Value(pNative.Get(), MF_MT_AUDIO_SAMPLES_PER_SECOND), 22'050U);
    ComPtr<IMFMediaType> pCurrent;
    EXPECT_EQ(decoder->GetCurrentMediaType(pCurrent.Put()), S_OK);
    const ComPtr<IMFMediaType> pFloat = MakeType(MFMediaType_Audio, MFAudioFormat_Float);
    EXPECT_EQ(decoder->SetCurrentMediaType(pFloat.Get()), S_OK);
    EXPECT_EQ(media.outputSubtype, MFAudioFormat_Float);
    media.failing = {"GetNativeMediaType", "GetCurrentMediaType", "SetCurrentMediaType"};
    EXPECT_EQ(decoder->GetNativeMediaType(pNative.Put()), E_FAIL);
    EXPECT_EQ(decoder->GetCurrentMediaType(pCurrent.Put()), E_FAIL);
    EXPECT_EQ(decoder->SetCurrentMediaType(pFloat.Get()), E_FAIL);
    const std::vector<DWORD> all(media.streams.size(), 0xFFFFFFFDU);
    EXPECT_EQ(media.streams, all);
}

TEST(CAudioDecoderTypes, PcmTypeCarriesEverything)
{
    ComPtr<IMFMediaType> pType;
    ASSERT_EQ(CAudioDecoder::CreatePCMAudioType(44'100, 24, 6, pType.Put()), S_OK);
    GUID guid = GUID_NULL;
    EXPECT_EQ(pType->GetMajorType(&guid), S_OK);
    EXPECT_EQ(guid, MFMediaType_Audio);
    EXPECT_EQ(pType->GetGUID(MF_MT_SUBTYPE, &guid), S_OK);
    EXPECT_EQ(guid, MFAudioFormat_PCM);
    EXPECT_EQ(Value(pType.Get(), MF_MT_AUDIO_NUM_CHANNELS), 6U);
    EXPECT_EQ(Value(pType.Get(), MF_MT_AUDIO_SAMPLES_PER_SECOND), 44'100U);
    EXPECT_EQ(Value(pType.Get(), MF_MT_AUDIO_BLOCK_ALIGNMENT), 18U);
    EXPECT_EQ(Value(pType.Get(), MF_MT_AUDIO_AVG_BYTES_PER_SECOND), 793'800U);
    EXPECT_EQ(Value(pType.Get(), MF_MT_AUDIO_BITS_PER_SAMPLE), 24U);
    EXPECT_EQ(Value(pType.Get(), MF_MT_ALL_SAMPLES_INDEPENDENT), 1U);
    UINT32 count = 0;
    pType->GetCount(&count);
    EXPECT_EQ(count, 8U);
}

TEST(CAudioDecoderTypes, BitsAreDividedBeforeTheyAreMultiplied)
{
    ComPtr<IMFMediaType> pType;
    ASSERT_EQ(CAudioDecoder::CreatePCMAudioType(8'000, 12, 2, pType.Put()), S_OK);
    EXPECT_EQ(Value(pType.Get(), MF_MT_AUDIO_BLOCK_ALIGNMENT), 2U);
    EXPECT_EQ(Value(pType.Get(), MF_MT_AUDIO_AVG_BYTES_PER_SECOND), 16'000U);
}

TEST(CAudioDecoderTypes, PcmTypeReportsFailureAndNull)
{
    EXPECT_EQ(CAudioDecoder::CreatePCMAudioType(48'000, 16, 2, nullptr), E_POINTER);
    CFakeSystem::FailingFunctions() = {"MFCreateMediaType"};
    IMFMediaType* pType = nullptr;
    EXPECT_EQ(CAudioDecoder::CreatePCMAudioType(48'000, 16, 2, &pType), E_FAIL);
    EXPECT_EQ(pType, nullptr);
    CFakeSystem::FailingFunctions().clear();
}

TEST(CAudioDecoderTypes, PcmConvertsToItself)
{
    const ComPtr<IMFMediaType> pPcm = MakeType(MFMediaType_Audio, MFAudioFormat_PCM);
    ComPtr<IMFMediaType> pResult;
    EXPECT_EQ(CAudioDecoder::ConvertAudioTypeToPCM(pPcm.Get(), pResult.Put()), S_OK);
    EXPECT_EQ(pResult.Get(), pPcm.Get());
    EXPECT_EQ(pPcm.Get()->AddRef(), 3U); // ours, the result's, this one
    pPcm.Get()->Release();
}

TEST(CAudioDecoderTypes, CodedSoundConvertsToPcmOfItsRateAndChannels)
{
    const ComPtr<IMFMediaType> pCoded = MakeType(MFMediaType_Audio, MFAudioFormat_AAC);
    pCoded.Get()->SetUINT32(MF_MT_AUDIO_NUM_CHANNELS, 1);
    pCoded.Get()->SetUINT32(MF_MT_AUDIO_SAMPLES_PER_SECOND, 32'000);
    ComPtr<IMFMediaType> pResult;
    ASSERT_EQ(CAudioDecoder::ConvertAudioTypeToPCM(pCoded.Get(), pResult.Put()), S_OK);
    EXPECT_EQ(Value(pResult.Get(), MF_MT_AUDIO_BITS_PER_SAMPLE), 16U); // missing
    EXPECT_EQ(Value(pResult.Get(), MF_MT_AUDIO_AVG_BYTES_PER_SECOND), 64'000U);
    pCoded.Get()->SetUINT32(MF_MT_AUDIO_BITS_PER_SAMPLE, 24);
    ASSERT_EQ(CAudioDecoder::ConvertAudioTypeToPCM(pCoded.Get(), pResult.Put()), S_OK);
    EXPECT_EQ(Value(pResult.Get(), MF_MT_AUDIO_BITS_PER_SAMPLE), 24U);
}

TEST(CAudioDecoderTypes, WhatCannotBeConvertedIsRefused)
{
    ComPtr<IMFMediaType> pResult;
    EXPECT_EQ(CAudioDecoder::ConvertAudioTypeToPCM(nullptr, pResult.Put()), E_POINTER);
    ComPtr<IMFMediaType> pType;
    MFCreateMediaType(pType.Put());
    EXPECT_EQ(CAudioDecoder::ConvertAudioTypeToPCM(pType.Get(), nullptr), E_POINTER);
    EXPECT_EQ(CAudioDecoder::ConvertAudioTypeToPCM(pType.Get(), pResult.Put()), MF_E_ATTRIBUTENOTFOUND);
    pType->SetGUID(MF_MT_MAJOR_TYPE, MFMediaType_Video);
    EXPECT_EQ(CAudioDecoder::ConvertAudioTypeToPCM(pType.Get(), pResult.Put()), MF_E_INVALIDMEDIATYPE);
    pType->SetGUID(MF_MT_MAJOR_TYPE, MFMediaType_Audio);
    EXPECT_EQ(CAudioDecoder::ConvertAudioTypeToPCM(pType.Get(), pResult.Put()), MF_E_ATTRIBUTENOTFOUND);
    pType->SetGUID(MF_MT_SUBTYPE, MFAudioFormat_AAC);
    EXPECT_EQ(CAudioDecoder::ConvertAudioTypeToPCM(pType.Get(), pResult.Put()), MF_E_INVALIDTYPE);
    pType->SetUINT32(MF_MT_AUDIO_NUM_CHANNELS, 2);
    EXPECT_EQ(CAudioDecoder::ConvertAudioTypeToPCM(pType.Get(), pResult.Put()), MF_E_INVALIDTYPE);
    pType->SetUINT32(MF_MT_AUDIO_SAMPLES_PER_SECOND, 0);
    EXPECT_EQ(CAudioDecoder::ConvertAudioTypeToPCM(pType.Get(), pResult.Put()), MF_E_INVALIDTYPE);
    EXPECT_FALSE(pResult);
}

// ---- clip audio --------------------------------------------------------------------------------------------------

class QMXGetClipAudioTest : public SoundFixture
{
protected:
    std::vector<std::uint8_t> Get(void* hSound)
    {
        const unsigned int cb = QMXGetClipAudio(hSound, m_buffer.data());
        return {m_buffer.begin(), m_buffer.begin() + static_cast<std::ptrdiff_t>(cb)};
    }

private:
    std::vector<std::uint8_t> m_buffer = std::vector<std::uint8_t>(192'000);
};

TEST_F(QMXGetClipAudioTest, BeginInsideABlockStartsWithTheWholeBlock)
{
    media.AddBlocks(4, kBlock);
    void* hSound = nullptr;
    ASSERT_EQ(QMXGetClipAudioBegin(&hSound, L"fake.mp3", kBlockTime + 700), S_OK);
    ASSERT_NE(hSound, nullptr);
    EXPECT_EQ(Get(hSound), Bytes(kBlock, kBlock));
    EXPECT_EQ(Get(hSound), Bytes(2 * kBlock, kBlock));
    EXPECT_EQ(Get(hSound), Bytes(3 * kBlock, kBlock));
    EXPECT_TRUE(Get(hSound).empty());
    EXPECT_EQ(QMXGetClipAudioEnd(hSound), S_OK);
}

TEST_F(QMXGetClipAudioTest, BeginBeyondTheEndGivesNothing)
{
    media.AddBlocks(2, kBlock);
    void* hSound = nullptr;
    ASSERT_EQ(QMXGetClipAudioBegin(&hSound, L"fake.mp3", 50 * kBlockTime), S_OK);
    EXPECT_TRUE(Get(hSound).empty());
    QMXGetClipAudioEnd(hSound);
}

TEST_F(QMXGetClipAudioTest, AHandleServesTheNextFileToo)
{
    media.AddBlocks(3, kBlock);
    void* hSound = nullptr;
    ASSERT_EQ(QMXGetClipAudioBegin(&hSound, L"fake.mp3", 0), S_OK);
    void* const hBefore = hSound;
    Get(hSound);
    ASSERT_EQ(QMXGetClipAudioBegin(&hSound, L"fake.mp3", kBlockTime + 1), S_OK);
    EXPECT_EQ(hSound, hBefore);
    EXPECT_EQ(Get(hSound), Bytes(kBlock, kBlock));
    EXPECT_EQ(QMXGetClipAudioBegin(&hSound, L"missing.mp3", 0), HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(hSound, hBefore);
    QMXGetClipAudioEnd(hSound);
}

TEST_F(QMXGetClipAudioTest, FailuresLeaveTheHandleAlone)
{
    EXPECT_EQ(QMXGetClipAudioBegin(nullptr, L"fake.mp3", 0), E_FAIL);
    void* hSound = nullptr;
    EXPECT_EQ(QMXGetClipAudioBegin(&hSound, L"missing.mp3", 0), HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(hSound, nullptr);
    media.failing = {"SetCurrentMediaType"};
    EXPECT_EQ(QMXGetClipAudioBegin(&hSound, L"fake.mp3", 0), E_FAIL);
    EXPECT_EQ(hSound, nullptr);
    {
        const std::wstring path = L"fake.mp3";
        std::wstring copy = path;
        const CAllocationFailure failure;
        EXPECT_EQ(QMXGetClipAudioBegin(&hSound, std::move(copy), 0), E_OUTOFMEMORY);
    }
    EXPECT_EQ(hSound, nullptr);
}

TEST_F(QMXGetClipAudioTest, NullHandles)
{
    unsigned char byte = 7;
    EXPECT_EQ(QMXGetClipAudio(nullptr, &byte), 2'147'500'037U);
    EXPECT_EQ(byte, 7);
    EXPECT_EQ(QMXGetClipAudioEnd(nullptr), S_OK);
}
