// Runs two programs in turn, many times, and prints for each the median wall time of a run in
// microseconds and its peak memory in kilobytes:
//   Runs [--cold FILE] COUNT FIRST [ARGUMENT...] -- SECOND [ARGUMENT...]
// With --cold the kernel drops FILE from its page cache before each run. What they write is thrown
// away; a run that fails fails all. Small on purpose and linked statically: a started program's
// peak counts what it was started from, too.
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

namespace {

constexpr int kMaxRuns = 10000;

struct Program {
    char** arguments;
    double micros[kMaxRuns];
    long peakKb;
};

Program g_programs[2];

double nowMicros() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

/// False when the program cannot be run or fails.
bool runOnce(Program& program, int run, int nowhere, int cold) {
    if (cold >= 0 && posix_fadvise(cold, 0, 0, POSIX_FADV_DONTNEED) != 0) return false;
    const double begin = nowMicros();
    const pid_t child = fork();
    if (child == 0) {
        dup2(nowhere, STDOUT_FILENO);
        execv(program.arguments[0], program.arguments);
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    if (child < 0 || wait4(child, &status, 0, &usage) != child) return false;
    program.micros[run] = nowMicros() - begin;
    if (usage.ru_maxrss > program.peakKb) program.peakKb = usage.ru_maxrss;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

int compareDoubles(const void* a, const void* b) {
    const double left = *static_cast<const double*>(a);
    const double right = *static_cast<const double*>(b);
    return left < right ? -1 : left > right ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
    int cold = -1;
    if (argc > 3 && strcmp(argv[1], "--cold") == 0) {
        cold = open(argv[2], O_RDONLY | O_CLOEXEC);
        if (cold < 0 || fsync(cold) != 0) {  // only what is written can be dropped
            perror(argv[2]);
            return 2;
        }
        argc -= 2;
        argv += 2;
    }
    const long runs = argc > 3 ? strtol(argv[1], nullptr, 10) : 0;
    int separator = 2;
    while (separator < argc && strcmp(argv[separator], "--") != 0) ++separator;
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (runs < 1 || runs > kMaxRuns || separator + 1 >= argc || nowhere < 0) {
        fputs("usage: Runs [--cold FILE] COUNT FIRST [ARGUMENT...] -- SECOND [ARGUMENT...]\n",
              stderr);
        return 2;
    }
    g_programs[0].arguments = argv + 2;
    g_programs[1].arguments = argv + separator + 1;
    argv[separator] = nullptr;

    for (int run = 0; run < runs; ++run) {
        for (Program& program : g_programs) {
            if (runOnce(program, run, nowhere, cold)) continue;
            fprintf(stderr, "%s failed\n", program.arguments[0]);
            return 1;
        }
    }
    for (Program& program : g_programs) {
        qsort(program.micros, static_cast<size_t>(runs), sizeof(double), compareDoubles);
        printf("%.1f %ld\n", program.micros[runs / 2], program.peakKb);
    }
    return 0;
}
