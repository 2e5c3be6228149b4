/// @file Damage.h
/// Media files that were cut off or overwritten in places. Whatever is made of them, nothing may crash, take longer
/// than ten seconds or flood the memory.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace test_support
{
/// What is done with a damaged copy.
using Exercise = std::function<void(const std::filesystem::path& copy)>;

/// Cuts a copy of @p original at places spread over it.
/// @param memoryLimit  bytes that the process may have in memory meanwhile
void CutAnywhere(const std::filesystem::path& original, std::uint64_t memoryLimit, const Exercise& exercise);

/// Overwrites some bytes of a copy of @p original, again and again. Half of the hits fall on headers: @p edge bytes at
/// the front and, in the containers that have one there, at the back.
void OverwriteAnywhere(const std::filesystem::path& original, std::uint64_t edge, std::uint64_t memoryLimit,
                       const Exercise& exercise);

/// Media files of the collection, in order; none without the collection.
std::vector<std::string> CorpusFiles(const std::string& folder);

/// Name of a test for a file.
std::string NameOfFile(const testing::TestParamInfo<std::string>& info);
} // namespace test_support
