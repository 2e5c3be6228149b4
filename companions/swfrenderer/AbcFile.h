/// @file AbcFile.h
/// The parts of compiled scripts that tell what frames do.
#pragma once

#include "companions/swfrenderer/ByteReader.h"
#include "companions/swfrenderer/ShapeReader.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace swf
{
/// Constants and code of one script file. Borrows from the movie's bytes.
struct AbcFile
{
    struct Name
    {
        std::uint8_t kind = 0;
        std::uint32_t space = 0; ///< number of a namespace, where the name has one of its own
        std::uint32_t text = 0;  ///< number of a string
    };
    struct Method
    {
        std::uint32_t name = 0, number = 0;
    };
    struct Class
    {
        std::uint32_t name = 0, constructor = 0;
        std::vector<Method> methods; ///< of its objects
    };
    // Entry 0 of each list stands for none.
    std::vector<std::int32_t> ints;
    std::vector<std::uint32_t> uints;
    std::vector<double> doubles;
    std::vector<std::string_view> strings;
    std::vector<std::uint32_t> spaces; ///< numbers of their strings
    std::vector<Name> names;
    std::vector<Class> classes;
    std::unordered_map<std::uint32_t, std::span<const std::uint8_t>> code; ///< by number of the method

    std::string_view String(std::uint32_t number) const
    {
        return number < strings.size() ? strings[number] : std::string_view();
    }
    /// Empty for names that are put together when the script runs.
    std::string_view PlainName(std::uint32_t number) const;
    /// With the package in front.
    std::string FullName(std::uint32_t number) const;
};

/// A number of one to five bytes, seven bits in each, low ones first.
std::uint32_t ReadAbcNumber(CByteReader& reader);

/// @return false when the file breaks off or does not fit into @p budget.
bool ReadAbc(CByteReader& reader, ReadBudget& budget, AbcFile& file);
} // namespace swf
