/// @file EffectCheck.h
/// Whether an effect keeps what transition clips rely on.
#pragma once

#include "engine/platform/TxEffect.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace qmx::host
{
/// Runs an effect over pictures of several sizes.
class EffectCheck
{
public:
    using Apply = std::function<void(const tagTxEffectParam&)>;

    explicit EffectCheck(Apply apply) : m_apply(std::move(apply)) {}

    /// Checks effect @p type: both ends of the progress give the from and to pictures bit by bit; every pixel is
    /// written, and nothing beside the picture; the pictures that go in stay as they are; the same input gives the same
    /// output, in whatever order and on several threads at a time; a progress that lies outside 0..1 does no harm.
    /// @return one line for every rule that is broken, with the first size and progress that broke it
    std::vector<std::string> Faults(std::uint32_t type) const;

private:
    struct Scene;
    struct Result;

    Result Run(const Scene& scene, std::uint32_t type, float progress, std::uint8_t before) const;
    void CheckEnds(const Scene& scene, std::uint32_t type, std::vector<std::string>& faults) const;
    void CheckWriting(const Scene& scene, std::uint32_t type, float progress, std::vector<std::string>& faults) const;
    void CheckThreads(const Scene& scene, std::uint32_t type, std::vector<std::string>& faults) const;

    Apply m_apply;
};
} // namespace qmx::host
