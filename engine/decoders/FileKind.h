/// @file FileKind.h
/// Files are told apart by the end of their names alone.
#pragma once

#include <windows.h>

#include <string>

/// Text after the last "." of @p path; the whole path when there is none. Points into @p path.
inline const wchar_t* FileExtension(const std::wstring& path)
{
    const std::size_t dot = path.rfind(L'.');
    return path.c_str() + (dot == std::wstring::npos ? 0 : dot + 1);
}

/// True when the extension of @p path is @p extension in any letter case.
inline bool HasExtension(const std::wstring& path, const wchar_t* extension)
{
    return _wcsicmp(FileExtension(path), extension) == 0;
}

/// Files whose pictures are composited with their alpha.
inline bool CarriesAlpha(const std::wstring& path)
{
    return HasExtension(path, L"swf") || HasExtension(path, L"png") || HasExtension(path, L"gif") ||
           HasExtension(path, L"mov");
}
