/// @file EffectModule.h
/// A loaded effect module.
#pragma once

#include "engine/platform/TxEffect.h"

#include <string>

struct HINSTANCE__;

/// Holds one effect module, or none.
class CEffectModule
{
public:
    CEffectModule() = default;
    ~CEffectModule() { Free(); }
    CEffectModule(const CEffectModule&) = delete;
    CEffectModule& operator=(const CEffectModule&) = delete;

    /// Loads the library @p name from the folder of the host's executable in the place of the one held.
    /// @return false when there is none; a library without the entry point is held, and cannot be applied
    /// @throw std::bad_alloc
    bool Load(const std::wstring& name);
    void Free(); ///< unloads the module that is held; its entry point is gone with it
    bool CanApply() const { return m_pApply != nullptr; } ///< a module with the entry point is held
    /// Runs the module's effect. CanApply() must hold.
    void Apply(const tagTxEffectParam& param) const { m_pApply(&param); }

private:
    HINSTANCE__* m_hModule = nullptr;
    QMXApplyTxEffect m_pApply = nullptr; ///< code of the module, gone with it
};
