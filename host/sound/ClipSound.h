/// @file ClipSound.h
/// The sound of one clip.
#pragma once

#include "engine/qmx.h"
#include "host/project/Project.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace qmx::host
{
/// Reads the sound of a clip through an engine clip of its own, so that it needs nothing of the one whose pictures are
/// shown, and may run on another thread than that.
class ClipSound
{
public:
    /// @param clip  a video or audio clip; @param gain  factor of its sound
    /// @throw std::bad_alloc
    ClipSound(const ProjectClip& clip, double gain);

    /// Adds what is heard of the clip in samples @p first .. @p first + @p count - 1 of the project to @p pMix, which
    /// holds left and right of each. Reading on is the fast way.
    void AddTo(float* pMix, std::uint64_t first, std::size_t count);
    /// Closes the file. The next AddTo() opens it again.
    void Close();

private:
    void OpenAt(std::uint64_t sample);
    std::size_t Read(std::size_t count);

    std::unique_ptr<IQMXBaseClip> m_pClip;
    std::uint64_t m_first;              ///< sample of the project at which the clip starts …
    std::uint64_t m_end;                ///< … and that at which it is over
    float m_gain;                       ///< of a 16-bit level
    std::uint64_t m_next = kClosed;     ///< sample of the project that the engine's clip reads next
    std::vector<std::int16_t> m_values; ///< scratch

    static constexpr std::uint64_t kClosed = ~std::uint64_t{0};
};
} // namespace qmx::host
