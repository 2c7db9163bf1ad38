// SPDX-License-Identifier: MIT
//
// Programs that run beside a test.
#pragma once

#include <csignal>
#include <fcntl.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace apps::test {

/// The path of a program; empty where it is not installed. That of gpsd is not on every PATH.
inline std::string Find(const std::string& program)
{
    for (const char* const folder : {"/usr/bin/", "/usr/sbin/", "/usr/local/bin/", "/bin/"})
        if (access((folder + program).c_str(), X_OK) == 0) return folder + program;
    return "";
}

/// A program with its output in a file; ended with its object.
class Process
{
public:
    /// @param words  the program's name or path, then its arguments
    Process(std::vector<std::string> words, const std::string& output,
            const std::string& errors = "/dev/null")
    {
        if (words.front().find('/') == std::string::npos) words.front() = Find(words.front());
        std::vector<char*> argv;
        for (std::string& word : words)
            argv.push_back(word.data());
        argv.push_back(nullptr);
        m_child = fork();
        if (m_child != 0) return;
        const int out = open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        const int err = open(errors.c_str(), O_WRONLY | O_CREAT, 0600);
        const int nothing = open("/dev/null", O_RDWR);
        dup2(nothing, STDIN_FILENO);
        dup2(out, STDOUT_FILENO);
        dup2(err, STDERR_FILENO);
        execv(argv.front(), argv.data());
        _exit(127);
    }
    ~Process() { End(SIGTERM); }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    bool HasEnded()
    {
        if (m_child > 0 && waitpid(m_child, &m_status, WNOHANG) == m_child) m_child = -1;
        return m_child < 0;
    }
    pid_t Id() const { return m_child; }
    int ExitCode() const { return WIFEXITED(m_status) ? WEXITSTATUS(m_status) : -1; }
    void End(int signal)
    {
        if (HasEnded()) return;
        kill(m_child, signal);
        for (int i = 0; i < 200 && !HasEnded(); ++i)
            usleep(10000);
        if (HasEnded()) return;
        kill(m_child, SIGKILL);
        waitpid(m_child, &m_status, 0);
        m_child = -1;
    }

private:
    pid_t m_child = -1;
    int m_status = 0;
};

} // namespace apps::test
