#include "companions/swfrenderer/Actions.h"

#include "companions/swfrenderer/ByteReader.h"
#include "companions/swfrenderer/ScriptValue.h"

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
using Value = ScriptValue;

constexpr std::size_t kMaxActions = 256;

/// Codes of actions, as the format names them.
enum Action : std::uint8_t
{
    kActionNextFrame = 0x04,
    kActionPreviousFrame = 0x05,
    kActionPlay = 0x06,
    kActionStop = 0x07,
    kActionToggleQuality = 0x08,
    kActionStopSounds = 0x09,
    kActionPop = 0x17,
    kActionGetVariable = 0x1C,
    kActionSetVariable = 0x1D,
    kActionSetTarget2 = 0x20,
    kActionSetProperty = 0x23,
    kActionThrow = 0x2A,
    kActionCallFunction = 0x3D,
    kActionReturn = 0x3E,
    kActionGetMember = 0x4E,
    kActionSetMember = 0x4F,
    kActionCallMethod = 0x52,
    kActionGotoFrame = 0x81,
    kActionConstantPool = 0x88,
    kActionWaitForFrame = 0x8A,
    kActionSetTarget = 0x8B,
    kActionGoToLabel = 0x8C,
    kActionWaitForFrame2 = 0x8D,
    kActionDefineFunction2 = 0x8E,
    kActionTry = 0x8F,
    kActionWith = 0x94,
    kActionPush = 0x96,
    kActionJump = 0x99,
    kActionDefineFunction = 0x9B,
    kActionIf = 0x9D,
    kActionGotoFrame2 = 0x9F,
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
    CActionReader(std::span<const std::uint8_t> bytes, ReadBudget& budget) : m_reader(bytes), m_budget(budget) {}

    std::vector<TimelineAction> Read()
    {
        while (!m_reader.AtEnd() && m_actions.size() < kMaxActions && m_budget.Take(0))
        {
            const std::uint8_t code = m_reader.U8();
            CByteReader body(m_reader.Take(code >= 0x80 ? m_reader.U16() : 0));
            const std::size_t before = m_actions.size();
            if (code == 0 || m_reader.Failed() || !Do(code, body))
                break;
            if (m_actions.size() > before &&
                !m_budget.Take(sizeof(FrameStep) + m_actions.back().label.size() + m_actions.back().target.size()))
            {
                m_actions.pop_back();
                break;
            }
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
    /// @return false when what follows cannot be told.
    bool Do(std::uint8_t code, CByteReader& body)
    {
        switch (code)
        {
        case kActionNextFrame:
            Add(TimelineAction::Kind::NextFrame);
            break;
        case kActionPreviousFrame:
            Add(TimelineAction::Kind::PreviousFrame);
            break;
        case kActionPlay:
            Add(TimelineAction::Kind::Play);
            break;
        case kActionStop:
            Add(TimelineAction::Kind::Stop);
            break;
        case kActionPop:
            m_stack.Pop();
            break;
        case kActionGetVariable:
            GetVariable();
            break;
        case kActionSetVariable:
            SetVariable();
            break;
        case kActionSetTarget2:
            SetTarget(m_stack.Pop());
            break;
        case kActionSetProperty:
            SetProperty();
            break;
        case kActionGetMember:
            GetMember();
            break;
        case kActionSetMember:
            SetMember();
            break;
        case kActionCallMethod:
            CallMethod();
            break;
        case kActionCallFunction:
            CallFunction();
            break;
        case kActionGotoFrame:
        {
            TimelineAction& action = Add(TimelineAction::Kind::GoTo);
            action.frame = body.U16();
            break;
        }
        case kActionConstantPool:
            m_pool.clear();
            for (std::uint32_t n = body.U16(); n > 0 && !body.Failed(); --n)
                m_pool.push_back(body.String());
            break;
        case kActionSetTarget:
            SetTarget(Value(body.String()));
            break;
        case kActionGoToLabel:
            Add(TimelineAction::Kind::GoToLabel).label = body.String();
            break;
        case kActionPush:
            PushConstants(body);
            break;
        case kActionGotoFrame2:
            GoToFrame2(body);
            break;
        case kActionToggleQuality: // quality
        case kActionStopSounds:    // sounds
            break;
        case kActionJump: // jumps and branches, waiting for frames, blocks of code
        case kActionIf:
        case kActionWaitForFrame:
        case kActionWaitForFrame2:
        case kActionWith:
        case kActionDefineFunction:
        case kActionDefineFunction2:
        case kActionTry:
        case kActionThrow:
        case kActionReturn:
            return false;
        default:
            m_stack.Clear(); // a value that nobody knows here may be used below
        }
        return true;
    }

    void PushConstants(CByteReader& body)
    {
        while (!body.AtEnd() && m_budget.Take(0))
        {
            switch (body.U8())
            {
            case 0:
                m_stack.Push(Value(body.String()));
                break;
            case 1:
                m_stack.Push(Value(static_cast<double>(body.F32())));
                break;
            case 5:
                m_stack.Push(Value(body.U8() != 0 ? 1.0 : 0.0));
                break;
            case 6:
            {
                // The half with sign and exponent comes first.
                const std::uint64_t high = body.U32();
                m_stack.Push(Value(std::bit_cast<double>(high << 32 | body.U32())));
                break;
            }
            case 7:
                m_stack.Push(Value(static_cast<double>(static_cast<std::int32_t>(body.U32()))));
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
                m_stack.Push(Value{});
                break;
            default:
                return;
            }
        }
    }
    void PushPooled(std::size_t index) { m_stack.Push(index < m_pool.size() ? Value(m_pool[index]) : Value{}); }
    void SetTarget(const Value& value)
    {
        if (const std::string* const p = value.Text())
            m_target = *p;
        else if (const std::string* const pPath = value.Path())
            m_target = *pPath;
    }
    void GetVariable()
    {
        const Value name = m_stack.Pop();
        const std::string* const p = name.Text();
        if (!p || p->empty())
            m_stack.Push(Value{});
        else
            m_stack.Push(Value::Object(*p == "this" ? m_target : *p));
    }
    void GetMember()
    {
        const Value name = m_stack.Pop(), object = m_stack.Pop();
        const std::string* const pName = name.Text();
        const std::string* const pObject = object.Path();
        if (!pName || !pObject)
            m_stack.Push(Value{});
        else
            m_stack.Push(Value::Object(pObject->empty() ? *pName : *pObject + "." + *pName));
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
        const Value value = m_stack.Pop(), name = m_stack.Pop();
        if (const std::string* const p = name.Text())
            if (const auto found = kProperties.find(*p); found != kProperties.end())
                AddProperty(m_target, found->second, value);
    }
    void SetMember()
    {
        const Value value = m_stack.Pop(), name = m_stack.Pop(), object = m_stack.Pop();
        const std::string* const pName = name.Text();
        const std::string* const pObject = object.Path();
        if (!pName || !pObject)
            return;
        if (const auto found = kProperties.find(*pName); found != kProperties.end())
            AddProperty(*pObject, found->second, value);
    }
    void SetProperty()
    {
        const Value value = m_stack.Pop();
        const std::optional<double> index = AsNumber(m_stack.Pop());
        const Value target = m_stack.Pop();
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
    void GoTo(const Value& where, bool play)
    {
        const std::string* const pLabel = where.Text();
        if (const std::optional<double> number = AsNumber(where))
            m_actions.push_back(JumpTo(*number, play));
        else if (pLabel)
            m_actions.push_back(JumpTo(*pLabel, play));
        else
            return;
        m_actions.back().target = m_target;
    }
    void GoToFrame2(CByteReader& body)
    {
        const std::uint8_t flags = body.U8();
        Value where = m_stack.Pop();
        if ((flags & 2) != 0) // frames of the scenes before
            if (const std::optional<double> number = AsNumber(where))
                where = Value(*number + body.U16());
        GoTo(where, (flags & 1) != 0);
    }
    void CallMethod()
    {
        const Value method = m_stack.Pop(), object = m_stack.Pop();
        const std::optional<double> count = AsNumber(m_stack.Pop());
        std::vector<Value> arguments;
        for (double n = count ? *count : 0; n > 0 && m_stack.Size() > 0; --n)
            arguments.push_back(m_stack.Pop());
        m_stack.Push(Value{});
        const std::string* const pMethod = method.Text();
        const std::string* const pObject = object.Path();
        if (!pMethod || !pObject)
            return;
        const std::string before = std::exchange(m_target, *pObject);
        if (const auto kind = TimelineCall(*pMethod))
            Add(*kind);
        else if ((*pMethod == "gotoAndPlay" || *pMethod == "gotoAndStop") && !arguments.empty())
            GoTo(arguments.back(), *pMethod == "gotoAndPlay");
        m_target = before;
    }
    void CallFunction()
    {
        m_stack.Pop();
        const std::optional<double> count = AsNumber(m_stack.Pop());
        for (double n = count ? *count : 0; n > 0 && m_stack.Size() > 0; --n)
            m_stack.Pop();
        m_stack.Push(Value{});
    }

    CByteReader m_reader;
    ReadBudget& m_budget;
    std::vector<TimelineAction> m_actions;
    CScriptStack m_stack;
    std::vector<std::string> m_pool;
    std::string m_target;
};
} // namespace

std::vector<TimelineAction> ReadActions(std::span<const std::uint8_t> bytes, ReadBudget& budget)
{
    return CActionReader(bytes, budget).Read();
}
} // namespace swf
