#include "host/output/OutputFile.h"

#include "host/HostError.h"
#include "host/project/Project.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace qmx::host
{
namespace
{
namespace fs = std::filesystem;

void Write(const fs::path& file, const std::string& text)
{
    std::ofstream(file) << text;
}

std::string Read(const fs::path& file)
{
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// The reason for which no OutputFile can be made.
std::string ReasonOf(const fs::path& target)
{
    try
    {
        const OutputFile output(target);
        return "";
    }
    catch (const HostError& error)
    {
        EXPECT_EQ(error.Code(), ExitCode::Output);
        EXPECT_EQ(error.Subject(), target.string());
        return error.what();
    }
}

TEST(OutputFile, AppearsOnlyWhenItIsCommitted)
{
    const test_support::TemporaryFolder folder;
    const fs::path target = folder.Path() / "a.txt";
    OutputFile output(target);
    Write(output.Path(), "new");
    EXPECT_FALSE(fs::exists(target));
    EXPECT_EQ(output.Path().parent_path(), folder.Path());
    output.Commit();
    EXPECT_EQ(Read(target), "new");
    EXPECT_EQ(folder.FileCount(), 1U);
}

TEST(OutputFile, ReplacesWhatWasThere)
{
    const test_support::TemporaryFolder folder;
    const fs::path target = folder.Path() / "a.txt";
    Write(target, "old");
    OutputFile output(target);
    Write(output.Path(), "new");
    EXPECT_EQ(Read(target), "old");
    output.Commit();
    EXPECT_EQ(Read(target), "new");
}

TEST(OutputFile, LeavesNothingBehindAndTheOldFileAloneWithoutCommit)
{
    const test_support::TemporaryFolder folder;
    const fs::path target = folder.Path() / "a.txt";
    Write(target, "old");
    {
        const OutputFile output(target);
        Write(output.Path(), "half");
        EXPECT_EQ(folder.FileCount(), 2U);
    }
    EXPECT_EQ(folder.FileCount(), 1U);
    EXPECT_EQ(Read(target), "old");
}

TEST(OutputFile, SeveralCanBeUnderWayInOneFolder)
{
    const test_support::TemporaryFolder folder;
    OutputFile first(folder.Path() / "a.txt");
    OutputFile second(folder.Path() / "a.txt");
    EXPECT_NE(first.Path(), second.Path());
    Write(first.Path(), "first");
    Write(second.Path(), "second");
    first.Commit();
    second.Commit();
    EXPECT_EQ(Read(folder.Path() / "a.txt"), "second");
    EXPECT_EQ(folder.FileCount(), 1U);
}

TEST(OutputFile, NamesOfAnyBytesAndOfFullLengthWork)
{
    const test_support::TemporaryFolder folder;
    for (const std::string& name : {std::string("\xFF\xFE:%20.txt"), std::string(255, 'n')})
    {
        OutputFile output(folder.Path() / name);
        Write(output.Path(), "x");
        output.Commit();
        EXPECT_EQ(Read(folder.Path() / name), "x");
    }
}

TEST(OutputFile, FollowsASymbolicLink)
{
    const test_support::TemporaryFolder folder;
    const fs::path real = folder.Path() / "real.txt";
    const fs::path link = folder.Path() / "link.txt";
    Write(real, "old");
    fs::create_symlink("real.txt", link);
    OutputFile output(link);
    Write(output.Path(), "new");
    output.Commit();
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(Read(real), "new");
}

TEST(OutputFile, SaysWhyItCannotBeMade)
{
    const test_support::TemporaryFolder folder;
    EXPECT_EQ(ReasonOf(folder.Path() / "none" / "a.txt"), "cannot be written: No such file or directory");
    EXPECT_EQ(ReasonOf(folder.Path()), "cannot be written: it exists and is no regular file");
    EXPECT_EQ(ReasonOf(folder.Path() / ""), "is not the name of a file");
    EXPECT_EQ(ReasonOf("/dev/null"), "cannot be written: it exists and is no regular file");
    EXPECT_EQ(ReasonOf(""), "is not the name of a file");
    EXPECT_EQ(ReasonOf("/proc/a.txt"), "cannot be written: No such file or directory");
}

TEST(OutputFile, AFailedCommitIsAnErrorAndLeavesNothing)
{
    const test_support::TemporaryFolder folder;
    const fs::path target = folder.Path() / "a.txt";
    {
        OutputFile output(target);
        fs::create_directory(target);
        EXPECT_THROW(output.Commit(), HostError);
    }
    EXPECT_EQ(folder.FileCount(), 1U);
}

TEST(CheckNotASource, RefusesTheProjectAndItsMediaUnderAnyName)
{
    const test_support::TemporaryFolder folder;
    Project project;
    project.file = folder.Path() / "p.json";
    project.tracks.resize(1);
    project.tracks[0].clips.resize(2);
    project.tracks[0].clips[1].path = folder.Path() / "a.mp4";
    Write(project.file, "{}");
    Write(folder.Path() / "a.mp4", "x");
    fs::create_symlink("a.mp4", folder.Path() / "link.mp4");
    EXPECT_THROW(CheckNotASource(project.file, project), HostError);
    EXPECT_THROW(CheckNotASource(folder.Path() / "." / "a.mp4", project), HostError);
    EXPECT_THROW(CheckNotASource(folder.Path() / "link.mp4", project), HostError);
    EXPECT_NO_THROW(CheckNotASource(folder.Path() / "new.mp4", project));
    // A recording is named by a file that is not there.
    project.tracks[0].clips[1].kind = ClipKind::Camera;
    project.tracks[0].clips[1].path = folder.Path() / "a.h264";
    EXPECT_THROW(CheckNotASource(folder.Path() / "a.mp4", project), HostError);
    project.tracks[0].clips[1].path = folder.Path() / "a.mjpg";
    EXPECT_NO_THROW(CheckNotASource(folder.Path() / "a.mp4", project));
}
} // namespace
} // namespace qmx::host
