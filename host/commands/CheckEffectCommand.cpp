#include "host/commands/CheckEffectCommand.h"

#include "host/effects/EffectCheck.h"
#include "host/system/Interrupt.h"
#include "host/system/Platform.h"
#include "host/system/StandardOutput.h"

#include <windows.h>

#include <filesystem>

namespace qmx::host
{
namespace
{
/// A library that stays loaded as long as the object lives.
class LoadedModule
{
public:
    explicit LoadedModule(const std::string& file)
        : m_hModule(LoadLibraryW(EnginePath(std::filesystem::absolute(file)).c_str()))
    {
        if (!m_hModule)
            throw HostError(ExitCode::Media, file, "is no library that can be loaded");
        const auto entry = GetProcAddress(m_hModule, "ApplyTxEffect");
        m_pApply = reinterpret_cast<QMXApplyTxEffect>(reinterpret_cast<void*>(entry));
        if (!m_pApply)
        {
            FreeLibrary(m_hModule);
            throw HostError(ExitCode::Media, file, "has no entry point ApplyTxEffect");
        }
    }
    ~LoadedModule() { FreeLibrary(m_hModule); }
    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;

    QMXApplyTxEffect EntryPoint() const { return m_pApply; }

private:
    HMODULE m_hModule;
    QMXApplyTxEffect m_pApply = nullptr;
};
} // namespace

ExitCode RunCheckEffect(const CheckEffectOptions& options)
{
    const LoadedModule module(options.module);
    const EffectCheck check([&](const tagTxEffectParam& param) { module.EntryPoint()(&param); });
    ExitCode result = ExitCode::Done;
    for (std::uint32_t type = 0; type < options.count; ++type)
    {
        ThrowIfInterrupted();
        const std::vector<std::string> faults = check.Faults(type);
        const std::string name = "effect " + std::to_string(type) + ": ";
        if (faults.empty())
            PrintLine(name + "keeps the rules");
        for (const std::string& fault : faults)
            PrintLine(name + fault);
        if (!faults.empty())
            result = ExitCode::Failed;
    }
    FlushOutput();
    return result;
}
} // namespace qmx::host
