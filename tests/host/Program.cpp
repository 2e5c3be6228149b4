#include "tests/host/Program.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ; // NOLINT(readability-redundant-declaration): some systems do not declare it

namespace qmx::host
{
struct Program::System
{
    pid_t process = -1;
    int outputPipe = -1;
};

Program::Program(const std::filesystem::path& file, const std::vector<std::string>& arguments) : m_pSystem(new System)
{
    std::string name = (std::filesystem::temp_directory_path() / "qmx-stderr-XXXXXX").string();
    const int errors = mkostemp(name.data(), O_CLOEXEC);
    m_errorFile = name;
    std::array<int, 2> pipeEnds{};
    if (errors < 0 || pipe2(pipeEnds.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("no file or pipe for a program's output");
    m_pSystem->outputPipe = pipeEnds[0];

    std::vector<std::string> all{file.string()};
    all.insert(all.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (std::string& argument : all)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, pipeEnds[1], 1);
    posix_spawn_file_actions_adddup2(&actions, errors, 2);
    const int failure = posix_spawn(&m_pSystem->process, pointers[0], &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(pipeEnds[1]);
    close(errors);
    if (failure != 0)
        throw std::runtime_error("cannot start " + file.string());
}

Program::~Program()
{
    if (m_pSystem->process > 0)
    {
        kill(m_pSystem->process, SIGKILL);
        Finish();
    }
    close(m_pSystem->outputPipe);
    std::filesystem::remove(m_errorFile);
}

bool Program::WaitForLine()
{
    char c = 0;
    while (c != '\n' && read(m_pSystem->outputPipe, &c, 1) == 1)
        m_output += c;
    return c == '\n';
}

void Program::Signal(int signal) const
{
    kill(m_pSystem->process, signal);
}

void Program::Finish()
{
    std::array<char, 65536> part;
    for (ssize_t count = 0; (count = read(m_pSystem->outputPipe, part.data(), part.size())) > 0;)
        m_output.append(part.data(), static_cast<std::size_t>(count));
    int status = 0;
    waitpid(m_pSystem->process, &status, 0);
    m_pSystem->process = -1;
    m_exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    std::ifstream stream(m_errorFile);
    m_errors.assign(std::istreambuf_iterator<char>(stream), {});
}

QmxRun::QmxRun(const std::vector<std::string>& arguments) : Program(QMX_PROGRAM, arguments)
{
    Finish();
}
} // namespace qmx::host
