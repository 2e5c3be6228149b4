#include "tests/host/Program.h"

#include <windows.h>

#include <array>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace qmx::host
{
namespace
{
/// One argument as the run-time library of the started program takes it apart again: backslashes count double before
/// a quotation mark.
std::string Quoted(const std::string& argument)
{
    std::string quoted = "\"";
    std::size_t backslashes = 0;
    for (const char c : argument)
    {
        if (c == '"')
            quoted.append(backslashes + 1, '\\');
        backslashes = c == '\\' ? backslashes + 1 : 0;
        quoted += c;
    }
    return quoted.append(backslashes, '\\') + '"';
}

std::wstring Wide(const std::string& utf8)
{
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end())).native();
}

/// Text of a program whose standard error ends lines in the system's way.
std::string WithoutCarriageReturns(std::string text)
{
    std::erase(text, '\r');
    return text;
}
} // namespace

struct Program::System
{
    HANDLE process = nullptr;
    HANDLE output = nullptr; // our end of the pipe
};

Program::Program(const std::filesystem::path& file, const std::vector<std::string>& arguments) : m_pSystem(new System)
{
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    HANDLE theirOutput = nullptr;
    if (!CreatePipe(&m_pSystem->output, &theirOutput, &inherited, 0))
        throw std::runtime_error("no pipe for a program's output");
    SetHandleInformation(m_pSystem->output, HANDLE_FLAG_INHERIT, 0);
    std::array<wchar_t, MAX_PATH> name{};
    GetTempFileNameW(std::filesystem::temp_directory_path().c_str(), L"qmx", 0, name.data());
    m_errorFile = name.data();
    const HANDLE errors =
        CreateFileW(name.data(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS, 0, nullptr);
    const HANDLE input = CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ, &inherited, OPEN_EXISTING, 0, nullptr);

    std::wstring line = Wide(Quoted(file.string()));
    for (const std::string& argument : arguments)
        line += L' ' + Wide(Quoted(argument));
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = input;
    start.hStdOutput = theirOutput;
    start.hStdError = errors;
    PROCESS_INFORMATION process{};
    const BOOL started =
        CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &process);
    CloseHandle(theirOutput);
    CloseHandle(errors);
    CloseHandle(input);
    if (!started)
        throw std::runtime_error("cannot start " + file.string());
    CloseHandle(process.hThread);
    m_pSystem->process = process.hProcess;
}

Program::~Program()
{
    if (m_pSystem->process)
    {
        TerminateProcess(m_pSystem->process, 1);
        Finish();
    }
    CloseHandle(m_pSystem->output);
    std::error_code ignored;
    std::filesystem::remove(m_errorFile, ignored);
}

bool Program::WaitForLine()
{
    char c = 0;
    for (DWORD count = 0; c != '\n' && ReadFile(m_pSystem->output, &c, 1, &count, nullptr) && count == 1;)
        m_output += c;
    return c == '\n';
}

void Program::Finish()
{
    std::array<char, 65536> part;
    for (DWORD count = 0; ReadFile(m_pSystem->output, part.data(), DWORD{part.size()}, &count, nullptr) && count > 0;)
        m_output.append(part.data(), count);
    WaitForSingleObject(m_pSystem->process, INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(m_pSystem->process, &code);
    CloseHandle(m_pSystem->process);
    m_pSystem->process = nullptr;
    m_exitCode = static_cast<int>(code);
    m_output = WithoutCarriageReturns(m_output);
    std::ifstream stream(m_errorFile, std::ios::binary);
    m_errors = WithoutCarriageReturns(std::string(std::istreambuf_iterator<char>(stream), {}));
}

QmxRun::QmxRun(const std::vector<std::string>& arguments) : Program(QMX_PROGRAM, arguments)
{
    Finish();
}
} // namespace qmx::host
