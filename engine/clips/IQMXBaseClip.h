/// @file IQMXBaseClip.h
/// The interface of every kind of clip.
#pragma once

#include "engine/clips/ClipType.h"
#include "engine/clips/RenderProp.h"
#include "engine/platform/Export.h"
#include "engine/platform/SampleBuffer.h"

#include <cstdint>
#include <string>

/// A piece of media placed on a track. Times are unsigned counts of 100 ns; sums wrap around.
/// Lifetime : made by the clip factory, owned by the track it is added to, ended by delete.
/// Threads  : not locked; used from the rendering thread, destroyed there or on the cleaner thread.
/// Slots    : the order of the declarations is part of the binary interface.
class QMX_API IQMXBaseClip
{
public:
    virtual ~IQMXBaseClip() = default; ///< slot 0

    virtual QMXClipType GetClipType() = 0;                ///< slot 1
    virtual std::wstring GetFilePath() = 0;               ///< slot 2
    virtual int SetFilePath(std::wstring path) = 0;       ///< slot 3. @return 0
    virtual std::uint64_t GetInPoint() = 0;               ///< slot 4: source time of the first frame
    virtual std::uint64_t GetOutPoint() = 0;              ///< slot 5: in-point + duration
    virtual void SetInPoint(std::uint64_t time) = 0;      ///< slot 6
    virtual std::uint64_t GetStartTime() = 0;             ///< slot 7: timeline time of the first frame
    virtual void SetStartTime(std::uint64_t time) = 0;    ///< slot 8
    virtual std::uint64_t GetEndTime() = 0;               ///< slot 9: start time + duration
    virtual std::uint64_t GetDuration() = 0;              ///< slot 10: length on the timeline and in the source
    virtual void SetDuration(std::uint64_t duration) = 0; ///< slot 11
    virtual std::uint64_t GetTrackID() = 0;               ///< slot 12: all ones until it is set
    virtual void SetTrackID(std::uint64_t id) = 0;        ///< slot 13
    virtual void SetDocumentID(std::uint64_t id) = 0;     ///< slot 14: set by the track the clip is added to
    virtual std::uint64_t GetDocumentID() = 0;            ///< slot 15
    /// Slot 16: takes clip type, path, start time, in-point and duration of @p source; null changes nothing.
    virtual void CopyFrom(IQMXBaseClip* source) = 0;
    /// Slot 17: keeps @p request and opens what the clip shows. @return false when it cannot be opened.
    virtual bool Open(const tagRenderProp& request) = 0;
    /// Slot 18: picture at timeline time @p time into @p out. @return false when there can be none.
    virtual bool GetVideoFrame(std::uint64_t time, FrameResult* out) = 0;
    virtual bool Close() = 0;                                 ///< slot 19: gives the decoder back. @return true
    virtual bool OpenAudio(const tagRenderProp& request) = 0; ///< slot 20
    /// Slot 21: sound from timeline time @p time on; otherwise as ReadAudio().
    virtual std::uint32_t GetAudioAtTime(std::uint64_t time, std::uint8_t** buffer, std::uint32_t* size) = 0;
    /// Slot 22: the next *@p size bytes of 48 kHz 16-bit stereo sound into *@p buffer; where *@p buffer is null a
    /// block is allocated (the caller frees it with free()) and *@p size says how long it is.
    /// @return bytes written; 0 for a null @p buffer or when memory is short.
    virtual std::uint32_t ReadAudio(std::uint8_t** buffer, std::uint32_t* size) = 0;
    virtual bool ResetAudio() = 0;             ///< slot 23
    virtual bool IsAudioOpened() = 0;          ///< slot 24
    virtual bool IsVideoOpened() = 0;          ///< slot 25
    virtual ISampleBuffer* GetLastFrame() = 0; ///< slot 26. @return one reference, or null
    /// Slot 27: lets the clip show the pictures of @p clip (borrowed; null ends it). Only index 0 counts.
    virtual void SetAttachment(int index, IQMXBaseClip* clip) = 0;
    /// Slot 28: opens the sound at timeline time @p time where it is not open, then as ReadAudio().
    virtual std::uint32_t GetAudioData(std::uint8_t** buffer, std::uint32_t* size, std::uint64_t time) = 0;
    /// Slot 29: the one way in which a picture leaves a clip. Opens the clip where needed, and closes it when no
    /// picture comes.
    /// @param request  caller's; its time is overwritten with @p time.  @param flag  may be null.
    /// @return one reference for the caller, or null.
    virtual ISampleBuffer* GetFrame(tagRenderProp& request, std::uint64_t time, bool* flag) = 0;
    /// Slot 30: path + "_Document_" + document ID + "_Track_" + track ID, the numbers in decimal.
    virtual std::wstring GetDecoderKey() = 0;
};
