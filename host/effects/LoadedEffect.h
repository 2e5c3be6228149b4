/// @file LoadedEffect.h
/// An effect module that the host itself looks at.
#pragma once

#include "engine/platform/TxEffect.h"

#include <string>

struct HINSTANCE__;

namespace qmx::host
{
/// A library with the entry point of effect modules, which stays loaded as long as the object lives.
class LoadedEffect
{
public:
    /// @param file     as the engine takes paths
    /// @param subject  what a HostError names as its file; @param prefix  begins its reason, ": " included
    /// @throw HostError  ExitCode::Media: no library, or one without the entry point
    LoadedEffect(const std::wstring& file, const std::string& subject, const std::string& prefix);
    ~LoadedEffect();
    LoadedEffect(const LoadedEffect&) = delete;
    LoadedEffect& operator=(const LoadedEffect&) = delete;

    QMXApplyTxEffect EntryPoint() const { return m_pApply; }

private:
    HINSTANCE__* m_hModule;
    QMXApplyTxEffect m_pApply = nullptr;
};

/// Folder of the running program up to and with its last separator, where transitions load their modules from. Empty
/// when its name is too long for them.
std::wstring ProgramFolder();
} // namespace qmx::host
