/// @file MediaFolder.h
/// Where the tests find their films.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace test_support
{
/// Folder of the generated films: the environment's QMX_MEDIA_DIR, else the one set when the tests were configured.
std::filesystem::path MediaFolder();
/// Folder of collected real-world media: the environment's QMX_CORPUS_DIR, else the one set at configuration.
std::filesystem::path CorpusFolder();
/// A folder of this process's own for files made by a test; removed when the process ends.
std::filesystem::path ScratchFolder();
} // namespace test_support

/// Names the generated film @p name in a std::filesystem::path called @p variable, or skips the test.
#define QMX_REQUIRE_MEDIA(variable, name)                                                                              \
    const std::filesystem::path variable = test_support::MediaFolder() / (name);                                       \
    if (!std::filesystem::exists(variable))                                                                            \
    GTEST_SKIP() << "no " << variable << ": run scripts/make-media " << test_support::MediaFolder()

/// The same for a file of the collected media.
#define QMX_REQUIRE_CORPUS(variable, name)                                                                             \
    const std::filesystem::path variable = test_support::CorpusFolder() / (name);                                      \
    if (!std::filesystem::exists(variable))                                                                            \
    GTEST_SKIP() << "no " << variable << ": set QMX_CORPUS_DIR to the folder of collected media"
