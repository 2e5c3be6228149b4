#include <objbase.h>
#include <propvarutil.h>

#include <gtest/gtest.h>

namespace
{
PROPVARIANT Empty()
{
    PROPVARIANT value;
    PropVariantInit(&value);
    return value;
}

TEST(PropVariant, ElementOfASingleWordIsTheWord)
{
    PROPVARIANT value = Empty();
    value.vt = VT_UI2;
    value.uiVal = 0xFFFE;
    USHORT word = 7;
    EXPECT_EQ(PropVariantGetUInt16Elem(value, 0, &word), S_OK);
    EXPECT_EQ(word, 0xFFFE);
    EXPECT_EQ(PropVariantGetUInt16Elem(value, 1, &word), E_INVALIDARG);
    EXPECT_EQ(word, 0);
    EXPECT_EQ(PropVariantGetUInt16Elem(value, 0, nullptr), E_POINTER);
}

TEST(PropVariant, ElementOfAnotherKindIsRefused)
{
    for (const VARTYPE kind : {VT_EMPTY, VT_UI1, VT_I4, VT_BOOL})
    {
        PROPVARIANT value = Empty();
        value.vt = kind;
        value.lVal = 6;
        USHORT word = 7;
        EXPECT_EQ(PropVariantGetUInt16Elem(value, 0, &word), E_INVALIDARG) << kind;
        EXPECT_EQ(word, 0);
    }
}

TEST(PropVariant, SmallIntegersBecomeLargeOnes)
{
    PROPVARIANT value = Empty();
    LONGLONG number = 0;
    value.vt = VT_UI1;
    value.bVal = 200;
    EXPECT_EQ(PropVariantToInt64(value, &number), S_OK);
    EXPECT_EQ(number, 200);
    value.vt = VT_UI2;
    value.uiVal = 60'000;
    EXPECT_EQ(PropVariantToInt64(value, &number), S_OK);
    EXPECT_EQ(number, 60'000);
}

TEST(PropVariant, ClearingFreesAVectorAndEmptiesTheVariant)
{
    PROPVARIANT value = Empty();
    value.vt = VT_VECTOR | VT_UI1;
    value.caub = {16, static_cast<BYTE*>(CoTaskMemAlloc(16))}; // the address sanitizer sees to it that it is freed
    ASSERT_NE(value.caub.pElems, nullptr);
    EXPECT_EQ(PropVariantClear(&value), S_OK);
    EXPECT_EQ(value.vt, VT_EMPTY);
    EXPECT_EQ(value.uhVal.QuadPart, 0U);
    EXPECT_EQ(PropVariantClear(nullptr), S_OK);
}
} // namespace
