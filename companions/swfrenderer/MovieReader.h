/// @file MovieReader.h
/// Reading of a movie's tags.
#pragma once

#include "companions/swfrenderer/Limits.h"
#include "companions/swfrenderer/Movie.h"
#include "companions/swfrenderer/ShapeReader.h"

#include <span>

namespace swf
{
/// Fills in what comes behind the header of movie.file. A tag that cannot be read is left out; a movie that breaks off
/// has what came before.
class CMovieReader
{
public:
    CMovieReader(Movie& movie, const Budget& budget);
    /// @return false when there is not one frame. Throws std::bad_alloc.
    bool Read();

private:
    void ReadTags(std::span<const std::uint8_t> bytes, Timeline& timeline, bool isRoot);
    void ReadControlTag(std::uint32_t code, CByteReader& tag, Timeline& timeline);
    void ReadDefinition(std::uint32_t code, CByteReader& tag);
    void ReadPlacement(std::uint32_t code, CByteReader& tag, Timeline& timeline);
    void ReadClipActions(CByteReader& tag, PlacementExtras& extras);
    void ReadClasses(CByteReader& tag);
    void AddScripts();
    void AddActions(std::span<const std::uint8_t> bytes, std::vector<TimelineAction>& out);
    void ReadBitmap(std::uint32_t code, std::uint16_t id, CByteReader& tag);
    void ReadSprite(std::uint16_t id, CByteReader& tag);
    void ReadButton(std::uint32_t code, std::uint16_t id, CByteReader& tag);
    void ReadEditText(std::uint16_t id, CByteReader& tag);
    void ReadVideo(std::uint32_t code, std::uint16_t id, CByteReader& tag);
    bool AddStep(Timeline& timeline, FrameStep&& step, std::size_t cbBeside);
    bool Keep(std::uint16_t id, Character&& character);
    template <class T> T* FindForChange(std::uint16_t id);

    Movie& m_movie;
    ReadBudget m_budget;
    std::size_t m_tagsLeft = kMaxTags;
    std::span<const std::uint8_t> m_jpegTables;
    std::vector<std::span<const std::uint8_t>> m_scripts; ///< compiled ones
};
} // namespace swf
