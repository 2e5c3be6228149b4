/// @file Stage.h
/// What is on the stage at a frame.
#pragma once

#include "companions/swfrenderer/Limits.h"
#include "companions/swfrenderer/Movie.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace swf
{
/// An object on a display list.
struct Instance
{
    std::uint16_t depth = 0, character = 0, ratio = 0, clipDepth = 0;
    Matrix matrix;
    ColourTransform colours;
    BlendMode blend = BlendMode::Normal;
    bool visible = true;
    bool scripted = false; ///< an action has moved it: frames leave its matrix and colours alone
    const std::vector<Filter>* pFilters = nullptr; ///< borrowed from the movie; may be null
    const std::string* pName = nullptr;            ///< borrowed from the movie; may be null
    const PlacementExtras* pExtras = nullptr;      ///< borrowed from the movie; may be null
    std::uint32_t placedAt = 0;                    ///< frame of the parent that made it
    std::uint64_t bornAt = 0;                      ///< tick
    std::uint32_t nesting = 0;                     ///< the root has 0

    const Timeline* pTimeline = nullptr; ///< of a sprite; else null
    std::uint32_t frame = 0;
    bool playing = true;
    std::vector<std::unique_ptr<Instance>> children; ///< by depth
};

/// Plays a movie tick by tick. At tick 0 the root shows its frame 0; with every tick each timeline that plays goes on
/// by one frame and begins again behind its last. The state at a tick is the same however it was reached.
class CStage
{
public:
    CStage(const Movie& movie, const Budget& budget);
    /// Throws std::bad_alloc.
    void GoToTick(std::uint64_t tick);

    const Instance& Root() const { return *m_pRoot; }
    Rgba Background() const { return m_background; }
    /// Equal for ticks that show the same picture.
    std::uint64_t PictureHash() const;

private:
    bool IsExhausted() const { return m_work >= m_maxWork; }
    void Restart();
    void Tick();
    void FindRound();
    void Advance(Instance& sprite);
    void EnterFrame(Instance& sprite, std::uint32_t frame);
    void JumpTo(Instance& sprite, std::uint32_t frame);
    void DoSteps(Instance& sprite, std::uint32_t frame);
    void EnterFirstFrame(Instance& sprite);
    void QueueActions(Instance& sprite, std::uint32_t frame);
    void Queue(Instance& sprite, const TimelineAction& action);
    void RunActions();
    void Bury(std::unique_ptr<Instance> pObject);
    void Place(Instance& parent, const Placement& placement, std::uint32_t frame);
    std::optional<std::uint16_t> CharacterOf(const Placement& placement) const;
    void Apply(Instance& object, const Placement& placement) const;
    void SetCharacter(Instance& object, std::uint16_t id);
    void Remove(Instance& parent, std::uint16_t depth);
    void Act(Instance& sprite, const TimelineAction& action);
    Instance* FindTarget(Instance& from, const std::string& path);
    static std::uint64_t PictureHash(const Instance& object);
    std::uint64_t StateHash(const Instance& object) const;
    static std::size_t CountOf(const Instance& object);

    struct QueuedAction
    {
        Instance* pSprite;
        const TimelineAction* pAction;
    };

    const Movie& m_movie;
    std::unique_ptr<Instance> m_pRoot;
    Rgba m_background;
    std::uint64_t m_tick = 0;
    std::uint64_t m_maxWork;                          ///< when it is reached, the movie stands still
    std::uint64_t m_work = 0;                         ///< since tick 0, in the units of Budget::tickWork
    std::size_t m_instances = 0;                      ///< in memory, those removed in this tick included
    std::uint32_t m_jumps = 0;                        ///< in this tick
    std::vector<QueuedAction> m_queue;                ///< of this tick
    std::vector<std::unique_ptr<Instance>> m_removed; ///< in this tick
    // The state repeats itself sooner or later.
    std::uint64_t m_markTick = 0, m_markHash = 0, m_markWork = 0; ///< to compare later ticks with
    std::uint64_t m_round = 0;                                    ///< ticks; 0 while it is not known
};
} // namespace swf
