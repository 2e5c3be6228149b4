/// @file FontService.h
/// The system's fonts, shared by everything that sets text.
#pragma once

#include <pango/pangocairo.h>

#include <memory>
#include <mutex>

namespace pal
{
/// One for the process, from its first use on: fonts that have been found and loaded once serve the next text. Pango's
/// font maps, and all that was made with one, belong to one thread at a time; decoders draw on several. So every call
/// of Pango happens under this object's lock, the release of layouts and fonts included.
class FontService
{
public:
    /// @return null when memory is short
    static std::shared_ptr<FontService> Get();
    ~FontService();
    FontService(const FontService&) = delete;
    FontService& operator=(const FontService&) = delete;

    [[nodiscard]] std::unique_lock<std::mutex> Lock() { return std::unique_lock(m_mutex); }
    /// False when the system has no fonts at all. Under the lock.
    bool HasFonts();
    /// A context whose glyphs are neither hinted nor moved onto pixels. Under the lock.
    /// @return one reference for the caller
    PangoContext* MakeContext();

private:
    FontService();

    std::mutex m_mutex;
    PangoFontMap* m_pFontMap;  // owns one reference
    bool m_hasFonts = false;   ///< false also means that nobody has looked
    unsigned m_logHandler = 0; ///< keeps Pango's remarks off the console
};
} // namespace pal
