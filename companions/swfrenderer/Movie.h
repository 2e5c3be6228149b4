/// @file Movie.h
/// A movie read: its characters and its timelines. Never changes once it is read.
#pragma once

#include "companions/swfrenderer/Bitmap.h"
#include "companions/swfrenderer/Container.h"
#include "companions/swfrenderer/Filter.h"
#include "companions/swfrenderer/Font.h"
#include "companions/swfrenderer/Shape.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <variant>
#include <vector>

namespace swf
{
enum class BlendMode : std::uint8_t
{
    Normal = 1,
    Layer,
    Multiply,
    Screen,
    Lighten,
    Darken,
    Difference,
    Add,
    Subtract,
    Invert,
    Alpha,
    Erase,
    Overlay,
    HardLight
};

/// What actions with constant values do to a timeline or an object on it.
struct TimelineAction
{
    enum class Kind : std::uint8_t
    {
        Play,
        Stop,
        NextFrame,
        PreviousFrame,
        GoTo,      ///< frame, from 0
        GoToLabel, ///< label
        SetProperty
    };
    enum class Property : std::uint8_t ///< numbered as the format does
    {
        X,
        Y,
        ScaleX,
        ScaleY,
        Alpha = 6,
        Visible,
        Width,
        Height,
        Rotation
    };
    Kind kind = Kind::Play;
    Property property = Property::X;
    bool thenPlay = false; ///< GoTo and GoToLabel: play from there, else stop
    std::uint32_t frame = 0;
    double value = 0; ///< pixels, percent, degrees
    std::string label;
    std::string target; ///< path with slashes or dots from the object that acts; empty for itself
};

/// What a new object brings along beside its looks.
struct PlacementExtras
{
    std::string className;               ///< of the character, where it has no number
    std::vector<TimelineAction> onLoad;  ///< once, when it has come
    std::vector<TimelineAction> onFrame; ///< with every tick after that
};

/// What a frame does to one depth. What is not stated stays as it is.
struct Placement
{
    std::uint16_t depth = 0;
    bool isMove = false; ///< changes what is there; else something new comes
    std::optional<std::uint16_t> character;
    std::optional<Matrix> matrix;
    std::optional<ColourTransform> colours;
    std::optional<std::uint16_t> ratio;
    std::optional<std::uint16_t> clipDepth;
    std::optional<std::string> name;
    std::optional<std::vector<Filter>> filters;
    std::optional<BlendMode> blend;
    std::optional<bool> visible;
    std::unique_ptr<PlacementExtras> pExtras; ///< what few have; may be null
};

struct Removal
{
    std::uint16_t depth = 0;
};

struct BackgroundChange
{
    Rgba colour;
};

using FrameStep = std::variant<Placement, Removal, TimelineAction, BackgroundChange>;

/// Frames of the root or of a sprite.
struct Timeline
{
    std::deque<FrameStep> steps;          ///< many and large: nothing is moved while they are read
    std::vector<std::uint32_t> frameEnds; ///< frame n has the steps up to frameEnds[n]
    std::vector<TimelineAction> onMade;   ///< once for every object of it, before those of its first frame
    std::unordered_map<std::string, std::uint32_t> labels;

    std::uint32_t FrameCount() const { return static_cast<std::uint32_t>(frameEnds.size()); }
    std::uint32_t FirstStep(std::uint32_t frame) const { return frame == 0 ? 0 : frameEnds[frame - 1]; }
};

/// Text that a movie could change, laid out when all fonts are known.
struct EditText
{
    Rect bounds;
    std::string text; ///< UTF-8; with markup when isHtml
    bool isHtml = false, multiline = false, wordWrap = false, border = false, password = false, autoSize = false;
    std::uint16_t font = 0;
    double height = 240; ///< twips
    Rgba colour{0, 0, 0, 255};
    std::uint8_t align = 0;                                          ///< 0 left, 1 right, 2 centre, 3 justify
    double leftMargin = 0, rightMargin = 0, indent = 0, leading = 0; ///< twips
};

struct VideoStream
{
    std::uint32_t width = 0, height = 0, codec = 0;
    bool smooth = false;
    std::vector<std::span<const std::uint8_t>> frames; ///< by number; empty where the movie has none

    // What a picture of the stream may have, whatever its packet says: the stated size, rounded up to what decoders
    // round their rows and blocks to.
    std::uint32_t MostWidth() const { return (width + 63) & ~63U; }
    std::uint32_t MostHeight() const { return (height + 15) & ~15U; }
    std::uint64_t MostPixels() const { return std::uint64_t{MostWidth()} * MostHeight(); }
    /// What a decoder may take for the first picture that is too large, at which the stream ends.
    std::uint64_t MostPixelsOnce() const
    {
        constexpr std::uint64_t kEdges = 192, kScratchRows = 280; // decoders ask for as much beside small pictures
        return std::max(MostPixels(), (MostWidth() + kEdges) * kScratchRows);
    }
};

using Character =
    std::variant<std::monostate, Shape, MorphShape, PackedBitmap, Font, Text, EditText, Timeline, VideoStream>;

struct Movie
{
    Container file;
    std::map<std::uint16_t, Character> characters; ///< by number
    std::unordered_map<std::uint16_t, Rect> scaleGrids;
    std::unordered_map<std::string, std::uint16_t> classes; ///< characters by the names of their classes
    Timeline root;

    const Character* Find(std::uint16_t id) const
    {
        const auto found = characters.find(id);
        return found != characters.end() ? &found->second : nullptr;
    }
    template <class T> const T* FindAs(std::uint16_t id) const
    {
        const Character* const p = Find(id);
        return p ? std::get_if<T>(p) : nullptr;
    }
};
} // namespace swf
