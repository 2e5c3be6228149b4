#include "companions/swfrenderer/FrameScripts.h"

#include "companions/swfrenderer/AbcFile.h"
#include "companions/swfrenderer/ScriptValue.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace swf
{
namespace
{
using Value = ScriptValue;

constexpr std::size_t kMaxActions = 256;     ///< of one frame
constexpr std::uint32_t kMaxFrames = 65'536; ///< as many as a movie may have

/// Codes of instructions, as the format names them.
enum Op : std::uint8_t
{
    kOpNop = 0x02,
    kOpKill = 0x08,
    kOpLabel = 0x09,
    kOpPopScope = 0x1D,
    kOpPushNull = 0x20,
    kOpPushUndefined = 0x21,
    kOpPushByte = 0x24,
    kOpPushShort = 0x25,
    kOpPushTrue = 0x26,
    kOpPushFalse = 0x27,
    kOpPushNaN = 0x28,
    kOpPop = 0x29,
    kOpDup = 0x2A,
    kOpPushString = 0x2C,
    kOpPushInt = 0x2D,
    kOpPushUint = 0x2E,
    kOpPushDouble = 0x2F,
    kOpPushScope = 0x30,
    kOpCallProperty = 0x46,
    kOpConstructSuper = 0x49,
    kOpCallPropLex = 0x4C,
    kOpCallPropVoid = 0x4F,
    kOpFindPropStrict = 0x5D,
    kOpFindProperty = 0x5E,
    kOpGetLex = 0x60,
    kOpSetProperty = 0x61,
    kOpGetLocal = 0x62,
    kOpSetLocal = 0x63,
    kOpGetGlobalScope = 0x64,
    kOpGetProperty = 0x66,
    kOpInitProperty = 0x68,
    kOpConvertInt = 0x73,
    kOpConvertUint = 0x74,
    kOpConvertDouble = 0x75,
    kOpConvertBoolean = 0x76,
    kOpCoerce = 0x80,
    kOpCoerceAny = 0x82,
    kOpCoerceString = 0x85,
    kOpNegate = 0x90,
    kOpGetLocal0 = 0xD0,
    kOpGetLocal1 = 0xD1,
    kOpGetLocal2 = 0xD2,
    kOpGetLocal3 = 0xD3,
    kOpSetLocal1 = 0xD5,
    kOpSetLocal2 = 0xD6,
    kOpSetLocal3 = 0xD7,
    kOpDebug = 0xEF,
    kOpDebugLine = 0xF0,
    kOpDebugFile = 0xF1,
};

struct Property
{
    const char* name;
    TimelineAction::Property property;
    double factor; ///< from the script's unit to that of the action
};
constexpr Property kProperties[] = {{"x", TimelineAction::Property::X, 1},
                                    {"y", TimelineAction::Property::Y, 1},
                                    {"scaleX", TimelineAction::Property::ScaleX, 100},
                                    {"scaleY", TimelineAction::Property::ScaleY, 100},
                                    {"alpha", TimelineAction::Property::Alpha, 100},
                                    {"visible", TimelineAction::Property::Visible, 1},
                                    {"width", TimelineAction::Property::Width, 1},
                                    {"height", TimelineAction::Property::Height, 1},
                                    {"rotation", TimelineAction::Property::Rotation, 1}};

/// Runs one method on values that are known beforehand.
class CScriptRunner
{
public:
    CScriptRunner(const AbcFile& file, ReadBudget& budget) : m_file(file), m_budget(budget) {}

    void Run(std::span<const std::uint8_t> code)
    {
        m_reader = CByteReader(code);
        while (!m_reader.AtEnd() && m_budget.Take(0) && Do(m_reader.U8()))
            ;
    }
    /// Frames and the names of the methods that belong to them.
    std::vector<std::pair<std::uint32_t, std::string>> scripts;
    std::vector<TimelineAction> actions;

private:
    std::uint32_t Number() { return ReadAbcNumber(m_reader); }
    /// @return false when what follows cannot be told.
    bool Do(std::uint8_t code) { return DoConstant(code) || DoObject(code) || DoNothing(code); }
    bool DoConstant(std::uint8_t code)
    {
        switch (code)
        {
        case kOpPushByte:
            m_stack.Push(Value(static_cast<double>(static_cast<std::int8_t>(m_reader.U8()))));
            return true;
        case kOpPushShort:
            m_stack.Push(Value(static_cast<double>(static_cast<std::int16_t>(Number()))));
            return true;
        case kOpPushTrue:
            m_stack.Push(Value(1.0));
            return true;
        case kOpPushFalse:
            m_stack.Push(Value(0.0));
            return true;
        case kOpPushString:
            m_stack.Push(Value(std::string(m_file.String(Number()))));
            return true;
        case kOpPushInt:
            PushOf(m_file.ints);
            return true;
        case kOpPushUint:
            PushOf(m_file.uints);
            return true;
        case kOpPushDouble:
            PushOf(m_file.doubles);
            return true;
        case kOpPushNull: // null, undefined, not a number
        case kOpPushUndefined:
        case kOpPushNaN:
            m_stack.Push(Value());
            return true;
        case kOpNegate:
        {
            const Value value = m_stack.Pop();
            const double* const p = value.Number();
            m_stack.Push(p ? Value(-*p) : Value());
            return true;
        }
        default:
            return false;
        }
    }
    template <class T> void PushOf(const std::vector<T>& list)
    {
        const std::uint32_t index = Number();
        const bool known = index < list.size() && std::isfinite(static_cast<double>(list[index]));
        m_stack.Push(known ? Value(static_cast<double>(list[index])) : Value());
    }
    bool DoObject(std::uint8_t code)
    {
        switch (code)
        {
        case kOpGetLocal0: // the object itself
            m_stack.Push(Value::Object({}));
            return true;
        case kOpFindPropStrict: // what has a name: the object, as far as can be told
        case kOpFindProperty:
            (void)Number();
            m_stack.Push(Value::Object({}));
            return true;
        case kOpGetLex:
            return Member(Value::Object({}), Number());
        case kOpGetProperty:
        {
            const std::uint32_t name = Number();
            return Member(m_stack.Pop(), name);
        }
        case kOpSetProperty:
        case kOpInitProperty:
            return Set(Number());
        case kOpCallProperty:
        case kOpCallPropLex:
        case kOpCallPropVoid:
        {
            const std::uint32_t name = Number();
            return Call(name, Number(), code != kOpCallPropVoid);
        }
        default:
            return false;
        }
    }
    /// What changes nothing here but the stack.
    bool DoNothing(std::uint8_t code)
    {
        switch (code)
        {
        case kOpNop: // labels, scopes, conversions
        case kOpLabel:
        case kOpPopScope:
        case kOpConvertInt:
        case kOpConvertUint:
        case kOpConvertDouble:
        case kOpConvertBoolean:
        case kOpCoerceAny:
        case kOpCoerceString:
            return true;
        case kOpPop: // taken off the stack: values, scopes, locals that are set
        case kOpPushScope:
        case kOpSetLocal1:
        case kOpSetLocal2:
        case kOpSetLocal3:
            m_stack.Pop();
            return true;
        case kOpGetLocal1:
        case kOpGetLocal2:
        case kOpGetLocal3:
        case kOpGetGlobalScope:
            m_stack.Push(Value());
            return true;
        case kOpDup:
        {
            Value value = m_stack.Pop();
            m_stack.Push(value);
            m_stack.Push(std::move(value));
            return true;
        }
        case kOpConstructSuper: // the constructor of the class above
            for (std::uint32_t n = Number() + 1; n > 0 && m_stack.Size() > 0; --n)
                m_stack.Pop();
            return true;
        case kOpSetLocal:
            m_stack.Pop();
            (void)Number();
            return true;
        case kOpGetLocal:
            m_stack.Push(Value());
            [[fallthrough]];
        case kOpKill: // locals that end, types, lines and files for debuggers
        case kOpCoerce:
        case kOpDebugLine:
        case kOpDebugFile:
            (void)Number();
            return true;
        case kOpDebug:
            (void)m_reader.U8();
            (void)Number();
            (void)m_reader.U8();
            (void)Number();
            return true;
        default:
            return false;
        }
    }

    /// @return false for a name that is put together when the script runs.
    bool Member(const Value& value, std::uint32_t number)
    {
        const std::string_view name = m_file.PlainName(number);
        const std::string* const pPath = value.Path();
        if (name.empty())
            return false;
        if (name == "root")
            m_stack.Push(Value::Object("_root"));
        else if (!pPath || name == "parent")
            m_stack.Push(Value());
        else
            m_stack.Push(Value::Object(pPath->empty() ? std::string(name) : *pPath + "." + std::string(name)));
        return true;
    }
    void Add(TimelineAction action, const std::string& target)
    {
        action.target = target;
        actions.push_back(std::move(action));
    }
    bool Set(std::uint32_t number)
    {
        const std::string_view name = m_file.PlainName(number);
        if (name.empty())
            return false;
        const Value value = m_stack.Pop(), object = m_stack.Pop();
        const double* const p = value.Number();
        const std::string* const pTarget = object.Path();
        for (const Property& property : kProperties)
            if (p && pTarget && name == property.name && actions.size() < kMaxActions)
            {
                TimelineAction action;
                action.kind = TimelineAction::Kind::SetProperty;
                action.property = property.property;
                action.value = *p * property.factor;
                Add(std::move(action), *pTarget);
            }
        return true;
    }
    bool Call(std::uint32_t number, std::uint32_t count, bool hasResult)
    {
        const std::string_view name = m_file.PlainName(number);
        if (name.empty() || count > m_stack.Size())
            return false;
        std::vector<Value> arguments(count);
        for (std::size_t i = count; i-- > 0;)
            arguments[i] = m_stack.Pop();
        const Value object = m_stack.Pop();
        if (const std::string* const pTarget = object.Path(); pTarget && actions.size() < kMaxActions)
            Do(name, *pTarget, arguments);
        if (hasResult)
            m_stack.Push(name == "MovieClip" && count == 1 ? std::move(arguments[0]) : Value()); // a change of type
        return true;
    }
    void Do(std::string_view name, const std::string& target, const std::vector<Value>& arguments)
    {
        TimelineAction action;
        if (name == "addFrameScript" && target.empty())
            return AddScripts(arguments);
        if (const auto kind = TimelineCall(name))
            action.kind = *kind;
        else if ((name == "gotoAndPlay" || name == "gotoAndStop") && !arguments.empty())
        {
            const bool play = name == "gotoAndPlay";
            if (const double* const pFrame = arguments[0].Number())
                action = JumpTo(*pFrame, play);
            else if (const std::string* const pLabel = arguments[0].Text())
                action = JumpTo(*pLabel, play);
            else
                return;
        }
        else
            return;
        Add(std::move(action), target);
    }
    void AddScripts(const std::vector<Value>& arguments)
    {
        for (std::size_t i = 0; i + 1 < arguments.size(); i += 2)
        {
            const double* const pFrame = arguments[i].Number();
            const std::string* const pMethod = arguments[i + 1].Path();
            if (pFrame && pMethod && *pFrame >= 0 && *pFrame < kMaxFrames && scripts.size() < kMaxFrames)
                scripts.emplace_back(static_cast<std::uint32_t>(*pFrame), *pMethod);
        }
    }

    const AbcFile& m_file;
    ReadBudget& m_budget;
    CByteReader m_reader;
    CScriptStack m_stack;
};

std::size_t BytesOf(const std::vector<TimelineAction>& actions)
{
    std::size_t cb = 0;
    for (const TimelineAction& action : actions)
        cb += sizeof(FrameStep) + action.label.size() + action.target.size();
    return cb;
}

ClassActions ReadClass(const AbcFile& file, const AbcFile::Class& scripted, ReadBudget& budget)
{
    ClassActions out;
    const auto constructor = file.code.find(scripted.constructor);
    if (constructor == file.code.end())
        return out;
    CScriptRunner maker(file, budget);
    maker.Run(constructor->second);
    if (budget.Take(BytesOf(maker.actions)))
        out.onMade = std::move(maker.actions);
    if (maker.scripts.empty())
        return out;
    std::map<std::string_view, std::uint32_t> methods;
    for (const AbcFile::Method& method : scripted.methods)
        methods.emplace(file.PlainName(method.name), method.number);
    for (const auto& [frame, name] : maker.scripts)
    {
        const auto method = methods.find(name);
        const auto body = method != methods.end() ? file.code.find(method->second) : file.code.end();
        if (body == file.code.end())
            continue;
        CScriptRunner runner(file, budget);
        runner.Run(body->second);
        if (budget.Take(BytesOf(runner.actions)))
            out.frameActions[frame] = std::move(runner.actions);
    }
    return out;
}
} // namespace

std::map<std::string, ClassActions> ReadClassActions(std::span<const std::uint8_t> bytes, ReadBudget& budget)
{
    std::map<std::string, ClassActions> out;
    AbcFile file;
    CByteReader reader(bytes);
    ReadBudget own = budget; // the constants are needed here alone: their memory is given back
    const bool known = ReadAbc(reader, own, file);
    budget.steps = own.steps;
    for (std::size_t i = 0; known && i < file.classes.size(); ++i)
    {
        ClassActions actions = ReadClass(file, file.classes[i], budget);
        if (!actions.onMade.empty() || !actions.frameActions.empty())
            out.emplace(file.FullName(file.classes[i].name), std::move(actions));
    }
    return out;
}

void AddClassActions(Timeline& timeline, ClassActions&& actions)
{
    timeline.onMade = std::move(actions.onMade);
    if (actions.frameActions.empty())
        return;
    std::deque<FrameStep> steps;
    std::uint32_t first = 0;
    for (std::uint32_t frame = 0; frame < timeline.FrameCount(); ++frame)
    {
        const std::uint32_t end = timeline.frameEnds[frame];
        for (; first < end; ++first)
        {
            steps.push_back(std::move(timeline.steps.front()));
            timeline.steps.pop_front(); // there is never twice the memory
        }
        if (const auto found = actions.frameActions.find(frame); found != actions.frameActions.end())
            for (TimelineAction& action : found->second)
                steps.emplace_back(std::move(action));
        timeline.frameEnds[frame] = static_cast<std::uint32_t>(steps.size());
    }
    timeline.steps.swap(steps);
}
} // namespace swf
