#include "companions/swfrenderer/Actions.h"

#include "companions/swfrenderer/ByteReader.h"

#include <bit>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>

namespace swf
{
namespace
{
constexpr std::size_t kMaxActions = 256, kMaxStack = 256;

/// A value on the stack: not known, a text, a number, or the name of an object on a timeline.
class Value
{
public:
    Value() = default;
    explicit Value(double number) : m_kind(Kind::Number), m_number(number) {}
    explicit Value(std::string text) : m_kind(Kind::Text), m_text(std::move(text)) {}
    static Value Object(std::string path)
    {
        Value value(std::move(path));
        value.m_kind = Kind::Object;
        return value;
    }
    const double* Number() const { return m_kind == Kind::Number ? &m_number : nullptr; }
    const std::string* Text() const { return m_kind == Kind::Text ? &m_text : nullptr; }
    const std::string* Path() const { return m_kind == Kind::Object ? &m_text : nullptr; }

private:
    enum class Kind
    {
        Unknown,
        Number,
        Text,
        Object
    };
    Kind m_kind = Kind::Unknown;
    double m_number = 0;
    std::string m_text;
};

const std::unordered_map<std::string, TimelineAction::Property> kProperties = {
    {"_x", TimelineAction::Property::X},
    {"_y", TimelineAction::Property::Y},
    {"_xscale", TimelineAction::Property::ScaleX},
    {"_yscale", TimelineAction::Property::ScaleY},
    {"_alpha", TimelineAction::Property::Alpha},
    {"_visible", TimelineAction::Property::Visible},
    {"_width", TimelineAction::Property::Width},
    {"_height", TimelineAction::Property::Height},
    {"_rotation", TimelineAction::Property::Rotation}};

std::optional<double> AsNumber(const Value& value)
{
    if (const double* const p = value.Number())
        return std::isfinite(*p) ? std::optional(*p) : std::nullopt;
    if (const std::string* const p = value.Text(); p && !p->empty())
    {
        double number = 0;
        const char* at = p->c_str();
        const bool negative = *at == '-';
        at += negative ? 1 : 0;
        int digits = 0;
        for (; *at >= '0' && *at <= '9' && digits < 9; ++at, ++digits)
            number = number * 10 + (*at - '0');
        if (*at == 0 && digits > 0)
            return negative ? -number : number;
    }
    return std::nullopt;
}

class CActionReader
{
public:
    explicit CActionReader(std::span<const std::uint8_t> bytes) : m_reader(bytes) {}

    std::vector<TimelineAction> Read()
    {
        while (!m_reader.AtEnd() && m_actions.size() < kMaxActions)
        {
            const std::uint8_t code = m_reader.U8();
            CByteReader body(m_reader.Take(code >= 0x80 ? m_reader.U16() : 0));
            if (code == 0 || m_reader.Failed() || !Do(code, body))
                break;
        }
        return std::move(m_actions);
    }

private:
    TimelineAction& Add(TimelineAction::Kind kind)
    {
        TimelineAction action;
        action.kind = kind;
        action.target = m_target;
        m_actions.push_back(std::move(action));
        return m_actions.back();
    }
    Value Pop()
    {
        if (m_stack.empty())
            return {};
        Value value = std::move(m_stack.back());
        m_stack.pop_back();
        return value;
    }
    void Push(Value value)
    {
        if (m_stack.size() < kMaxStack)
            m_stack.push_back(std::move(value));
    }

    /// @return false when what follows cannot be told.
    bool Do(std::uint8_t code, CByteReader& body)
    {
        switch (code)
        {
        case 0x04:
            Add(TimelineAction::Kind::NextFrame);
            break;
        case 0x05:
            Add(TimelineAction::Kind::PreviousFrame);
            break;
        case 0x06:
            Add(TimelineAction::Kind::Play);
            break;
        case 0x07:
            Add(TimelineAction::Kind::Stop);
            break;
        case 0x17:
            Pop();
            break;
        case 0x1C:
            GetVariable();
            break;
        case 0x1D:
            SetVariable();
            break;
        case 0x20:
            SetTarget(Pop());
            break;
        case 0x23:
            SetProperty();
            break;
        case 0x4E:
            GetMember();
            break;
        case 0x4F:
            SetMember();
            break;
        case 0x52:
            CallMethod();
            break;
        case 0x3D:
            CallFunction();
            break;
        case 0x81:
        {
            TimelineAction& action = Add(TimelineAction::Kind::GoTo);
            action.frame = body.U16();
            break;
        }
        case 0x88:
            m_pool.clear();
            for (std::uint32_t n = body.U16(); n > 0 && !body.Failed(); --n)
                m_pool.push_back(body.String());
            break;
        case 0x8B:
            SetTarget(Value(body.String()));
            break;
        case 0x8C:
            Add(TimelineAction::Kind::GoToLabel).label = body.String();
            break;
        case 0x96:
            PushConstants(body);
            break;
        case 0x9F:
            GoToFrame2(body);
            break;
        case 0x08: // quality
        case 0x09: // sounds
            break;
        case 0x99: // jumps and branches, waiting for frames, blocks of code
        case 0x9D:
        case 0x8A:
        case 0x8D:
        case 0x94:
        case 0x9B:
        case 0x8E:
        case 0x8F:
        case 0x2A:
        case 0x3E:
            return false;
        default:
            m_stack.clear(); // a value that nobody knows here may be used below
        }
        return true;
    }

    void PushConstants(CByteReader& body)
    {
        while (!body.AtEnd())
        {
            switch (body.U8())
            {
            case 0:
                Push(Value(body.String()));
                break;
            case 1:
                Push(Value(static_cast<double>(body.F32())));
                break;
            case 5:
                Push(Value(body.U8() != 0 ? 1.0 : 0.0));
                break;
            case 6:
            {
                // The half with sign and exponent comes first.
                const std::uint64_t high = body.U32();
                Push(Value(std::bit_cast<double>(high << 32 | body.U32())));
                break;
            }
            case 7:
                Push(Value(static_cast<double>(static_cast<std::int32_t>(body.U32()))));
                break;
            case 8:
                PushPooled(body.U8());
                break;
            case 9:
                PushPooled(body.U16());
                break;
            case 4:
                (void)body.U8();
                [[fallthrough]];
            case 2:
            case 3:
                Push(Value{});
                break;
            default:
                return;
            }
        }
    }
    void PushPooled(std::size_t index) { Push(index < m_pool.size() ? Value(m_pool[index]) : Value{}); }
    void SetTarget(const Value& value)
    {
        if (const std::string* const p = value.Text())
            m_target = *p;
        else if (const std::string* const pPath = value.Path())
            m_target = *pPath;
    }
    void GetVariable()
    {
        const Value name = Pop();
        const std::string* const p = name.Text();
        if (!p || p->empty())
            Push(Value{});
        else
            Push(Value::Object(*p == "this" ? m_target : *p));
    }
    void GetMember()
    {
        const Value name = Pop(), object = Pop();
        const std::string* const pName = name.Text();
        const std::string* const pObject = object.Path();
        if (!pName || !pObject)
            Push(Value{});
        else
            Push(Value::Object(pObject->empty() ? *pName : *pObject + "." + *pName));
    }
    void AddProperty(const std::string& target, TimelineAction::Property property, const Value& value)
    {
        const std::optional<double> number = AsNumber(value);
        if (!number)
            return;
        TimelineAction& action = Add(TimelineAction::Kind::SetProperty);
        action.property = property;
        action.value = *number;
        action.target = target;
    }
    void SetVariable()
    {
        const Value value = Pop(), name = Pop();
        if (const std::string* const p = name.Text())
            if (const auto found = kProperties.find(*p); found != kProperties.end())
                AddProperty(m_target, found->second, value);
    }
    void SetMember()
    {
        const Value value = Pop(), name = Pop(), object = Pop();
        const std::string* const pName = name.Text();
        const std::string* const pObject = object.Path();
        if (!pName || !pObject)
            return;
        if (const auto found = kProperties.find(*pName); found != kProperties.end())
            AddProperty(*pObject, found->second, value);
    }
    void SetProperty()
    {
        const Value value = Pop();
        const std::optional<double> index = AsNumber(Pop());
        const Value target = Pop();
        const std::string* const pTarget = target.Text();
        const std::string* const pPath = target.Path();
        if (!index || (!pTarget && !pPath))
            return;
        const int n = static_cast<int>(std::clamp(*index, -1.0, 99.0));
        if ((n >= 0 && n <= 3) || (n >= 6 && n <= 10))
        {
            const std::string path = pTarget ? *pTarget : *pPath;
            AddProperty(path.empty() ? m_target : path, static_cast<TimelineAction::Property>(n), value);
        }
    }
    void GoTo(const std::string& target, const Value& where, bool play)
    {
        TimelineAction action;
        action.thenPlay = play;
        action.target = target;
        if (const std::optional<double> number = AsNumber(where))
        {
            action.kind = TimelineAction::Kind::GoTo;
            action.frame = *number >= 1 && *number <= 65'536 ? static_cast<std::uint32_t>(*number) - 1 : 0;
        }
        else if (const std::string* const p = where.Text())
        {
            action.kind = TimelineAction::Kind::GoToLabel;
            action.label = *p;
        }
        else
            return;
        m_actions.push_back(std::move(action));
    }
    void GoToFrame2(CByteReader& body)
    {
        const std::uint8_t flags = body.U8();
        Value where = Pop();
        if ((flags & 2) != 0) // frames of the scenes before
            if (const std::optional<double> number = AsNumber(where))
                where = Value(*number + body.U16());
        GoTo(m_target, where, (flags & 1) != 0);
    }
    void CallMethod()
    {
        const Value method = Pop(), object = Pop();
        const std::optional<double> count = AsNumber(Pop());
        std::vector<Value> arguments;
        for (double n = count ? *count : 0; n > 0 && !m_stack.empty(); --n)
            arguments.push_back(Pop());
        Push(Value{});
        const std::string* const pMethod = method.Text();
        const std::string* const pObject = object.Path();
        if (!pMethod || !pObject)
            return;
        const std::string before = std::exchange(m_target, *pObject);
        if (*pMethod == "stop")
            Add(TimelineAction::Kind::Stop);
        else if (*pMethod == "play")
            Add(TimelineAction::Kind::Play);
        else if (*pMethod == "nextFrame")
            Add(TimelineAction::Kind::NextFrame);
        else if (*pMethod == "prevFrame")
            Add(TimelineAction::Kind::PreviousFrame);
        else if (*pMethod == "gotoAndPlay" && !arguments.empty())
            GoTo(m_target, arguments.back(), true);
        else if (*pMethod == "gotoAndStop" && !arguments.empty())
            GoTo(m_target, arguments.back(), false);
        m_target = before;
    }
    void CallFunction()
    {
        Pop();
        const std::optional<double> count = AsNumber(Pop());
        for (double n = count ? *count : 0; n > 0 && !m_stack.empty(); --n)
            Pop();
        Push(Value{});
    }

    CByteReader m_reader;
    std::vector<TimelineAction> m_actions;
    std::vector<Value> m_stack;
    std::vector<std::string> m_pool;
    std::string m_target;
};
} // namespace

std::vector<TimelineAction> ReadActions(std::span<const std::uint8_t> bytes)
{
    return CActionReader(bytes).Read();
}
} // namespace swf
