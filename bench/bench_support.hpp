// What the process benchmarks share: beam tables of PKT records written
// for a run, and the viewer started as a user starts it.
#pragma once

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "core/fortran_format.hpp"
#include "core/records.hpp"
#include "core/run_catalogue.hpp"

extern char** environ;

namespace viewer::bench {

// The same bytes through read() in blocks of the reader's size, nothing parsed.
inline void plain_read(benchmark::State& state, const std::string& path, long bytes) {
    int fd = ::open(path.c_str(), O_RDONLY);
    if (fd < 0) {
        state.SkipWithError("cannot open the table");
        return;
    }
    std::vector<char> buf(1 << 18);
    for (auto _ : state) {
        ::lseek(fd, 0, SEEK_SET);
        long total = 0;
        ssize_t got;
        while ((got = ::read(fd, buf.data(), buf.size())) > 0) total += got;
        benchmark::DoNotOptimize(total);
        benchmark::DoNotOptimize(buf.data());
    }
    ::close(fd);
    state.SetBytesProcessed(state.iterations() * bytes);
}

// A fixed table of PKT records along z (7 fields of 12 columns) of `kind`
// for project "bench" and `run` (".001"), its values about `level`.
inline void write_beam_table(const std::filesystem::path& dir, Kind kind, const std::string& run,
                             double level = 1) {
    std::FILE* f = std::fopen((dir / run_file_name(run_kind(kind), "bench", run)).c_str(), "w");
    for (int r = 0; r < PKT; ++r) {
        const double z = 1e-3 * r;  // m
        std::string line = fmt_e12_4(z) + fmt_e12_4(1e-9 * r);
        for (int c = 2; c < 7; ++c) line += fmt_e12_4(level + 0.3 * std::sin(z * c));
        std::fputs((line + "\n").c_str(), f);
    }
    std::fclose(f);
}

// Runs the viewer in `dir` with `args` once per iteration, from exec to
// exit, its standard output dropped; wall time, since the work is in the child.
inline void time_viewer(benchmark::State& state, const std::filesystem::path& dir,
                        std::vector<std::string> args) {
    args.insert(args.begin(), VIEWER_BINARY);
    std::vector<char*> argv;
    for (auto& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t quiet;
    posix_spawn_file_actions_init(&quiet);
    posix_spawn_file_actions_addopen(&quiet, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addchdir_np(&quiet, dir.c_str());
    for (auto _ : state) {
        pid_t pid = 0;
        if (posix_spawn(&pid, VIEWER_BINARY, &quiet, nullptr, argv.data(), environ) != 0)
            state.SkipWithError("cannot start the viewer");
        int status = 0;
        ::waitpid(pid, &status, 0);
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) state.SkipWithError("the viewer failed");
    }
    posix_spawn_file_actions_destroy(&quiet);
}

}  // namespace viewer::bench
