/// @file TransitionSide.h
/// A clip inside a transition.
#pragma once

#include "engine/qmx.h"
#include "host/compose/ClipPlayer.h"

#include <cstdint>
#include <memory>
#include <string>

namespace qmx::host
{
/// Gives a transition the pictures of a clip as they look beside it on the track: in the middle of the track's box, at
/// the same size, transparent around it, with straight alpha, as effects want it. Before its span the clip stands still
/// at its first picture and behind it at its last.
class TransitionSide final : public CQMXBaseClip
{
public:
    /// @param pClip   the clip itself
    /// @param player  plays it
    /// @param width, height  of the track's box, pixels
    TransitionSide(std::unique_ptr<IQMXBaseClip> pClip, ClipPlayer player, std::uint32_t width, std::uint32_t height);

    bool GetVideoFrame(std::uint64_t time, FrameResult* out) override;
    bool Close() override;
    std::wstring GetDecoderKey() override; ///< the clip's

private:
    std::unique_ptr<IQMXBaseClip> m_pClip;
    ClipPlayer m_player; // uses the clip
    std::uint32_t m_width;
    std::uint32_t m_height;
};
} // namespace qmx::host
