#include "engine/clips/EffectModule.h"

#include <windows.h>

#include <utility>

namespace
{
#if defined(_WIN32)
constexpr wchar_t kPathSeparator = L'\\';
#else
constexpr wchar_t kPathSeparator = L'/';
#endif
constexpr DWORD kPathCapacity = 260; // characters, the terminator included

/// Path of the host's executable up to its last separator; empty when it cannot be told.
std::wstring ExecutableFolder()
{
    std::wstring path(kPathCapacity, L'\0');
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), kPathCapacity);
    if (length == 0 || length >= kPathCapacity)
        return {};
    path.resize(length);
    path.resize(path.rfind(kPathSeparator) + 1); // without a separator nothing is left
    return path;
}
} // namespace

bool CEffectModule::Load(const std::wstring& name)
{
    Free();
    const std::wstring folder = ExecutableFolder();
    if (folder.empty() || name.empty())
        return false;
    m_hModule = LoadLibraryW((folder + name).c_str());
    if (m_hModule == nullptr)
        return false;
    m_pApply = reinterpret_cast<QMXApplyTxEffect>(reinterpret_cast<void*>(GetProcAddress(m_hModule, "ApplyTxEffect")));
    return true;
}

void CEffectModule::Free()
{
    m_pApply = nullptr;
    if (HMODULE const module = std::exchange(m_hModule, nullptr))
        FreeLibrary(module);
}
