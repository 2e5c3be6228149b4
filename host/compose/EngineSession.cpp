#include "host/compose/EngineSession.h"

#include "host/HostError.h"

#include <mfapi.h>

namespace qmx::host
{
EngineSession::MediaServices::MediaServices()
{
    if (FAILED(MFStartup(MF_VERSION, MFSTARTUP_FULL)))
        throw HostError(ExitCode::Failed, "", "the media services cannot be started");
}

EngineSession::MediaServices::~MediaServices()
{
    MFShutdown();
}

EngineSession::EngineSession() : m_pCleaner(CreateQMXCleaner()), m_pDocument(CreateQMXDocument(m_pCleaner.get()))
{
    if (!m_pCleaner || !m_pDocument)
        throw std::bad_alloc();
}

EngineSession::~EngineSession()
{
    m_pDocument.reset();
    m_pCleaner.reset(); // returns when every clip has let go of its decoder
    RemoveAllDecoders();
}
} // namespace qmx::host
