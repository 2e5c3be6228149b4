#include <gtest/gtest.h>

#include <windows.h>

#include <string>

TEST(LoadLibraryW, FindsABareNameBesideTheExecutable)
{
    HMODULE const module = LoadLibraryW(L"qmx_test_module.so");
    ASSERT_NE(module, nullptr);
    const auto add = reinterpret_cast<int (*)(int, int)>(GetProcAddress(module, "AddForTest"));
    ASSERT_NE(add, nullptr);
    EXPECT_EQ(add(2, 3), 5);
    EXPECT_EQ(GetProcAddress(module, "NoSuchEntry"), nullptr);
    EXPECT_EQ(FreeLibrary(module), TRUE);
}

TEST(LoadLibraryW, GivesNullForWhatIsNoModule)
{
    EXPECT_EQ(LoadLibraryW(L"no_such_module.so"), nullptr);
    EXPECT_EQ(LoadLibraryW(L""), nullptr);
    EXPECT_EQ(LoadLibraryW(nullptr), nullptr);
    EXPECT_EQ(GetProcAddress(nullptr, "x"), nullptr);
    EXPECT_EQ(FreeLibrary(nullptr), FALSE);
}

TEST(GetModuleFileNameW, GivesTheExecutable)
{
    wchar_t path[4096];
    const DWORD length = GetModuleFileNameW(nullptr, path, 4096);
    const std::wstring text(path);
    EXPECT_EQ(text.size(), length);
    EXPECT_TRUE(text.ends_with(L"/qmx_tests_pal"));
}

TEST(GetModuleFileNameW, TruncatesToTheBufferAndSaysSo)
{
    wchar_t path[5];
    EXPECT_EQ(GetModuleFileNameW(nullptr, path, 5), 5U);
    EXPECT_EQ(path[4], L'\0');
    EXPECT_EQ(GetModuleFileNameW(nullptr, path, 0), 0U);
    EXPECT_EQ(GetModuleFileNameW(nullptr, nullptr, 5), 0U);
}
