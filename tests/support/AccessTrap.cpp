#include "AccessTrap.h"

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <vector>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

enum ExitCode
{
    Finished = 0,
    Trapped = 3,
    Unsupported = 4,
    Thrown = 5
};

struct WatchedCall
{
    long number;
    const char* name;
};

constexpr WatchedCall c_watchedCalls[] = {
#if defined(SYS_open)
    {SYS_open, "open"},
#endif
#if defined(SYS_creat)
    {SYS_creat, "creat"},
#endif
#if defined(SYS_openat2)
    {SYS_openat2, "openat2"},
#endif
    {SYS_openat, "openat"},   {SYS_open_by_handle_at, "open_by_handle_at"},
    {SYS_socket, "socket"},   {SYS_connect, "connect"},
    {SYS_execve, "execve"},   {SYS_execveat, "execveat"},
};

int s_report = -1;
const char* volatile s_label = "";

void SetLabel(const char* label)
{
    s_label = label;
}

void Report(const char* text)
{
    // A report that is lost still shows by the exit code.
    [[maybe_unused]] const auto written = write(s_report, text, std::strlen(text));
}

extern "C" void OnTrap(int /*signal*/, siginfo_t* info, void* /*context*/)
{
    for (const WatchedCall& call : c_watchedCalls) {
        if (call.number == info->si_syscall)
            Report(call.name);
    }
    Report(" at ");
    Report(s_label);
    _exit(Trapped);
}

bool InstallTrap()
{
    struct sigaction action = {};
    action.sa_sigaction = OnTrap;
    action.sa_flags = SA_SIGINFO;
    if (sigaction(SIGSYS, &action, nullptr) != 0)
        return false;

    const auto statement = [](int code, unsigned operand) {
        return sock_filter{static_cast<unsigned short>(code), 0, 0, operand};
    };
    std::vector<sock_filter> program;
    program.push_back(statement(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)));
    for (const WatchedCall& call : c_watchedCalls) {
        program.push_back({BPF_JMP | BPF_JEQ | BPF_K, 0, 1, static_cast<unsigned>(call.number)});
        program.push_back(statement(BPF_RET | BPF_K, SECCOMP_RET_TRAP));
    }
    program.push_back(statement(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    const sock_fprog filter = {static_cast<unsigned short>(program.size()), program.data()};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

[[noreturn]] void RunChild(const std::function<void()>& warmUp,
                           const std::function<void(void (*)(const char*))>& work)
{
    try {
        warmUp();
        if (!InstallTrap())
            _exit(Unsupported);
        work(SetLabel);
    } catch (...) {
        Report("an exception at ");
        Report(s_label);
        _exit(Thrown);
    }
    _exit(Finished);
}

std::string ReadAll(int descriptor)
{
    std::string text;
    char buffer[256];
    for (;;) {
        const ssize_t count = read(descriptor, buffer, sizeof(buffer));
        if (count > 0)
            text.append(buffer, static_cast<std::size_t>(count));
        else if (count == 0 || errno != EINTR)
            return text;
    }
}

} // namespace

AccessOutcome RunWatchingAccess(const std::function<void()>& warmUp,
                                const std::function<void(void (*label)(const char*))>& work)
{
    AccessOutcome outcome;
    int ends[2];
    if (pipe(ends) != 0) {
        outcome.access = "no pipe";
        return outcome;
    }
    const pid_t child = fork();
    if (child == 0) {
        s_report = ends[1];
        RunChild(warmUp, work);
    }
    close(ends[1]);
    outcome.access = ReadAll(ends[0]);
    close(ends[0]);
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status)) {
        outcome.access += " (no orderly end)";
        return outcome;
    }
    outcome.isUnsupported = WEXITSTATUS(status) == Unsupported;
    outcome.isFinished = WEXITSTATUS(status) == Finished;
    return outcome;
}
