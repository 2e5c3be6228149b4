/// @file ScriptValue.h
/// What the readers of actions and of frame scripts know of the values that a script computes with.
#pragma once

#include "companions/swfrenderer/Movie.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace swf
{
/// A value: not known, a number, a text, or an object on a time line, by its path from the one that runs the script
/// (names with dots; empty for itself). Texts and paths above 255 bytes are not known.
class ScriptValue
{
public:
    ScriptValue() = default;
    explicit ScriptValue(double number) : m_kind(Kind::Number), m_number(number) {}
    explicit ScriptValue(std::string text) : ScriptValue(Kind::Text, std::move(text)) {}
    static ScriptValue Object(std::string path) { return {Kind::Object, std::move(path)}; }
    const double* Number() const { return m_kind == Kind::Number ? &m_number : nullptr; } ///< null: no number
    const std::string* Text() const { return m_kind == Kind::Text ? &m_text : nullptr; }
    const std::string* Path() const { return m_kind == Kind::Object ? &m_text : nullptr; }

private:
    static constexpr std::size_t kMaxText = 255;
    enum class Kind
    {
        Unknown,
        Number,
        Text,
        Object
    };
    ScriptValue(Kind kind, std::string text)
    {
        if (text.size() > kMaxText)
            return;
        m_kind = kind;
        m_text = std::move(text);
    }
    Kind m_kind = Kind::Unknown;
    double m_number = 0;
    std::string m_text;
};

/// Values put aside, at most 256: what comes on top of those is lost.
class CScriptStack
{
public:
    void Push(ScriptValue value)
    {
        if (m_values.size() < kMaxValues)
            m_values.push_back(std::move(value));
    }
    /// @return a value that is not known when there is none
    ScriptValue Pop()
    {
        if (m_values.empty())
            return {};
        ScriptValue value = std::move(m_values.back());
        m_values.pop_back();
        return value;
    }
    std::size_t Size() const { return m_values.size(); }
    void Clear() { m_values.clear(); }

private:
    static constexpr std::size_t kMaxValues = 256;
    std::vector<ScriptValue> m_values;
};

/// What a method without arguments does to a time line; nothing for other names.
inline std::optional<TimelineAction::Kind> TimelineCall(std::string_view method)
{
    if (method == "stop")
        return TimelineAction::Kind::Stop;
    if (method == "play")
        return TimelineAction::Kind::Play;
    if (method == "nextFrame")
        return TimelineAction::Kind::NextFrame;
    if (method == "prevFrame")
        return TimelineAction::Kind::PreviousFrame;
    return std::nullopt;
}

/// A jump to @p frame, counted from 1; to the first where there is none of that number.
inline TimelineAction JumpTo(double frame, bool thenPlay)
{
    constexpr double kMaxFrames = 65'536; // as many as a movie may have
    TimelineAction action;
    action.kind = TimelineAction::Kind::GoTo;
    action.frame = frame >= 1 && frame <= kMaxFrames ? static_cast<std::uint32_t>(frame) - 1 : 0;
    action.thenPlay = thenPlay;
    return action;
}
inline TimelineAction JumpTo(std::string label, bool thenPlay)
{
    TimelineAction action;
    action.kind = TimelineAction::Kind::GoToLabel;
    action.label = std::move(label);
    action.thenPlay = thenPlay;
    return action;
}
} // namespace swf
