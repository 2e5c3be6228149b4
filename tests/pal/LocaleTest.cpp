#include <gtest/gtest.h>

#include <windows.h>

#include <cstdlib>
#include <optional>
#include <string>

namespace
{
/// Sets a variable of the environment for the length of a test.
class Variable
{
public:
    Variable(const char* pName, const char* pValue) : m_pName(pName)
    {
        if (const char* const pOld = std::getenv(pName))
            m_old = pOld;
        setenv(pName, pValue, 1);
    }
    ~Variable()
    {
        if (m_old)
            setenv(m_pName, m_old->c_str(), 1);
        else
            unsetenv(m_pName);
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    const char* const m_pName;
    std::optional<std::string> m_old;
};

std::wstring LocaleFor(const char* pValue)
{
    const Variable all("LC_ALL", pValue);
    wchar_t name[LOCALE_NAME_MAX_LENGTH] = L"?";
    const int written = GetSystemDefaultLocaleName(name, LOCALE_NAME_MAX_LENGTH);
    EXPECT_EQ(written, static_cast<int>(std::wcslen(name)) + 1);
    return name;
}

TEST(GetSystemDefaultLocaleName, TurnsTheEnvironmentsNameIntoALanguageTag)
{
    EXPECT_EQ(LocaleFor("de_AT.UTF-8@euro"), L"de-AT");
    EXPECT_EQ(LocaleFor("ja_JP"), L"ja-JP");
    EXPECT_EQ(LocaleFor("fil"), L"fil");
}

TEST(GetSystemDefaultLocaleName, IsAmericanEnglishWhereThereIsNoLanguage)
{
    for (const char* const pName : {"C", "C.UTF-8", "POSIX", "/etc/passwd", "_", "x", "longest"})
        EXPECT_EQ(LocaleFor(pName), L"en-US") << pName;
}

TEST(GetSystemDefaultLocaleName, RefusesABufferThatIsTooSmall)
{
    const Variable all("LC_ALL", "de_AT");
    wchar_t name[6] = L"12345";
    EXPECT_EQ(GetSystemDefaultLocaleName(name, 5), 0);
    EXPECT_STREQ(name, L"12345");
    EXPECT_EQ(GetSystemDefaultLocaleName(name, 6), 6);
    EXPECT_STREQ(name, L"de-AT");
    EXPECT_EQ(GetSystemDefaultLocaleName(nullptr, 85), 0);
    EXPECT_EQ(GetSystemDefaultLocaleName(name, -1), 0);
}
} // namespace
