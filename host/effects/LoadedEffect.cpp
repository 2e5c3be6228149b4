#include "host/effects/LoadedEffect.h"

#include "host/HostError.h"

#include <windows.h>

#include <filesystem>

namespace qmx::host
{
LoadedEffect::LoadedEffect(const std::wstring& file, const std::string& subject, const std::string& prefix)
    : m_hModule(LoadLibraryW(file.c_str()))
{
    if (!m_hModule)
        throw HostError(ExitCode::Media, subject, prefix + "is no library that can be loaded");
    const auto entry = GetProcAddress(m_hModule, "ApplyTxEffect");
    m_pApply = reinterpret_cast<QMXApplyTxEffect>(reinterpret_cast<void*>(entry));
    if (!m_pApply)
    {
        FreeLibrary(m_hModule);
        throw HostError(ExitCode::Media, subject, prefix + "has no entry point ApplyTxEffect");
    }
}

LoadedEffect::~LoadedEffect()
{
    FreeLibrary(m_hModule);
}

std::wstring ProgramFolder()
{
    constexpr DWORD kCapacity = 260; // as transitions have it
    std::wstring path(kCapacity, L'\0');
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), kCapacity);
    if (length == 0 || length >= kCapacity)
        return {};
    path.resize(length);
    path.resize(path.rfind(static_cast<wchar_t>(std::filesystem::path::preferred_separator)) + 1);
    return path;
}
} // namespace qmx::host
