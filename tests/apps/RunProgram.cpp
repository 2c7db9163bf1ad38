// SPDX-License-Identifier: MIT
#include "tests/apps/RunProgram.h"

#include "tests/apps/ScratchFile.h"
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <stdexcept>
#include <string_view>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace apps::test {

namespace {

// A descriptor that is closed at the end of its scope, or earlier.
class Descriptor
{
public:
    explicit Descriptor(int value) : m_value(value)
    {
        if (value < 0) throw std::runtime_error("a descriptor could not be opened");
    }
    ~Descriptor() { Close(); }
    Descriptor(Descriptor&& other) noexcept : m_value(std::exchange(other.m_value, -1)) {}
    Descriptor& operator=(Descriptor&&) = delete;

    int Get() const { return m_value; }
    void Close()
    {
        if (m_value >= 0) close(std::exchange(m_value, -1));
    }

private:
    int m_value;
};

struct Pipe
{
    static Pipe Make()
    {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
        return {Descriptor(ends[0]), Descriptor(ends[1])};
    }
    Descriptor reader, writer;
};

pid_t Start(const std::vector<std::string>& arguments, int in, int out, int err,
            const std::vector<int>& closed = {})
{
    std::vector<std::string> words = {TILTPOLE_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);

    const pid_t child = fork();
    if (child != 0) return child;
    dup2(in, STDIN_FILENO);
    dup2(out, STDOUT_FILENO);
    dup2(err, STDERR_FILENO);
    for (const int stream : closed)
        close(stream);
    execv(TILTPOLE_PROGRAM, argv.data());
    _exit(127);
}

// Writes until the source is empty or the program no longer reads.
void Feed(Descriptor writer, const Source& input)
{
    for (std::string block = input(); !block.empty(); block = input()) {
        for (std::size_t done = 0; done < block.size();) {
            const ssize_t count = write(writer.Get(), block.data() + done, block.size() - done);
            if (count < 0 && errno == EINTR) continue;
            if (count < 0) return;
            done += static_cast<std::size_t>(count);
        }
    }
}

std::string Drain(int reader)
{
    std::string all;
    char block[4096];
    for (ssize_t count; (count = read(reader, block, sizeof block)) > 0;) {
        all.append(block, static_cast<std::size_t>(count));
    }
    return all;
}

void Await(pid_t child, Outcome& outcome)
{
    int status = 0;
    rusage usage = {};
    wait4(child, &status, 0, &usage);
    outcome.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    outcome.peakMemory = usage.ru_maxrss;
}

Source Once(const std::string& text)
{
    return [left = text]() mutable { return std::exchange(left, {}); };
}

// `out` and `err` are read by the caller once the program has ended.
Outcome Run(const std::vector<std::string>& arguments, const Source& input, int out, int err)
{
    std::signal(SIGPIPE, SIG_IGN); // a program need not read all of its input
    Pipe in = Pipe::Make();
    const pid_t child = Start(arguments, in.reader.Get(), out, err);
    in.reader.Close();
    Feed(std::move(in.writer), input);
    Outcome outcome;
    Await(child, outcome);
    return outcome;
}

Descriptor Create(const std::string& path)
{
    return Descriptor(open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
}

} // namespace

Outcome RunProgram(const std::vector<std::string>& arguments, const std::string& input)
{
    return RunProgram(arguments, Once(input));
}

Outcome RunProgram(const std::vector<std::string>& arguments, const Source& input)
{
    const ScratchFolder folder;
    const Descriptor out = Create(folder.Path("out"));
    const Descriptor err = Create(folder.Path("err"));
    Outcome outcome = Run(arguments, input, out.Get(), err.Get());
    outcome.out = ReadAll(folder.Path("out"));
    outcome.err = ReadAll(folder.Path("err"));
    return outcome;
}

Outcome RunProgramInto(const std::string& output, const std::vector<std::string>& arguments)
{
    const ScratchFolder folder;
    const Descriptor out = Create(output);
    const Descriptor err = Create(folder.Path("err"));
    Outcome outcome = Run(arguments, Once({}), out.Get(), err.Get());
    outcome.err = ReadAll(folder.Path("err"));
    return outcome;
}

Outcome RunProgramWithErrorsInto(const std::string& errors,
                                 const std::vector<std::string>& arguments)
{
    const ScratchFolder folder;
    const Descriptor out = Create(folder.Path("out"));
    const Descriptor err = Create(errors);
    Outcome outcome = Run(arguments, Once({}), out.Get(), err.Get());
    outcome.out = ReadAll(folder.Path("out"));
    return outcome;
}

Outcome RunProgramFrom(const std::string& input, const std::vector<std::string>& arguments)
{
    const ScratchFolder folder;
    const Descriptor in(open(input.c_str(), O_RDONLY | O_CLOEXEC));
    const Descriptor out = Create(folder.Path("out"));
    const Descriptor err = Create(folder.Path("err"));
    Outcome outcome;
    Await(Start(arguments, in.Get(), out.Get(), err.Get()), outcome);
    outcome.out = ReadAll(folder.Path("out"));
    outcome.err = ReadAll(folder.Path("err"));
    return outcome;
}

Outcome RunProgramWithClosed(const std::vector<int>& streams,
                             const std::vector<std::string>& arguments)
{
    const ScratchFolder folder;
    const Descriptor in(open("/dev/null", O_RDONLY | O_CLOEXEC));
    const Descriptor out = Create(folder.Path("out"));
    const Descriptor err = Create(folder.Path("err"));
    Outcome outcome;
    Await(Start(arguments, in.Get(), out.Get(), err.Get(), streams), outcome);
    outcome.out = ReadAll(folder.Path("out"));
    outcome.err = ReadAll(folder.Path("err"));
    return outcome;
}

Outcome RunProgramAndSignal(const std::vector<std::string>& arguments, const std::string& input,
                            const std::function<bool()>& isReady, int signal)
{
    const Descriptor nothing(open("/dev/null", O_WRONLY | O_CLOEXEC));
    Pipe in = Pipe::Make();
    const pid_t child = Start(arguments, in.reader.Get(), nothing.Get(), nothing.Get());
    in.reader.Close();
    std::thread feeder([&] {
        std::string_view rest = input;
        for (ssize_t count;
             !rest.empty() && (count = write(in.writer.Get(), rest.data(), rest.size())) > 0;)
            rest.remove_prefix(static_cast<std::size_t>(count));
    });
    for (int i = 0; i < 3000 && !isReady(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    kill(child, signal);
    Outcome outcome;
    Await(child, outcome);
    feeder.join();
    return outcome;
}

Outcome RunProgramIntoClosedPipe(const std::vector<std::string>& arguments)
{
    const ScratchFolder folder;
    const Descriptor nothing(open("/dev/null", O_RDONLY | O_CLOEXEC));
    const Descriptor err = Create(folder.Path("err"));
    Pipe out = Pipe::Make();
    const pid_t child = Start(arguments, nothing.Get(), out.writer.Get(), err.Get());
    out.writer.Close();
    Outcome outcome;
    char first = 0;
    if (read(out.reader.Get(), &first, 1) == 1) outcome.out = first;
    out.reader.Close();
    Await(child, outcome);
    outcome.err = ReadAll(folder.Path("err"));
    return outcome;
}

Outcome RunProgramOnTerminal(const std::vector<std::string>& arguments, const Source& input)
{
    const Descriptor screen(posix_openpt(O_RDWR | O_NOCTTY));
    char name[128];
    if (grantpt(screen.Get()) != 0 || unlockpt(screen.Get()) != 0
        || ptsname_r(screen.Get(), name, sizeof name) != 0) {
        throw std::runtime_error("no terminal");
    }
    const Descriptor nothing(open("/dev/null", O_WRONLY | O_CLOEXEC));
    Descriptor terminal(open(name, O_RDWR | O_NOCTTY | O_CLOEXEC));
    std::string shown;
    std::thread reader([&] { shown = Drain(screen.Get()); });
    Outcome outcome = Run(arguments, input, nothing.Get(), terminal.Get());
    terminal.Close(); // the last one: the reader sees the end
    reader.join();
    outcome.err = shown;
    return outcome;
}

} // namespace apps::test
