#include "host/commands/CheckEffectCommand.h"

#include "host/effects/EffectCheck.h"
#include "host/effects/LoadedEffect.h"
#include "host/system/Interrupt.h"
#include "host/system/Platform.h"
#include "host/system/StandardOutput.h"

#include <filesystem>

namespace qmx::host
{
ExitCode RunCheckEffect(const CheckEffectOptions& options)
{
    const LoadedEffect module(EnginePath(std::filesystem::absolute(options.module)), options.module, "");
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
