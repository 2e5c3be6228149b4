/// @file QMXTXClip.h
/// A clip that leads from one clip to another.
#pragma once

#include "engine/clips/EffectModule.h"
#include "engine/clips/QMXBaseClip.h"

#include <memory>
#include <string>
#include <vector>

/// Fetches a picture of each of two clips, fits both into a common size and has an effect module blend them. In the
/// first half the to clip stands still at its first picture, in the second half the from clip at its last. Silent.
/// Ownership : owns both clips; transitions that share clips after CopyFrom() own them together.
class QMX_API CQMXTXClip : public CQMXBaseClip
{
public:
    CQMXTXClip();
    ~CQMXTXClip() override;

    /// Nothing unless @p source is a transition clip: then its common settings, its clips (shared), module name and
    /// effect type. The module is unloaded.
    void CopyFrom(IQMXBaseClip* source) override;
    /// Opens both clips and loads the module. @return false when a clip cannot be opened; whether the module was loaded
    /// shows in IsVideoOpened().
    bool Open(const tagRenderProp& request) override;
    /// The flag of the result is the to clip's. @return false without the module, and when a clip has no picture.
    bool GetVideoFrame(std::uint64_t time, FrameResult* out) override;
    /// Closes both clips and unloads the module.
    bool Close() override;
    bool IsVideoOpened() override;

    virtual void SetEffectType(std::uint32_t type); ///< slot 31: handed to the module
    /// Slot 32: replaces both clips, which the clip owns from now on (null: none), deletes the former ones and unloads
    /// the module. A clip that is already owned stays. @return true; false when memory is short, with the clips that
    /// could not be taken deleted.
    virtual bool SetClips(IQMXBaseClip* from, IQMXBaseClip* to);
    virtual bool SetFromClip(IQMXBaseClip* from);   ///< slot 33: likewise, the from clip only; the module stays
    virtual bool SetToClip(IQMXBaseClip* to);       ///< slot 34: likewise, the to clip
    virtual IQMXBaseClip* GetFromClip();            ///< slot 35: borrowed; may be null
    virtual IQMXBaseClip* GetToClip();              ///< slot 36: borrowed; may be null
    virtual int SetEffectModule(std::wstring name); ///< slot 37: file name of the module; counts from the next Open()
    virtual void SetProgress(float progress);       ///< slot 38: this progress from now on, whatever the time

private:
    using ClipPtr = std::shared_ptr<IQMXBaseClip>;
    using Pixels = std::vector<std::uint8_t>;
    struct Side;
    struct Picture;

    ClipPtr TakeClip(IQMXBaseClip* clip) const;
    bool OpenClips(const tagRenderProp& request);
    bool PrepareModule(bool clipsOpened);
    float ProgressAt(std::uint64_t time) const;
    bool LivePicture(IQMXBaseClip& clip, std::uint64_t time, Pixels& pixels, Picture& picture);
    bool FrozenPicture(IQMXBaseClip& clip, std::uint64_t time, Pixels& pixels, Pixels& frozen, Picture& picture);
    bool SidePicture(const Side& side, bool isFrozen, std::uint64_t time, Picture& picture);
    bool Blend(const Picture& from, const Picture& to, float progress, FrameResult& out);

    ClipPtr m_pFromClip;
    ClipPtr m_pToClip;
    std::wstring m_strEffectModule;
    std::uint32_t m_nEffectType = 0;
    CEffectModule m_effectModule;
    std::int32_t m_nWorkWidth = 0;
    std::int32_t m_nWorkHeight = 0;
    bool m_bOpened = false;
    bool m_bSecondRequestFlag = false; // kept for the binary interface
    Pixels m_vecFromFreeze;            ///< last picture of the from clip, letter-boxed; one byte until it is captured
    Pixels m_vecToFreeze;              ///< first picture of the to clip, likewise
    Pixels m_vecOutput;
    Pixels m_vecFrom;
    Pixels m_vecTo;
    Pixels m_vecBlank; ///< transparent black: stands in for a clip that is not there
    bool m_bFixedProgress = false;
    float m_fProgress = 0;
};
