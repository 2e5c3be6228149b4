#include "engine/decoders/DecoderCache.h"

#include "engine/decoders/FileKind.h"
#include "engine/decoders/media/CameraClipDecoder.h"
#include "engine/decoders/media/VideoDecoder.h"
#include "engine/decoders/still/FlashDecoder.h"
#include "engine/decoders/still/GifDecoder.h"
#include "engine/decoders/still/ImageDecoder.h"
#include "engine/decoders/still/KeystrokeDecoder.h"
#include "engine/decoders/still/TitleDecoder.h"
#include "engine/platform/CriticalSectionGuard.h"
#include "engine/platform/NullReference.h"

#include <atomic>
#include <map>
#include <new>
#include <utility>

namespace
{
enum class DecoderKind
{
    None,
    Flash,
    Gif,
    Image,
    Video,
    Title,
    Keystroke,
    Camera
};

/// The extension comes before the decoder type: a title or image clip whose path ends in "gif" gets a GIF decoder.
DecoderKind KindFor(const tagDecProp& prop)
{
    if (HasExtension(prop.filePath, L"gif"))
        return DecoderKind::Gif;
    if (HasExtension(prop.filePath, L"swf"))
        return DecoderKind::Flash;
    switch (prop.decoderType)
    {
    case kDecoderVideo:
        return DecoderKind::Video;
    case kDecoderImage:
        return DecoderKind::Image;
    case kDecoderTitle:
        return DecoderKind::Title;
    case kDecoderKeystroke:
        return DecoderKind::Keystroke;
    case kDecoderCamera:
        return DecoderKind::Camera;
    default:
        return DecoderKind::None;
    }
}

/// Whether the cache can be used: static objects of other modules may still ask when it is gone.
std::atomic<bool> g_bAlive{false};

/// Made when the library is loaded, gone when it is unloaded.
class CDecoderCache
{
public:
    CDecoderCache()
    {
        InitializeCriticalSection(&m_lock);
        g_bAlive = true;
    }
    ~CDecoderCache()
    {
        RemoveAll();
        g_bAlive = false;
        DeleteCriticalSection(&m_lock);
    }
    CDecoderCache(const CDecoderCache&) = delete;
    CDecoderCache& operator=(const CDecoderCache&) = delete;

    IDecoder* Get(std::wstring key, const tagDecProp& prop)
    {
        const CCriticalSectionGuard guard(m_lock);
        auto found = m_decoders.find(key);
        if (found == m_decoders.end())
        {
            const DecoderPtr decoder = DecoderPtr::Adopt(MakeDecoder(prop));
            if (!decoder)
                return nullptr;
            decoder->Initialize(prop); // a decoder whose file cannot be opened answers in its own way
            found = m_decoders.emplace(std::move(key), decoder).first;
        }
        return DecoderPtr(found->second).Detach();
    }
    void Remove(const std::wstring& key)
    {
        const CCriticalSectionGuard guard(m_lock);
        if (const auto found = m_decoders.find(key); found != m_decoders.end())
        {
            const DecoderPtr decoder = std::move(found->second); // ends when the entry has gone, still in the lock
            m_decoders.erase(found);
        }
    }
    void RemoveAll()
    {
        const CCriticalSectionGuard guard(m_lock);
        std::map<std::wstring, DecoderPtr> decoders;
        decoders.swap(m_decoders); // a decoder that asks the cache while it ends finds it empty
        for (auto& entry : decoders)
            entry.second = {};
    }

private:
    CRITICAL_SECTION m_lock{};
    std::map<std::wstring, DecoderPtr> m_decoders; // one reference each
};

CDecoderCache g_cache;
} // namespace

IDecoder* MakeDecoder(const tagDecProp& prop)
{
    switch (KindFor(prop))
    {
    case DecoderKind::Gif:
        return new CGifDecoder;
    case DecoderKind::Image:
        return new CImageDecoder;
    case DecoderKind::Flash:
        return new CFlashDecoder;
    case DecoderKind::Video:
        return new CVideoDecoder;
    case DecoderKind::Title:
        return new CTitleDecoder;
    case DecoderKind::Keystroke:
        return new CKeystrokeDecoder;
    case DecoderKind::Camera:
        return new CCameraClipDecoder;
    case DecoderKind::None:
        break;
    }
    return nullptr;
}

bool IsDecoderFor(IDecoder* pDecoder, const tagDecProp& prop)
{
    switch (KindFor(prop))
    {
    case DecoderKind::Gif:
        return dynamic_cast<CGifDecoder*>(pDecoder) != nullptr;
    case DecoderKind::Image: // of which a GIF decoder is one, too
        return dynamic_cast<CImageDecoder*>(pDecoder) != nullptr && dynamic_cast<CGifDecoder*>(pDecoder) == nullptr;
    case DecoderKind::Flash:
        return dynamic_cast<CFlashDecoder*>(pDecoder) != nullptr;
    case DecoderKind::Video:
        return dynamic_cast<CVideoDecoder*>(pDecoder) != nullptr;
    case DecoderKind::Title:
        return dynamic_cast<CTitleDecoder*>(pDecoder) != nullptr;
    case DecoderKind::Keystroke:
        return dynamic_cast<CKeystrokeDecoder*>(pDecoder) != nullptr;
    case DecoderKind::Camera:
        return dynamic_cast<CCameraClipDecoder*>(pDecoder) != nullptr;
    case DecoderKind::None:
        break;
    }
    return false;
}

IDecoder* GetDecoder(std::wstring key, const tagDecProp& prop)
{
    if (!g_bAlive || IsNullReference(&prop))
        return nullptr;
    try
    {
        return g_cache.Get(std::move(key), prop);
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
}

void RemoveDecoder(std::wstring key) // NOLINT(performance-unnecessary-value-param): the exported interface
{
    if (g_bAlive)
        g_cache.Remove(key);
}

void RemoveAllDecoders()
{
    if (g_bAlive)
        g_cache.RemoveAll();
}
