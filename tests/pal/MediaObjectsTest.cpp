#include "engine/platform/RefPtr.h"

#include <gtest/gtest.h>

#include <mfapi.h>
#include <mferror.h>
#include <propvarutil.h>

#include <cstring>

namespace
{
ComPtr<IMFAttributes> MakeAttributes()
{
    ComPtr<IMFAttributes> pAttributes;
    EXPECT_EQ(MFCreateAttributes(pAttributes.Put(), 3), S_OK);
    return pAttributes;
}

ComPtr<IMFMediaBuffer> MakeBuffer(const char* text)
{
    ComPtr<IMFMediaBuffer> pBuffer;
    const auto cb = static_cast<DWORD>(std::strlen(text));
    EXPECT_EQ(MFCreateMemoryBuffer(cb + 4, pBuffer.Put()), S_OK);
    BYTE* pData = nullptr;
    EXPECT_EQ(pBuffer->Lock(&pData, nullptr, nullptr), S_OK);
    std::memcpy(pData, text, cb);
    pBuffer->Unlock();
    EXPECT_EQ(pBuffer->SetCurrentLength(cb), S_OK);
    EXPECT_EQ(pBuffer->SetCurrentLength(cb + 5), E_INVALIDARG);
    return pBuffer;
}
} // namespace

TEST(Attributes, KeepTheTypeOfEachValue)
{
    const auto pAttributes = MakeAttributes();
    pAttributes->SetUINT32(MF_MT_VIDEO_ROTATION, 90);
    UINT32 rotation = 0;
    EXPECT_EQ(pAttributes->GetUINT32(MF_MT_VIDEO_ROTATION, &rotation), S_OK);
    EXPECT_EQ(rotation, 90U);
    UINT64 wrong = 7;
    EXPECT_EQ(pAttributes->GetUINT64(MF_MT_VIDEO_ROTATION, &wrong), MF_E_INVALIDTYPE);
    EXPECT_EQ(pAttributes->GetUINT32(MF_MT_FRAME_SIZE, &rotation), MF_E_ATTRIBUTENOTFOUND);
    EXPECT_EQ(wrong, 7U);
    EXPECT_EQ(rotation, 90U);
    EXPECT_EQ(pAttributes->GetUINT32(MF_MT_VIDEO_ROTATION, nullptr), E_POINTER);
}

TEST(Attributes, ReplaceDeleteAndCount)
{
    const auto pAttributes = MakeAttributes();
    pAttributes->SetUINT32(MF_MT_VIDEO_ROTATION, 90);
    pAttributes->SetUINT32(MF_MT_VIDEO_ROTATION, 180);
    pAttributes->SetGUID(MF_MT_SUBTYPE, MFVideoFormat_NV12);
    UINT32 count = 0;
    pAttributes->GetCount(&count);
    EXPECT_EQ(count, 2U);
    UINT32 rotation = 0;
    pAttributes->GetUINT32(MF_MT_VIDEO_ROTATION, &rotation);
    EXPECT_EQ(rotation, 180U);
    EXPECT_EQ(pAttributes->DeleteItem(MF_MT_VIDEO_ROTATION), S_OK);
    EXPECT_EQ(pAttributes->DeleteItem(MF_MT_VIDEO_ROTATION), S_OK);
    EXPECT_EQ(pAttributes->GetUINT32(MF_MT_VIDEO_ROTATION, &rotation), MF_E_ATTRIBUTENOTFOUND);
}

TEST(Attributes, HoldOneReferenceOnAnObject)
{
    const auto pHeld = MakeAttributes();
    {
        const auto pAttributes = MakeAttributes();
        pAttributes->SetUnknown(MF_MT_SUBTYPE, pHeld.Get());
        ComPtr<IMFAttributes> pBack;
        EXPECT_EQ(pAttributes->GetUnknown(MF_MT_SUBTYPE, IID_PPV_ARGS(pBack.Put())), S_OK);
        EXPECT_EQ(pBack.Get(), pHeld.Get());
        pHeld->AddRef();
        EXPECT_EQ(pHeld->Release(), 3U);
    }
    pHeld->AddRef();
    EXPECT_EQ(pHeld->Release(), 1U);
}

TEST(Attributes, CopyReplacesEverythingInTheDestination)
{
    ComPtr<IMFMediaType> pSource;
    ComPtr<IMFMediaType> pTarget;
    ASSERT_EQ(MFCreateMediaType(pSource.Put()), S_OK);
    ASSERT_EQ(MFCreateMediaType(pTarget.Put()), S_OK);
    pSource->SetGUID(MF_MT_MAJOR_TYPE, MFMediaType_Video);
    MFSetAttributeSize(pSource.Get(), MF_MT_FRAME_SIZE, 1920, 1080);
    pTarget->SetUINT32(MF_MT_VIDEO_ROTATION, 90);
    EXPECT_EQ(pSource->CopyAllItems(pTarget.Get()), S_OK);
    EXPECT_EQ(pTarget->CopyAllItems(pTarget.Get()), S_OK); // onto itself: nothing lost
    UINT32 width = 0;
    UINT32 height = 0;
    EXPECT_EQ(MFGetAttributeSize(pTarget.Get(), MF_MT_FRAME_SIZE, &width, &height), S_OK);
    EXPECT_EQ(width, 1920U);
    EXPECT_EQ(height, 1080U);
    GUID major = GUID_NULL;
    EXPECT_EQ(pTarget->GetMajorType(&major), S_OK);
    EXPECT_EQ(major, MFMediaType_Video);
    UINT32 rotation = 0;
    EXPECT_EQ(pTarget->GetUINT32(MF_MT_VIDEO_ROTATION, &rotation), MF_E_ATTRIBUTENOTFOUND);
}

TEST(MediaType, AnswersForItsInterfacesOnly)
{
    ComPtr<IMFMediaType> pType;
    ASSERT_EQ(MFCreateMediaType(pType.Put()), S_OK);
    ComPtr<IMFAttributes> pAttributes;
    EXPECT_EQ(pType->QueryInterface(IID_PPV_ARGS(pAttributes.Put())), S_OK);
    ComPtr<IMFSample> pSample;
    EXPECT_EQ(pType->QueryInterface(IID_PPV_ARGS(pSample.Put())), E_NOINTERFACE);
    EXPECT_FALSE(pSample);
}

TEST(Sample, JoinsItsBuffersInOrder)
{
    ComPtr<IMFSample> pSample;
    ASSERT_EQ(MFCreateSample(pSample.Put()), S_OK);
    ComPtr<IMFMediaBuffer> pJoined;
    EXPECT_TRUE(FAILED(pSample->ConvertToContiguousBuffer(pJoined.Put())));
    pSample->AddBuffer(MakeBuffer("ab").Get());
    pSample->AddBuffer(MakeBuffer("").Get());
    pSample->AddBuffer(MakeBuffer("cde").Get());
    ASSERT_EQ(pSample->ConvertToContiguousBuffer(pJoined.Put()), S_OK);
    BYTE* pData = nullptr;
    DWORD cb = 0;
    ASSERT_EQ(pJoined->Lock(&pData, nullptr, &cb), S_OK);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(pData), cb), "abcde");
    pJoined->Unlock();
    DWORD count = 0;
    pSample->GetBufferCount(&count);
    EXPECT_EQ(count, 1U);
}

TEST(Sample, OfOneBufferHandsOutThatBuffer)
{
    ComPtr<IMFSample> pSample;
    ASSERT_EQ(MFCreateSample(pSample.Put()), S_OK);
    const auto pBuffer = MakeBuffer("x");
    pSample->AddBuffer(pBuffer.Get());
    ComPtr<IMFMediaBuffer> pBack;
    ASSERT_EQ(pSample->ConvertToContiguousBuffer(pBack.Put()), S_OK);
    EXPECT_EQ(pBack.Get(), pBuffer.Get());
    EXPECT_EQ(pSample->GetBufferByIndex(1, pBack.Put()), E_INVALIDARG);
    pSample->SetSampleTime(12);
    LONGLONG time = 0;
    pSample->GetSampleTime(&time);
    EXPECT_EQ(time, 12);
}

TEST(PropVariantToInt64, TakesEveryIntegerKindThatFits)
{
    PROPVARIANT value;
    LONGLONG number = 0;
    PropVariantInit(&value);
    EXPECT_EQ(PropVariantToInt64(value, &number), E_INVALIDARG);
    value.vt = VT_UI8;
    value.uhVal.QuadPart = 5;
    EXPECT_EQ(PropVariantToInt64(value, &number), S_OK);
    EXPECT_EQ(number, 5);
    value.uhVal.QuadPart = UINT64_MAX;
    EXPECT_EQ(PropVariantToInt64(value, &number), E_INVALIDARG);
    value.vt = VT_I4;
    value.lVal = -3;
    EXPECT_EQ(PropVariantToInt64(value, &number), S_OK);
    EXPECT_EQ(number, -3);
    EXPECT_EQ(PropVariantClear(&value), S_OK);
    EXPECT_EQ(value.vt, VT_EMPTY);
}
