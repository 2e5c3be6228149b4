/// @file EngineSession.h
/// The engine from its start to its end.
#pragma once

#include "engine/qmx.h"

#include <memory>

namespace qmx::host
{
/// Keeps the platform's media services running and owns one document with its cleaner. One at a time.
class EngineSession
{
public:
    /// @throw HostError  ExitCode::Failed when the services or the engine cannot be started
    EngineSession();
    ~EngineSession(); ///< deletes the document and everything in it, then empties the decoder cache
    EngineSession(const EngineSession&) = delete;
    EngineSession& operator=(const EngineSession&) = delete;

    IQMXDocument& Document() { return *m_pDocument; }

private:
    /// Balances MFStartup(); destroyed after everything that may use the services.
    struct MediaServices
    {
        MediaServices();
        ~MediaServices();
        MediaServices(const MediaServices&) = delete;
        MediaServices& operator=(const MediaServices&) = delete;
    };

    MediaServices m_services;
    std::unique_ptr<IQMXCleaner> m_pCleaner;
    std::unique_ptr<IQMXDocument> m_pDocument; // uses the cleaner in its destructor
};
} // namespace qmx::host
