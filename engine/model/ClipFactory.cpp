#include "engine/model/ClipFactory.h"

#include "engine/clips/QMXAudioClip.h"
#include "engine/clips/QMXBaseClip.h"
#include "engine/clips/QMXCameraClip.h"
#include "engine/clips/QMXColorClip.h"
#include "engine/clips/QMXImageClip.h"
#include "engine/clips/QMXKeystrokeClip.h"
#include "engine/clips/QMXTXClip.h"
#include "engine/clips/QMXTitleClip.h"
#include "engine/clips/QMXVideoClip.h"

#include <memory>
#include <new>
#include <vector>

namespace
{
void CopyVideoSettings(CQMXVideoClip& source, CQMXVideoClip& copy)
{
    copy.SetFrameRate(source.GetFrameRate());
    copy.SetRotation(source.GetRotation());
    const tagTransparentColorInfo* const info = source.GetTransparentColor();
    if (info != nullptr && info->pBackground != nullptr)
        info->pBackground->AddRef(); // for the record of the copy
    copy.SetTransparentColor(source.IsTransparentColorOn(), info);
}

/// The clips of a transition are copied, never shared. Its effect keeps the factory's values.
void CopyTransitionClips(CQMXTXClip& source, CQMXTXClip& copy)
{
    if (source.GetFromClip() != nullptr)
        copy.SetFromClip(DuplicateClip(source.GetFromClip()));
    if (source.GetToClip() != nullptr)
        copy.SetToClip(DuplicateClip(source.GetToClip()));
}

void CopyTitleSettings(CQMXTitleClip& source, CQMXTitleClip& copy)
{
    std::vector<tagQMXTitleTextInfo*> items;
    for (const tagQMXTitleTextInfo* const item : source.GetTitleTexts(items))
    {
        auto own = std::make_unique<tagQMXTitleTextInfo>(*item);
        copy.AddTitleText(own.release());
    }
}

void CopyKeystrokeSettings(CQMXKeystrokeClip& source, CQMXKeystrokeClip& copy)
{
    copy.SetLeftAndTopAndWidth(source.GetKeystrokeLeft(), source.GetKeystrokeTop(), source.GetKeystrokeWidth());
    std::vector<tagQMXKeystrokeInfo*> items;
    for (const tagQMXKeystrokeInfo* const item : source.GetKeystrokes(items))
    {
        auto own = std::make_unique<tagQMXKeystrokeInfo>(*item);
        copy.AddKeystroke(own.release());
    }
}

/// Copies what only clips of this kind have.
void CopyOwnSettings(IQMXBaseClip& source, IQMXBaseClip& copy)
{
    switch (copy.GetClipType())
    {
    case QMXClipType_Video:
    {
        auto* const videoSource = dynamic_cast<CQMXVideoClip*>(&source);
        auto* const videoCopy = dynamic_cast<CQMXVideoClip*>(&copy);
        if (videoSource != nullptr && videoCopy != nullptr)
            CopyVideoSettings(*videoSource, *videoCopy);
        break;
    }
    case QMXClipType_Title:
    {
        auto* const titleSource = dynamic_cast<CQMXTitleClip*>(&source);
        auto* const titleCopy = dynamic_cast<CQMXTitleClip*>(&copy);
        if (titleSource != nullptr && titleCopy != nullptr)
            CopyTitleSettings(*titleSource, *titleCopy);
        break;
    }
    case QMXClipType_Keystroke:
    {
        auto* const keystrokeSource = dynamic_cast<CQMXKeystrokeClip*>(&source);
        auto* const keystrokeCopy = dynamic_cast<CQMXKeystrokeClip*>(&copy);
        if (keystrokeSource != nullptr && keystrokeCopy != nullptr)
            CopyKeystrokeSettings(*keystrokeSource, *keystrokeCopy);
        break;
    }
    case QMXClipType_Image:
    {
        auto* const imageSource = dynamic_cast<CQMXImageClip*>(&source);
        auto* const imageCopy = dynamic_cast<CQMXImageClip*>(&copy);
        if (imageSource != nullptr && imageCopy != nullptr)
            imageCopy->SetRotation(imageSource->GetRotation());
        break;
    }
    case QMXClipType_Transition:
    {
        auto* const transitionSource = dynamic_cast<CQMXTXClip*>(&source);
        auto* const transitionCopy = dynamic_cast<CQMXTXClip*>(&copy);
        if (transitionSource != nullptr && transitionCopy != nullptr)
            CopyTransitionClips(*transitionSource, *transitionCopy);
        break;
    }
    default: // a camera clip keeps the factory's settings, a colour clip its colour
        break;
    }
}
} // namespace

IQMXBaseClip* CreateClipByClipType(QMXClipType type)
{
    switch (type)
    {
    case QMXClipType_Base:
        return new (std::nothrow) CQMXBaseClip(type);
    case QMXClipType_Video:
        return new (std::nothrow) CQMXVideoClip;
    case QMXClipType_Camera:
        return new (std::nothrow) CQMXCameraClip;
    case QMXClipType_Audio:
        return new (std::nothrow) CQMXAudioClip;
    case QMXClipType_Image:
        return new (std::nothrow) CQMXImageClip;
    case QMXClipType_Color:
        return new (std::nothrow) CQMXColorClip;
    case QMXClipType_Transition:
        return new (std::nothrow) CQMXTXClip;
    case QMXClipType_Title:
        return new (std::nothrow) CQMXTitleClip;
    case QMXClipType_Keystroke:
    {
        auto* const clip = new (std::nothrow) CQMXKeystrokeClip;
        if (clip != nullptr)
            clip->SetLeftAndTopAndWidth(0, 0, 1);
        return clip;
    }
    default:
        return nullptr;
    }
}

IQMXBaseClip* DuplicateClip(IQMXBaseClip* source)
{
    if (source == nullptr)
        return nullptr;
    std::unique_ptr<IQMXBaseClip> copy(CreateClipByClipType(source->GetClipType()));
    if (copy == nullptr)
        return nullptr;
    try
    {
        copy->SetFilePath(source->GetFilePath());
        copy->SetDuration(source->GetDuration());
        copy->SetStartTime(source->GetStartTime());
        copy->SetInPoint(source->GetInPoint());
        CopyOwnSettings(*source, *copy);
        return copy.release();
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
}
