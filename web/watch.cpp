// The directory watch.
#include "web/watch.hpp"

#include <sys/inotify.h>
#include <sys/stat.h>

#include <filesystem>

#include "app/startup.hpp"
#include "core/particles.hpp"
#include "core/run_catalogue.hpp"

namespace viewer::web {

namespace fs = std::filesystem;

namespace {

bool state_of(const fs::path& p, std::uintmax_t& size, std::int64_t& modified_ns,
              std::uint64_t* inode = nullptr) {
    struct stat st {};
    if (::stat(p.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) return false;
    size = static_cast<std::uintmax_t>(st.st_size);
    modified_ns = static_cast<std::int64_t>(st.st_mtim.tv_sec) * 1'000'000'000 + st.st_mtim.tv_nsec;
    if (inode) *inode = static_cast<std::uint64_t>(st.st_ino);
    return true;
}

}  // namespace

std::vector<TableState> tables_of(const std::string& dir, const std::string& project, int run) {
    std::vector<TableState> out;
    const std::string digits = "." + run_digits(run);
    for (const RunKind& k : run_catalogue()) {
        TableState t{k.suffix, run_file_name(k, project, digits)};
        if (state_of(fs::path(dir) / t.file, t.size, t.modified_ns, &t.inode)) out.push_back(std::move(t));
    }
    return out;
}

std::vector<TableState> particles_of(const std::string& dir, const std::string& project, int run) {
    std::vector<TableState> out;
    for (const ParticleFileName& f : particle_files(dir, project, run_digits(run))) {
        out.push_back({"particles", f.name});
        state_of(fs::path(dir) / f.name, out.back().size, out.back().modified_ns, &out.back().inode);
    }
    return out;
}

std::string states(const std::vector<TableState>& files) {
    std::string s;
    for (const TableState& t : files)
        s += t.file + ":" + std::to_string(t.size) + ":" + std::to_string(t.modified_ns) + ":" +
             std::to_string(t.inode) + ";";
    return s;
}

std::string signature(const std::string& dir, const std::string& project, const std::vector<int>& runs,
                      bool geometry) {
    std::string s;
    for (int run : runs) s += states(tables_of(dir, project, run));
    std::uintmax_t size = 0;
    std::int64_t modified = 0;
    if (geometry && state_of(fs::path(dir) / "Geometry.dat", size, modified))
        s += "Geometry.dat:" + std::to_string(size) + ":" + std::to_string(modified);
    return s;
}

Watcher::Watcher(std::string dir, std::string project, bool poll)
    : dir_(std::move(dir)), project_(std::move(project)), polling_(poll), inotify_(!poll) {
    const auto mask =
        IN_MODIFY | IN_CLOSE_WRITE | IN_CREATE | IN_DELETE | IN_MOVED_TO | IN_MOVED_FROM | IN_ATTRIB;
    if (!inotify_.ready() || ::inotify_add_watch(inotify_.fd(), dir_.c_str(), mask) < 0) polling_ = true;
    thread_ = std::thread([this] { loop(); });
}

Watcher::~Watcher() {
    stop();
    thread_.join();
}

void Watcher::stop() {
    {
        std::lock_guard lock(m_);
        if (stopping_) return;
        stopping_ = true;
    }
    cv_.notify_all();
    inotify_.wake();
}

void Watcher::look(int run) {
    // A plot's key leaves the particle files out; the page wants to hear of them.
    std::string now = signature(dir_, project_, {run}, false) + states(particles_of(dir_, project_, run));
    auto [at, fresh] = seen_.try_emplace(run, now);
    if (fresh) {
        changes_[run] = 0;
        return;
    }
    if (at->second == now) return;
    at->second = std::move(now);
    ++changes_[run];
    cv_.notify_all();
}

std::uint64_t Watcher::changes(int run) {
    std::lock_guard lock(m_);
    look(run);
    return changes_[run];
}

std::uint64_t Watcher::wait(int run, std::uint64_t seen, std::chrono::milliseconds timeout) {
    std::unique_lock lock(m_);
    look(run);
    cv_.wait_for(lock, timeout, [&] { return stopping_ || changes_[run] > seen; });
    return changes_[run];
}

void Watcher::loop() {
    for (;;) {
        if (polling_) {
            std::unique_lock lock(m_);
            if (cv_.wait_for(lock, std::chrono::seconds(1), [&] { return stopping_; })) return;
        } else {
            // A second at most, so that a change inotify misses (a network
            // file system) is still seen.
            if (inotify_.wait(1000) == Inotify::Waited::woken) return;
            inotify_.drain();
            std::lock_guard lock(m_);
            if (stopping_) return;
        }
        std::lock_guard lock(m_);
        for (auto& [run, sig] : seen_) look(run);
    }
}

}  // namespace viewer::web
