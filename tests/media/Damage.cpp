#include "tests/media/Damage.h"

#include "tests/support/MediaFolder.h"
#include "tests/support/Process.h"
#include "tests/support/Random.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace test_support
{
namespace
{
constexpr std::chrono::seconds kStepLimit{10};

std::string Contents(const std::filesystem::path& path)
{
    std::ifstream input(path, std::ios::binary);
    std::ostringstream content;
    content << input.rdbuf();
    return content.str();
}
} // namespace

void CutAnywhere(const std::filesystem::path& original, std::uint64_t memoryLimit, const Exercise& exercise)
{
    constexpr std::uint64_t kCuts = 64;
    const std::filesystem::path copy = ScratchFolder() / original.filename();
    std::filesystem::copy_file(original, copy, std::filesystem::copy_options::overwrite_existing);
    std::filesystem::permissions(copy, std::filesystem::perms::owner_write, std::filesystem::perm_options::add);
    const std::uint64_t size = std::filesystem::file_size(copy);
    ResetPeakResidentBytes();
    Watchdog watchdog(kStepLimit);
    for (std::uint64_t cut = kCuts; cut > 0; --cut) // the copy can only become shorter
    {
        const std::uint64_t length = size * cut / (kCuts + 1);
        watchdog.Step(original.string() + " cut after " + std::to_string(length) + " bytes");
        std::filesystem::resize_file(copy, length);
        exercise(copy);
    }
    EXPECT_LT(PeakResidentBytes(), memoryLimit);
    std::filesystem::remove(copy);
}

void OverwriteAnywhere(const std::filesystem::path& original, std::uint64_t edge, std::uint64_t memoryLimit,
                       const Exercise& exercise)
{
    constexpr int kMutations = 200;
    const std::string bytes = Contents(original);
    ASSERT_FALSE(bytes.empty());
    const std::filesystem::path copy = ScratchFolder() / original.filename();
    Random random;
    ResetPeakResidentBytes();
    Watchdog watchdog(kStepLimit);
    for (int mutation = 0; mutation < kMutations; ++mutation)
    {
        watchdog.Step(original.filename().string() + ", overwriting " + std::to_string(mutation) +
                      " with QMX_TEST_SEED=" + std::to_string(random.Seed()));
        std::string damaged = bytes;
        for (std::uint64_t hits = 1 + random.Below(8); hits > 0; --hits)
        {
            const std::uint64_t anywhere = random.Below(bytes.size());
            const std::uint64_t near = random.Below(std::min<std::uint64_t>(bytes.size(), edge));
            const std::uint64_t place = random.Below(4);
            const std::uint64_t at = place == 0 ? near : place == 1 ? bytes.size() - 1 - near : anywhere;
            damaged[at] = static_cast<char>(random.Below(256));
        }
        std::ofstream(copy, std::ios::binary | std::ios::trunc)
            .write(damaged.data(), static_cast<std::streamsize>(damaged.size()));
        exercise(copy);
    }
    EXPECT_LT(PeakResidentBytes(), memoryLimit);
    std::filesystem::remove(copy);
}

std::vector<std::string> CorpusFiles(const std::string& folder)
{
    std::vector<std::string> names;
    std::error_code absent;
    for (const auto& entry : std::filesystem::directory_iterator(CorpusFolder() / folder, absent))
    {
        if (entry.path().extension() != ".png") // expected pictures
            names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string NameOfFile(const testing::TestParamInfo<std::string>& info)
{
    std::string name = info.param;
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c == '-' || c == '.'; }, '_');
    return name;
}
} // namespace test_support
