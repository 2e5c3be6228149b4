#include <windows.h>

#include <cstdlib>
#include <cwchar>
#include <new>
#include <string>

namespace
{
bool IsLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// "de_AT.UTF-8@euro" as "de-AT". "C", "POSIX" and what is no locale's name are "en-US", the system's own default.
std::wstring LanguageTag(const char* pName)
{
    std::wstring tag;
    int letters = 0;
    for (; *pName != '\0' && *pName != '.' && *pName != '@'; ++pName)
    {
        if (*pName == '_' || *pName == '-')
            tag += L'-';
        else if (IsLetter(*pName) || (*pName >= '0' && *pName <= '9'))
            tag += static_cast<wchar_t>(*pName);
        else
            return L"en-US";
        letters += tag.find(L'-') == std::wstring::npos ? 1 : 0;
    }
    const bool isTag = letters >= 2 && letters <= 3 && tag.size() < LOCALE_NAME_MAX_LENGTH && tag.back() != L'-';
    return isTag ? tag : L"en-US";
}

/// The locale of texts, by the order of precedence that the environment's variables have.
const char* EnvironmentLocale()
{
    for (const char* const pVariable : {"LC_ALL", "LC_CTYPE", "LANG"})
    {
        if (const char* const pValue = std::getenv(pVariable); pValue != nullptr && *pValue != '\0')
            return pValue;
    }
    return "";
}
} // namespace

extern "C" int GetSystemDefaultLocaleName(LPWSTR localeName, int cchLocaleName)
try
{
    const std::wstring tag = LanguageTag(EnvironmentLocale());
    if (localeName == nullptr || cchLocaleName < 0 || static_cast<std::size_t>(cchLocaleName) <= tag.size())
        return 0;
    std::wmemcpy(localeName, tag.c_str(), tag.size() + 1);
    return static_cast<int>(tag.size()) + 1;
}
catch (const std::bad_alloc&)
{
    return 0;
}
