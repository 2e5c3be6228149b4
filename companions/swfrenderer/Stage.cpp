#include "companions/swfrenderer/Stage.h"

#include "companions/swfrenderer/Bounds.h"
#include "companions/swfrenderer/Limits.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>

namespace swf
{
namespace
{
constexpr std::uint32_t kMaxJumpsPerTick = 64;
constexpr std::size_t kMaxQueuedActions = 262'144;
constexpr std::uint64_t kFirstMark = 1024; ///< ticks, a power of two, that are simply played
// What things cost, in the units of Budget::tickWork. Measured where nothing is in the processor's cache.
constexpr std::uint64_t kCostOfTimeline = 4, kCostOfFrame = 2, kCostOfStep = 16, kCostOfObject = 64, kCostOfAction = 32;
constexpr std::uint64_t kCostOfBounds = 32; ///< for every object inside

auto FindDepth(std::vector<std::unique_ptr<Instance>>& list, std::uint16_t depth)
{
    return std::lower_bound(list.begin(), list.end(), depth,
                            [](const std::unique_ptr<Instance>& p, std::uint16_t d) { return p->depth < d; });
}
bool IsAt(const std::vector<std::unique_ptr<Instance>>& list, std::vector<std::unique_ptr<Instance>>::iterator at,
          std::uint16_t depth)
{
    return at != list.end() && (*at)->depth == depth;
}

bool IsSize(TimelineAction::Property property)
{
    return property == TimelineAction::Property::Width || property == TimelineAction::Property::Height;
}

/// @param inside  box of what the object holds, in its own twips; needed for sizes
void SetProperty(Instance& object, TimelineAction::Property property, double value, const Rect& inside)
{
    using P = TimelineAction::Property;
    constexpr double kMost = 1e7;
    value = std::clamp(value, -kMost, kMost);
    Matrix& m = object.matrix;
    double scaleX = std::hypot(m.a, m.b), scaleY = std::hypot(m.c, m.d);
    double turnX = std::atan2(m.b, m.a), turnY = std::atan2(-m.c, m.d);
    switch (property)
    {
    case P::X:
        m.tx = value * 20;
        break;
    case P::Y:
        m.ty = value * 20;
        break;
    case P::ScaleX:
        scaleX = value / 100;
        break;
    case P::ScaleY:
        scaleY = value / 100;
        break;
    case P::Alpha:
        object.colours.multiply[3] = static_cast<float>(value / 100);
        break;
    case P::Visible:
        object.visible = value != 0;
        break;
    case P::Rotation:
    {
        const double turn = value * std::numbers::pi / 180;
        turnY += turn - turnX;
        turnX = turn;
        break;
    }
    case P::Width:
        if (!(inside.Width() > 0))
            return;
        scaleX = value * 20 / inside.Width();
        break;
    case P::Height:
        if (!(inside.Height() > 0))
            return;
        scaleY = value * 20 / inside.Height();
        break;
    }
    if (property != P::X && property != P::Y && property != P::Alpha && property != P::Visible)
        m = {scaleX * std::cos(turnX),
             scaleX * std::sin(turnX),
             -scaleY * std::sin(turnY),
             scaleY * std::cos(turnY),
             m.tx,
             m.ty};
    object.scripted = true;
}
} // namespace

CStage::CStage(const Movie& movie, const Budget& budget) : m_movie(movie), m_maxWork(budget.tickWork)
{
    Restart();
}

void CStage::Restart()
{
    m_pRoot = std::make_unique<Instance>();
    m_pRoot->pTimeline = &m_movie.root;
    m_background = {255, 255, 255, 255};
    m_tick = m_work = m_markTick = m_markHash = m_markWork = m_round = 0;
    m_instances = 1;
    m_jumps = 0;
    EnterFirstFrame(*m_pRoot);
    RunActions();
}

void CStage::GoToTick(std::uint64_t tick)
{
    if (tick < m_tick)
        Restart();
    while (m_tick < tick && !IsExhausted())
        if (m_round != 0 && tick - m_tick >= m_round)
            m_tick += (tick - m_tick) / m_round * m_round; // the state is the same after whole rounds
        else
            Tick();
    m_tick = tick;
}

void CStage::Tick()
{
    if (m_round != 0)
        m_work = m_markWork; // nothing new is done
    ++m_tick;
    m_jumps = 0;
    Advance(*m_pRoot);
    RunActions();
    if (m_round == 0 && m_tick >= kFirstMark)
        FindRound();
}

/// The state of every power of two is kept. When it comes back, the movie goes round and round.
void CStage::FindRound()
{
    const std::uint64_t colour = Premultiplied(m_background);
    const std::uint64_t hash = StateHash(*m_pRoot) ^ colour;
    if (std::has_single_bit(m_tick))
    {
        m_markTick = m_tick;
        m_markHash = hash;
        m_markWork = m_work;
    }
    else if (hash == m_markHash)
        m_round = m_tick - m_markTick;
}

/// Parents go first: what they remove does not go on, what they make starts with its own first frame.
void CStage::Advance(Instance& sprite)
{
    m_work += kCostOfTimeline + sprite.children.size();
    if (sprite.pExtras)
        for (const TimelineAction& action : sprite.pExtras->onFrame)
            Queue(sprite, action);
    const Timeline& timeline = *sprite.pTimeline;
    if (sprite.playing && timeline.FrameCount() > 1)
    {
        if (sprite.frame + 1 < timeline.FrameCount())
            EnterFrame(sprite, sprite.frame + 1);
        else
            JumpTo(sprite, 0);
    }
    for (std::size_t i = 0; i < sprite.children.size(); ++i)
    {
        Instance& child = *sprite.children[i];
        if (child.pTimeline && child.bornAt < m_tick)
            Advance(child);
    }
}

/// Of a new object.
void CStage::EnterFirstFrame(Instance& sprite)
{
    for (const TimelineAction& action : sprite.pTimeline->onMade)
        Queue(sprite, action);
    m_work += sprite.pTimeline->onMade.size();
    EnterFrame(sprite, 0);
}

void CStage::EnterFrame(Instance& sprite, std::uint32_t frame)
{
    sprite.frame = frame;
    DoSteps(sprite, frame);
    QueueActions(sprite, frame);
}

/// Backward, or over frames: the list is made as if played from the start, but objects that the same frame would have
/// made again live on.
void CStage::JumpTo(Instance& sprite, std::uint32_t frame)
{
    if (frame <= sprite.frame)
    {
        std::vector<std::unique_ptr<Instance>> before;
        before.swap(sprite.children);
        for (std::uint32_t n = 0; n <= frame && !IsExhausted(); ++n)
            DoSteps(sprite, n);
        for (std::unique_ptr<Instance>& object : sprite.children)
        {
            const auto old = FindDepth(before, object->depth);
            if (!IsAt(before, old, object->depth) || (*old)->character != object->character ||
                (*old)->placedAt != object->placedAt)
                continue;
            (*old)->ratio = object->ratio;
            if (!(*old)->scripted)
            {
                (*old)->matrix = object->matrix;
                (*old)->colours = object->colours;
            }
            object.swap(*old);
        }
        for (std::unique_ptr<Instance>& gone : before)
            Bury(std::move(gone));
    }
    else
        for (std::uint32_t n = sprite.frame + 1; n <= frame && !IsExhausted(); ++n)
            DoSteps(sprite, n);
    sprite.frame = frame;
    QueueActions(sprite, frame);
}

std::size_t CStage::CountOf(const Instance& object)
{
    std::size_t n = 1;
    for (const std::unique_ptr<Instance>& child : object.children)
        n += CountOf(*child);
    return n;
}

void CStage::DoSteps(Instance& sprite, std::uint32_t frame)
{
    const Timeline& timeline = *sprite.pTimeline;
    m_work += kCostOfFrame;
    for (std::uint32_t i = timeline.FirstStep(frame); i < timeline.frameEnds[frame] && !IsExhausted(); ++i)
    {
        m_work += kCostOfStep;
        const FrameStep& step = timeline.steps[i];
        if (const Placement* const pPlacement = std::get_if<Placement>(&step))
            Place(sprite, *pPlacement, frame);
        else if (const Removal* const pRemoval = std::get_if<Removal>(&step))
            Remove(sprite, pRemoval->depth);
        else if (const BackgroundChange* const pChange = std::get_if<BackgroundChange>(&step))
            m_background = pChange->colour;
    }
}

void CStage::QueueActions(Instance& sprite, std::uint32_t frame)
{
    const Timeline& timeline = *sprite.pTimeline;
    for (std::uint32_t i = timeline.FirstStep(frame); i < timeline.frameEnds[frame]; ++i)
        if (const TimelineAction* const pAction = std::get_if<TimelineAction>(&timeline.steps[i]))
            Queue(sprite, *pAction);
}

void CStage::Queue(Instance& sprite, const TimelineAction& action)
{
    if (m_queue.size() < kMaxQueuedActions)
        m_queue.push_back({&sprite, &action});
}

/// When all timelines have gone on. Objects that are removed meanwhile stay in memory until the end: they may have
/// actions in the queue.
void CStage::RunActions()
{
    for (std::size_t i = 0; i < m_queue.size() && !IsExhausted(); ++i)
    {
        const QueuedAction queued = m_queue[i];
        Act(*queued.pSprite, *queued.pAction);
    }
    m_queue.clear();
    for (const std::unique_ptr<Instance>& pGone : m_removed)
        m_instances -= std::min(m_instances, CountOf(*pGone));
    m_removed.clear();
}

void CStage::Bury(std::unique_ptr<Instance> pObject)
{
    m_removed.push_back(std::move(pObject));
}

void CStage::Remove(Instance& parent, std::uint16_t depth)
{
    const auto at = FindDepth(parent.children, depth);
    if (!IsAt(parent.children, at, depth))
        return;
    Bury(std::move(*at));
    parent.children.erase(at);
}

void CStage::Apply(Instance& object, const Placement& placement) const
{
    if (placement.matrix && !object.scripted)
        object.matrix = *placement.matrix;
    if (placement.colours && !object.scripted)
        object.colours = *placement.colours;
    object.ratio = placement.ratio.value_or(object.ratio);
    object.clipDepth = placement.clipDepth.value_or(object.clipDepth);
    object.blend = placement.blend.value_or(object.blend);
    object.visible = placement.visible.value_or(object.visible);
    if (placement.filters)
        object.pFilters = &*placement.filters;
    if (placement.name)
        object.pName = &*placement.name;
}

void CStage::SetCharacter(Instance& object, std::uint16_t id)
{
    object.character = id;
    object.frame = 0;
    object.playing = true;
    for (std::unique_ptr<Instance>& child : object.children)
        Bury(std::move(child));
    object.children.clear();
    object.pTimeline = m_movie.FindAs<Timeline>(id);
    if (object.pTimeline && object.nesting < kMaxNesting)
        EnterFirstFrame(object);
    else
        object.pTimeline = nullptr;
}

void CStage::Place(Instance& parent, const Placement& placement, std::uint32_t frame)
{
    auto at = FindDepth(parent.children, placement.depth);
    const bool occupied = IsAt(parent.children, at, placement.depth);
    if (placement.isMove)
    {
        if (!occupied)
            return;
        Instance& object = **at;
        Apply(object, placement);
        if (placement.character && *placement.character != object.character)
        {
            object.placedAt = frame;
            object.bornAt = m_tick;
            SetCharacter(object, *placement.character);
        }
        return;
    }
    const std::optional<std::uint16_t> character = CharacterOf(placement);
    if (!character || m_instances >= kMaxInstances)
        return;
    m_work += kCostOfObject;
    auto pObject = std::make_unique<Instance>();
    Instance& object = *pObject;
    object.depth = placement.depth;
    object.placedAt = frame;
    object.bornAt = m_tick;
    object.nesting = parent.nesting + 1;
    Apply(object, placement);
    ++m_instances;
    if (occupied)
    {
        Bury(std::move(*at));
        *at = std::move(pObject);
    }
    else
        parent.children.insert(at, std::move(pObject));
    object.pExtras = placement.pExtras.get();
    if (object.pExtras)
        for (const TimelineAction& action : object.pExtras->onLoad)
            Queue(object, action);
    SetCharacter(object, *character);
}

/// By number, or by the name of its class.
std::optional<std::uint16_t> CStage::CharacterOf(const Placement& placement) const
{
    if (placement.character || !placement.pExtras)
        return placement.character;
    const auto found = m_movie.classes.find(placement.pExtras->className);
    return found != m_movie.classes.end() ? std::optional(found->second) : std::nullopt;
}

Instance* CStage::FindTarget(Instance& from, const std::string& path)
{
    Instance* pAt = &from;
    std::size_t at = 0;
    if (!path.empty() && path[0] == '/')
        pAt = m_pRoot.get();
    while (pAt && at < path.size())
    {
        const std::size_t end = std::min(path.find_first_of("/.:", at), path.size());
        const std::string name = path.substr(at, end - at);
        at = end + 1;
        if (name.empty() || name == "this")
            continue;
        if (name == "_root" || name == "_level0")
        {
            pAt = m_pRoot.get();
            continue;
        }
        Instance* pFound = nullptr;
        m_work += kCostOfAction + pAt->children.size();
        for (const std::unique_ptr<Instance>& child : pAt->children)
            if (child->pName && *child->pName == name)
                pFound = child.get();
        pAt = pFound;
    }
    return pAt;
}

void CStage::Act(Instance& sprite, const TimelineAction& action)
{
    using Kind = TimelineAction::Kind;
    m_work += kCostOfAction;
    Instance* const pTarget = FindTarget(sprite, action.target);
    if (!pTarget)
        return;
    if (action.kind == Kind::SetProperty)
    {
        Rect inside;
        if (IsSize(action.property))
        {
            m_work += kCostOfBounds * CountOf(*pTarget);
            inside = BoundsOf(m_movie, *pTarget, {});
        }
        return SetProperty(*pTarget, action.property, action.value, inside);
    }
    if (!pTarget->pTimeline)
        return;
    const std::uint32_t count = pTarget->pTimeline->FrameCount();
    std::uint32_t frame = pTarget->frame;
    bool play = action.thenPlay;
    switch (action.kind)
    {
    case Kind::Play:
        pTarget->playing = true;
        return;
    case Kind::Stop:
        pTarget->playing = false;
        return;
    case Kind::NextFrame:
        frame = std::min(frame + 1, count - 1);
        break;
    case Kind::PreviousFrame:
        frame = frame > 0 ? frame - 1 : 0;
        break;
    case Kind::GoTo:
        frame = std::min(action.frame, count - 1);
        break;
    case Kind::GoToLabel:
    {
        const auto found = pTarget->pTimeline->labels.find(action.label);
        if (found == pTarget->pTimeline->labels.end() || found->second >= count)
            return;
        frame = found->second;
        break;
    }
    case Kind::SetProperty:
        return;
    }
    pTarget->playing = play;
    if (frame != pTarget->frame && ++m_jumps <= kMaxJumpsPerTick)
        JumpTo(*pTarget, frame);
}

namespace
{
/// After FNV-1a, on whole words.
class CHash
{
public:
    void Add(std::uint64_t v) { m_value = (m_value ^ v) * 0x100000001B3ULL ^ m_value >> 29; }
    std::uint64_t Value() const { return m_value; }

private:
    std::uint64_t m_value = 0xCBF29CE484222325ULL;
};

void AddLook(const Instance& object, CHash& hash)
{
    hash.Add(object.depth | std::uint64_t{object.character} << 16 | std::uint64_t{object.ratio} << 32 |
             std::uint64_t{object.clipDepth} << 48);
    hash.Add((object.visible ? 1U : 0U) | (object.pTimeline ? 2U : 0U) | static_cast<unsigned>(object.blend) << 2);
    const Matrix& m = object.matrix;
    for (const double v : {m.a, m.b, m.c, m.d, m.tx, m.ty})
        hash.Add(std::bit_cast<std::uint64_t>(v));
    for (std::size_t i = 0; i < 4; ++i)
        hash.Add(std::uint64_t{std::bit_cast<std::uint32_t>(object.colours.multiply[i])} << 32 |
                 std::bit_cast<std::uint32_t>(object.colours.add[i]));
    hash.Add(reinterpret_cast<std::uintptr_t>(object.pFilters));
    hash.Add(object.children.size());
}
} // namespace

std::uint64_t CStage::PictureHash(const Instance& object)
{
    CHash hash;
    AddLook(object, hash);
    for (const std::unique_ptr<Instance>& child : object.children)
        hash.Add(PictureHash(*child));
    return hash.Value();
}

std::uint64_t CStage::PictureHash() const
{
    return PictureHash(*m_pRoot) ^ Premultiplied(m_background);
}

/// Of everything that decides what later ticks show.
std::uint64_t CStage::StateHash(const Instance& object) const
{
    CHash hash;
    AddLook(object, hash);
    hash.Add(object.frame | std::uint64_t{object.placedAt} << 32);
    hash.Add((object.playing ? 1U : 0U) | (object.scripted ? 2U : 0U));
    hash.Add(reinterpret_cast<std::uintptr_t>(object.pName));
    for (const std::unique_ptr<Instance>& child : object.children)
        hash.Add(StateHash(*child));
    return hash.Value();
}
} // namespace swf
