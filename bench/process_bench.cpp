// `process_bench COMMAND [ARGUMENT...]`: runs the command with nothing on its standard input and
// prints three numbers: µs from exec to exit, KiB of memory at its peak, exit status.
//
// The peak of a process is never below that of the one that started it (Linux hands it on at
// exec), so this one is linked statically and stays below what is measured.
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>

namespace {

using Microseconds = std::chrono::duration<double, std::micro>;

// Result: the process, or -1.
pid_t start(char** command) {
    posix_spawn_file_actions_t silence;
    posix_spawn_file_actions_init(&silence);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        posix_spawn_file_actions_addopen(&silence, stream, "/dev/null", O_RDWR, 0);
    pid_t child = -1;
    const int error = posix_spawnp(&child, command[0], &silence, nullptr, command, environ);
    posix_spawn_file_actions_destroy(&silence);
    return error == 0 ? child : -1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fputs("usage: process_bench COMMAND [ARGUMENT...]\n", stderr);
        return 2;
    }
    const auto started = std::chrono::steady_clock::now();
    const pid_t child = start(argv + 1);
    int status = 0;
    rusage usage{};
    if (child < 0 || ::wait4(child, &status, 0, &usage) != child) {
        std::perror(argv[1]);
        return 1;
    }
    const Microseconds time = std::chrono::steady_clock::now() - started;
    std::printf("%.1f %ld %d\n", time.count(), usage.ru_maxrss,
                WIFEXITED(status) ? WEXITSTATUS(status) : -1);
}
