#include "host/CommandLine.h"
#include "host/system/Interrupt.h"
#include "host/system/Platform.h"
#include "host/system/StandardError.h"

#include <exception>
#include <new>

int main(int argc, char** argv)
{
    using namespace qmx::host;
    CatchInterrupts();
    KeepLineEnds();
    StartComponents();
    const auto fail = [](const HostError& error)
    {
        PrintError(error);
        return static_cast<int>(error.Code());
    };
    try
    {
        return static_cast<int>(RunCommandLine(argc, argv));
    }
    catch (const HostError& error)
    {
        return fail(error);
    }
    catch (const std::bad_alloc&)
    {
        return fail(HostError(ExitCode::Failed, "", "memory is short"));
    }
    catch (const std::exception& error)
    {
        return fail(HostError(ExitCode::Failed, "", error.what()));
    }
}
