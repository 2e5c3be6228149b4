#include "host/output/OutputFile.h"

#include "host/HostError.h"
#include "host/project/Project.h"
#include "host/system/Platform.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace qmx::host
{
namespace fs = std::filesystem;

namespace
{
/// Makes an empty file beside @p target that did not exist before. Its name is hidden.
/// @return an errno value, 0 on success
int CreateBeside(const fs::path& target, fs::path& created)
{
    for (int attempt = 0; attempt < 100; ++attempt)
    {
        const std::string name = ".qmx-" + ProcessNumber() + '-' + std::to_string(attempt) + ".tmp";
        created = target.parent_path() / name;
        const int error = CreateNewFile(created);
        if (error != EEXIST)
            return error;
    }
    return EEXIST;
}
} // namespace

OutputFile::OutputFile(const fs::path& target) : m_name(target), m_target(target)
{
    std::error_code error;
    if (target.filename().empty())
        Fail("is not the name of a file");
    if (fs::is_symlink(target, error))
    {
        m_target = fs::weakly_canonical(target, error);
        if (error)
            FailWith(error.value());
    }
    const fs::file_status status = fs::status(m_target, error);
    if (fs::exists(status) && !fs::is_regular_file(status))
        Fail("cannot be written: it exists and is no regular file");
    if (const int failure = CreateBeside(m_target, m_temporary); failure != 0)
        FailWith(failure);
}

OutputFile::~OutputFile()
{
    std::error_code ignored;
    if (!m_committed)
        fs::remove(m_temporary, ignored);
}

void OutputFile::Commit()
{
    std::error_code error;
    fs::rename(m_temporary, m_target, error);
    if (error)
        FailWith(error.value());
    m_committed = true;
}

void OutputFile::Fail(const std::string& reason) const
{
    throw HostError(ExitCode::Output, m_name.string(), reason);
}

void OutputFile::FailWith(int error) const
{
    Fail(std::string("cannot be written: ") + std::strerror(error));
}

void CheckExtension(const fs::path& target, std::string_view extension)
{
    std::string name = target.extension().string();
    std::transform(name.begin(), name.end(), name.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    if (name != extension)
        throw HostError(ExitCode::CommandLine, target.string(), "the name must end in " + std::string(extension));
}

void CheckNotASource(const fs::path& target, const Project& project)
{
    for (const fs::path& source : project.Files())
    {
        std::error_code error;
        if (fs::equivalent(target, source, error))
            throw HostError(ExitCode::Output, target.string(), "is a file that the project is made of");
    }
}
} // namespace qmx::host
