/// @file TransferReport.h
/// What did not come through when an edit went from one kind of file to another.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace qmx::host
{
struct TransferLoss
{
    std::string place; ///< where the object stands in the file that was read, "tracks.children[0].children[3]"
    std::string name;  ///< of the object, as the file has it; may be empty
    std::string what;  ///< what is concerned, "speed 2"
    std::string why;   ///< and what has become of it
};

/// Losses in the order in which they were met.
class TransferReport
{
public:
    /// A file full of them says the same again and again; the rest is only counted.
    static constexpr std::size_t kMaxLosses = 1'000;

    void Add(std::string place, std::string name, std::string what, std::string why);

    const std::vector<TransferLoss>& Losses() const { return m_losses; }
    std::size_t Dropped() const { return m_dropped; } ///< beyond kMaxLosses

    /// One line for each, without line ends inside: 'PLACE "NAME": WHAT: WHY'.
    std::vector<std::string> Lines() const;
    /// A JSON list with an object for each: "place", "name", "what", "why". Ends with a line end.
    std::string Json() const;

private:
    std::vector<TransferLoss> m_losses;
    std::size_t m_dropped = 0;
};
} // namespace qmx::host
