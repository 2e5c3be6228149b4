/// @file SpyClip.h
/// Clips and tracks that tell what happens to them.
#pragma once

#include "engine/clips/QMXBaseClip.h"
#include "engine/model/QMXTrack.h"

#include <atomic>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

/// What happened, in order; written from any thread.
class CEventLog
{
public:
    void Add(std::string event)
    {
        const std::lock_guard guard(m_lock);
        m_events.push_back(std::move(event));
    }
    std::vector<std::string> Events() const
    {
        const std::lock_guard guard(m_lock);
        return m_events;
    }

private:
    mutable std::mutex m_lock;
    std::vector<std::string> m_events;
};

/// A clip that writes "NAME:operation" into a log. It pretends to open, and gives no pictures.
class CSpyClip : public CQMXBaseClip
{
public:
    CSpyClip(CEventLog& log, std::string name) : CQMXBaseClip(QMXClipType_Base), m_log(log), m_name(std::move(name)) {}
    ~CSpyClip() override { m_log.Add(m_name + ":deleted"); }
    std::uint64_t GetStartTime() override
    {
        ++m_nAskedForStart;
        return CQMXBaseClip::GetStartTime();
    }
    bool Open(const tagRenderProp& request) override
    {
        m_log.Add(m_name + ":Open");
        m_bOpen = m_bOpens;
        return CQMXBaseClip::Open(request) && m_bOpens;
    }
    bool GetVideoFrame(std::uint64_t time, FrameResult* out) override
    {
        m_log.Add(m_name + ":GetVideoFrame " + std::to_string(time));
        out->flag = m_bFlag;
        return false;
    }
    bool Close() override
    {
        m_log.Add(m_name + ":Close");
        m_bOpen = false;
        return true;
    }
    bool IsVideoOpened() override { return m_bOpen; }

    bool m_bOpens = true; ///< what Open() leads to
    bool m_bOpen = false;
    bool m_bFlag = false;
    int m_nAskedForStart = 0;

private:
    CEventLog& m_log;
    std::string m_name;
};

/// A track that logs its end.
class CSpyTrack : public CQMXTrack
{
public:
    CSpyTrack(CEventLog& log, std::string name)
        : CQMXTrack(0, QMXTrackType{}, 0, tagPIPPOSITION{}), m_log(log), m_name(std::move(name))
    {
    }
    ~CSpyTrack() override { m_log.Add(m_name + ":deleted"); }

private:
    CEventLog& m_log;
    std::string m_name;
};
