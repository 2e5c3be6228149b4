/// @file shlwapi.h
/// Questions about paths.
#pragma once

#include <windows.h>

/// @return TRUE when there is a file or a folder of that name.
extern "C" BOOL PathFileExistsW(LPCWSTR path);
