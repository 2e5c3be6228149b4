/// @file PathSeparator.h
/// What stands between the folders of a path.
#pragma once

#if defined(_WIN32)
inline constexpr wchar_t kPathSeparator = L'\\';
#else
inline constexpr wchar_t kPathSeparator = L'/';
#endif
