#include "engine/model/ClipFactory.h"

#include "engine/clips/QMXBaseClip.h"
#include "engine/clips/QMXColorClip.h"
#include "engine/clips/QMXImageClip.h"
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
    case QMXClipType_Image:
    {
        auto* const imageSource = dynamic_cast<CQMXImageClip*>(&source);
        auto* const imageCopy = dynamic_cast<CQMXImageClip*>(&copy);
        if (imageSource != nullptr && imageCopy != nullptr)
            imageCopy->SetRotation(imageSource->GetRotation());
        break;
    }
    default: // a colour clip makes its picture itself
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
    case QMXClipType_Image:
        return new (std::nothrow) CQMXImageClip;
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
