#include "engine/model/ClipFactory.h"

#include "engine/clips/QMXBaseClip.h"
#include "engine/clips/QMXCameraClip.h"
#include "engine/clips/QMXColorClip.h"
#include "engine/clips/QMXVideoClip.h"

#include <memory>
#include <new>

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
    case QMXClipType_Color:
        return new (std::nothrow) CQMXColorClip;
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
