/// @file QMXDocument.h
#pragma once

#include "engine/model/IQMXDocument.h"

/// The only implementation of IQMXDocument.
class QMX_API CQMXDocument : public IQMXDocument
{
public:
    explicit CQMXDocument(IQMXCleaner* cleaner);
    ~CQMXDocument() noexcept override;
    CQMXDocument(const CQMXDocument&) = delete;
    CQMXDocument& operator=(const CQMXDocument&) = delete;

    void RemoveAllTracks(bool recreate) override;
    int GetTrackCount() override;
    IQMXTrack* GetTrack(int index) override;
    IQMXTrack* GetTrackByID(std::uint64_t id) override;
    bool AddTrack(IQMXTrack* track) override;
    std::uint64_t GetDocumentID() override;
    void RemoveTrack(IQMXTrack* track) override;
    void CloseAllClips() override;
    int RemoveClipByPath(std::wstring path, std::uint64_t trackID) override;

private:
    void DiscardTracks();

    QMXTrackList* m_pTracks = nullptr; // owned; null after RemoveAllTracks(false)
    IQMXCleaner* m_pCleaner;           // borrowed; may be null
};
