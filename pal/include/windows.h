/// @file windows.h
/// The kernel services of Windows that the engine uses, under their documented names, values and argument
/// orders. Only what is used is declared. Integer types keep the widths they have on 64-bit Windows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cwchar>

using BOOL = std::int32_t;
using BYTE = std::uint8_t;
using UINT8 = std::uint8_t;
using WORD = std::uint16_t;
using USHORT = std::uint16_t;
using SHORT = std::int16_t;
using INT = std::int32_t;
using INT32 = std::int32_t;
using UINT = std::uint32_t;
using UINT32 = std::uint32_t;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using DWORD = std::uint32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using INT64 = std::int64_t;
using UINT64 = std::uint64_t;
using FLOAT = float;
using ULONG_PTR = std::uintptr_t;
using SIZE_T = std::size_t;
using WCHAR = wchar_t; ///< a code point (4 bytes) here, a UTF-16 unit on Windows: never store raw WCHAR in files
using LPWSTR = wchar_t*;
using LPCWSTR = const wchar_t*;
using PVOID = void*;
using LPVOID = void*;
using HANDLE = void*;
using HRESULT = std::int32_t;

static_assert(sizeof(LONG) == 4 && sizeof(DWORD) == 4 && sizeof(HRESULT) == 4, "32 bits on both platforms");

#ifndef TRUE // other libraries' headers define the two as well
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif
#define CONST const
#define WINAPI
#define CALLBACK
#define STDMETHODCALLTYPE
#define STDAPICALLTYPE

struct HINSTANCE__;
using HMODULE = HINSTANCE__*;
using FARPROC = void (*)();

/// 100 ns since 1 January 1601 UTC, split into two halves.
struct FILETIME
{
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};

union LARGE_INTEGER
{
    struct
    {
        DWORD LowPart;
        LONG HighPart;
    } u;
    LONGLONG QuadPart;
};

union ULARGE_INTEGER
{
    struct
    {
        DWORD LowPart;
        DWORD HighPart;
    } u;
    ULONGLONG QuadPart;
};

struct GUID
{
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];
};
using IID = GUID;
using CLSID = GUID;
using REFGUID = const GUID&;
using REFIID = const IID&;
using REFCLSID = const CLSID&;

inline bool operator==(const GUID& a, const GUID& b) noexcept
{
    bool equal = a.Data1 == b.Data1 && a.Data2 == b.Data2 && a.Data3 == b.Data3;
    for (int i = 0; equal && i < 8; ++i)
        equal = a.Data4[i] == b.Data4[i];
    return equal;
}
inline bool operator!=(const GUID& a, const GUID& b) noexcept
{
    return !(a == b);
}
inline BOOL IsEqualGUID(REFGUID a, REFGUID b) noexcept
{
    return a == b ? TRUE : FALSE;
}
inline constexpr GUID GUID_NULL{0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}};

// ---- status codes ------------------------------------------------------------------------------------------

#define SUCCEEDED(hr) (static_cast<HRESULT>(hr) >= 0)
#define FAILED(hr) (static_cast<HRESULT>(hr) < 0)

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001U);
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002U);
inline constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003U);
inline constexpr HRESULT E_ABORT = static_cast<HRESULT>(0x80004004U);
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005U);
inline constexpr HRESULT E_UNEXPECTED = static_cast<HRESULT>(0x8000FFFFU);
inline constexpr HRESULT E_ACCESSDENIED = static_cast<HRESULT>(0x80070005U);
inline constexpr HRESULT E_HANDLE = static_cast<HRESULT>(0x80070006U);
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000EU);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057U);

inline constexpr DWORD ERROR_SUCCESS = 0;
inline constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
inline constexpr DWORD ERROR_PATH_NOT_FOUND = 3;
inline constexpr DWORD ERROR_ACCESS_DENIED = 5;

/// The HRESULT of a Win32 error code (facility 7).
constexpr HRESULT HRESULT_FROM_WIN32(DWORD error) noexcept
{
    return error == ERROR_SUCCESS ? S_OK : static_cast<HRESULT>((error & 0xFFFFU) | 0x80070000U);
}

// ---- threads, events, locks ----------------------------------------------------------------------------------

inline constexpr DWORD INFINITE = 0xFFFFFFFFU;
inline constexpr DWORD WAIT_OBJECT_0 = 0;
inline constexpr DWORD WAIT_TIMEOUT = 258;
inline constexpr DWORD WAIT_FAILED = 0xFFFFFFFFU;
inline constexpr DWORD MAXIMUM_WAIT_OBJECTS = 64;
// NOLINTNEXTLINE(performance-no-int-to-ptr): the documented value
inline HANDLE const INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(-1));

struct SECURITY_ATTRIBUTES;
using LPTHREAD_START_ROUTINE = DWORD(WINAPI*)(LPVOID parameter);

extern "C"
{
    /// Starts a thread. @return a handle to wait on and to close, or null.
    /// @param flags must be 0 (a thread starts at once).
    HANDLE CreateThread(SECURITY_ATTRIBUTES* security, SIZE_T stackSize, LPTHREAD_START_ROUTINE start, LPVOID parameter,
                        DWORD flags, DWORD* pThreadId);
    /// Makes an event. Named events are not supported: a name gives null.
    HANDLE CreateEventW(SECURITY_ATTRIBUTES* security, BOOL manualReset, BOOL initialState, LPCWSTR name);
    BOOL SetEvent(HANDLE event);
    BOOL ResetEvent(HANDLE event);
    /// Waits for one event, or for a thread to end. @return WAIT_OBJECT_0, WAIT_TIMEOUT or WAIT_FAILED.
    DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds);
    /// Waits for any of @p count handles (wait-for-all is not supported and fails). The lowest signalled index
    /// wins; only that one's auto-reset event is consumed.
    DWORD WaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL waitAll, DWORD milliseconds);
    BOOL CloseHandle(HANDLE handle);
}

/// A recursive lock. The storage is opaque; initialise before use and delete after, never copy.
struct CRITICAL_SECTION
{
    alignas(16) unsigned char m_storage[64];
};
using LPCRITICAL_SECTION = CRITICAL_SECTION*;

extern "C"
{
    void InitializeCriticalSection(LPCRITICAL_SECTION section);
    void EnterCriticalSection(LPCRITICAL_SECTION section);
    void LeaveCriticalSection(LPCRITICAL_SECTION section);
    void DeleteCriticalSection(LPCRITICAL_SECTION section);
}

// ---- modules -------------------------------------------------------------------------------------------------

extern "C"
{
    /// Loads a library by path, or by bare name from the executable's folder. Reference counted.
    HMODULE LoadLibraryW(LPCWSTR fileName);
    FARPROC GetProcAddress(HMODULE module, const char* name);
    BOOL FreeLibrary(HMODULE module);
    /// Path of the running executable; only a null @p module is supported.
    /// @return characters written without the terminator; @p size when truncated; 0 on failure.
    DWORD GetModuleFileNameW(HMODULE module, LPWSTR fileName, DWORD size);
}

// ---- files ---------------------------------------------------------------------------------------------------

inline constexpr DWORD GENERIC_READ = 0x80000000U;
inline constexpr DWORD FILE_SHARE_READ = 1;
inline constexpr DWORD OPEN_EXISTING = 3;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;

extern "C"
{
    /// Opens an existing file for reading; every other combination of arguments fails.
    /// @return INVALID_HANDLE_VALUE on failure (directories included).
    HANDLE CreateFileW(LPCWSTR fileName, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security, DWORD disposition,
                       DWORD attributes, HANDLE templateFile);
    BOOL GetFileTime(HANDLE file, FILETIME* pCreation, FILETIME* pLastAccess, FILETIME* pLastWrite);
    /// UTC to local time with the offset that holds now, as the system service does.
    BOOL FileTimeToLocalFileTime(const FILETIME* pFileTime, FILETIME* pLocalFileTime);
}

/// Opens a file as fopen() does. @param mode  of ASCII characters, at most 15 of them
extern "C" std::FILE* _wfopen(const wchar_t* fileName, const wchar_t* mode);

// ---- locale --------------------------------------------------------------------------------------------------

inline constexpr int LOCALE_NAME_MAX_LENGTH = 85; ///< characters, the terminator included

/// Name of the system's default locale as a language tag ("en-US"), from the environment.
/// @return characters written with the terminator; 0 when @p cchLocaleName are too few.
extern "C" int GetSystemDefaultLocaleName(LPWSTR localeName, int cchLocaleName);

/// Case-insensitive comparison of wide strings, code unit by code unit. @return <0, 0 or >0.
extern "C" int _wcsicmp(const wchar_t* a, const wchar_t* b);

#include <unknwn.h>
