#include "engine/model/QMXDocument.h"

#include <algorithm>
#include <new>
#include <utility>

IQMXDocument* CreateQMXDocument(IQMXCleaner* cleaner)
{
    return new (std::nothrow) CQMXDocument(cleaner);
}

CQMXDocument::CQMXDocument(IQMXCleaner* cleaner) : m_pTracks(new (std::nothrow) QMXTrackList), m_pCleaner(cleaner) {}

CQMXDocument::~CQMXDocument() noexcept
{
    DiscardTracks();
}

void CQMXDocument::DiscardTracks()
{
    QMXTrackList* const tracks = std::exchange(m_pTracks, nullptr);
    if (tracks == nullptr)
        return;
    if (m_pCleaner != nullptr)
        m_pCleaner->AddGarbage(tracks);
    else
        delete tracks; // the list alone: a host without a cleaner deletes its tracks itself
}

void CQMXDocument::RemoveAllTracks(bool recreate)
{
    DiscardTracks();
    if (recreate)
        m_pTracks = new (std::nothrow) QMXTrackList;
}

int CQMXDocument::GetTrackCount()
{
    return m_pTracks != nullptr ? static_cast<int>(m_pTracks->size()) : 0;
}

IQMXTrack* CQMXDocument::GetTrack(int index)
{
    if (m_pTracks == nullptr || index < 0 || index >= GetTrackCount())
        return nullptr;
    return (*m_pTracks)[static_cast<std::size_t>(index)];
}

IQMXTrack* CQMXDocument::GetTrackByID(std::uint64_t id)
{
    if (m_pTracks == nullptr)
        return nullptr;
    const auto found = std::find_if(m_pTracks->begin(), m_pTracks->end(),
                                    [id](IQMXTrack* track) { return track->GetTrackID() == id; });
    return found != m_pTracks->end() ? *found : nullptr;
}

bool CQMXDocument::AddTrack(IQMXTrack* track)
{
    if (track == nullptr || m_pTracks == nullptr)
        return false;
    try
    {
        track->SetDocumentID(GetDocumentID());
        m_pTracks->push_back(track);
        return true;
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

std::uint64_t CQMXDocument::GetDocumentID()
{
    return reinterpret_cast<std::uintptr_t>(this);
}

void CQMXDocument::RemoveTrack(IQMXTrack* track)
{
    if (track == nullptr || m_pTracks == nullptr)
        return;
    const auto found = std::find(m_pTracks->begin(), m_pTracks->end(), track);
    if (found != m_pTracks->end())
        m_pTracks->erase(found);
}

void CQMXDocument::CloseAllClips()
{
    if (m_pTracks == nullptr)
        return;
    for (IQMXTrack* const track : *m_pTracks)
    {
        for (int index = 0; index < track->GetClipCount(); ++index)
        {
            if (IQMXBaseClip* const clip = track->GetClip(index))
                clip->Close();
        }
    }
}

int CQMXDocument::RemoveClipByPath(std::wstring path, std::uint64_t trackID)
{
    if (IQMXTrack* const track = GetTrackByID(trackID))
        track->RemoveClipByPath(std::move(path));
    return 0;
}
