// The watch over the study's folder tree.
#include "web/study_watch.hpp"

#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "web/study.hpp"

namespace viewer::web {

namespace fs = std::filesystem;
using std::chrono::steady_clock;

namespace {

// A run's state turns from growing a minute after its last write, with no event to say so.
constexpr auto kGrowing = std::chrono::seconds(5);
constexpr auto kWalk = std::chrono::seconds(30);     // the net under inotify
constexpr auto kPollWalk = std::chrono::seconds(3);  // without it
constexpr int kBurstMs = 200;                        // a writer's burst of events makes one refresh
constexpr std::uint32_t kMask =
    IN_MODIFY | IN_CLOSE_WRITE | IN_CREATE | IN_DELETE | IN_MOVED_TO | IN_MOVED_FROM | IN_ATTRIB | IN_ONLYDIR;

// `folder` is `top` or lies inside it.
bool below(const std::string& folder, const std::string& top) {
    return folder == top ||
           (folder.starts_with(top) && folder.size() > top.size() && folder[top.size()] == '/');
}

}  // namespace

// What one catch-up found: folders to read again, folders something happened in.
struct StudyWatch::Pass {
    std::set<std::string> refresh, touched;
    bool changed = false;  // a folder with runs went
};

StudyWatch::StudyWatch(std::string root, bool poll)
    : root_(std::move(root)), polling_(poll), inotify_(!poll) {
    if (!inotify_.ready()) polling_ = true;
    catch_up(Refresh::all);
    thread_ = std::thread([this] { loop(); });
}

StudyWatch::~StudyWatch() {
    stop();
    thread_.join();
}

void StudyWatch::stop() {
    {
        std::lock_guard lock(m_);
        if (stopping_) return;
        stopping_ = true;
    }
    cv_.notify_all();
    inotify_.wake();
}

std::shared_ptr<const Study> StudyWatch::study() {
    if (!polling_) catch_up(Refresh::events);
    std::lock_guard lock(m_);
    return study_;
}

std::uint64_t StudyWatch::changes() {
    std::lock_guard lock(m_);
    return changes_;
}

std::uint64_t StudyWatch::touches(const std::string& folder) {
    std::lock_guard lock(m_);
    return touched_[folder];
}

std::uint64_t StudyWatch::wait(const std::string& folder, std::uint64_t seen,
                               std::chrono::milliseconds timeout) {
    std::unique_lock lock(m_);
    const auto count = [&] { return folder.empty() ? changes_ : touched_[folder]; };
    cv_.wait_for(lock, timeout, [&] { return stopping_ || count() > seen; });
    return count();
}

std::size_t StudyWatch::folders() {
    std::lock_guard lock(work_);
    return folders_.size();
}

std::size_t StudyWatch::refreshes() {
    std::lock_guard lock(work_);
    return refreshes_;
}

void StudyWatch::track(const std::string& folder) {
    Folder& f = folders_[folder];
    std::error_code ec;
    const fs::path path = folder == "." ? fs::path(root_) : fs::path(root_) / folder;
    f.real = fs::canonical(path, ec).string();
    if (polling_) return;
    // A folder already watched gives its own descriptor back; one made anew under its name, another.
    const int wd = ::inotify_add_watch(inotify_.fd(), path.c_str(), kMask);
    if (wd < 0) {
        polling_ = true;  // more folders than the system lets one watch
        return;
    }
    if (f.wd >= 0 && f.wd != wd) wds_.erase(f.wd);
    f.wd = wd;
    wds_[wd] = folder;
}

void StudyWatch::add(const std::string& folder, Pass& pass) {
    std::error_code ec;
    if (folders_.contains(folder) || !fs::is_directory(fs::path(root_) / folder, ec)) return;
    std::ostringstream unread;  // a folder that cannot be read is left out, as the walk leaves it
    for (const std::string& f : study_folders(root_, folder, seen_, unread)) {
        track(f);
        pass.refresh.insert(f);
        pass.touched.insert(f);
    }
}

void StudyWatch::drop(const std::string& folder, Pass& pass) {
    for (auto at = folders_.lower_bound(folder); at != folders_.end() && at->first.starts_with(folder);) {
        if (!below(at->first, folder)) {
            ++at;
            continue;
        }
        if (at->second.wd >= 0) {
            ::inotify_rm_watch(inotify_.fd(), at->second.wd);  // gone with its folder already, or moved away
            wds_.erase(at->second.wd);
        }
        seen_.erase(at->second.real);
        pass.changed = pass.changed || !at->second.runs.empty();
        pass.touched.insert(at->first);
        at = folders_.erase(at);
    }
}

void StudyWatch::walk(Pass& pass) {
    std::set<std::string> seen;
    std::ostringstream unread;
    std::vector<std::string> now;
    try {
        now = study_folders(root_, ".", seen, unread);
    } catch (const std::runtime_error&) {
        // the root itself went: no runs
    }
    const std::set<std::string> wanted(now.begin(), now.end());
    std::vector<std::string> gone;
    for (const auto& [name, f] : folders_)
        if (!wanted.contains(name)) gone.push_back(name);
    for (const std::string& name : gone) drop(name, pass);
    seen_ = std::move(seen);
    for (const std::string& name : now) {
        track(name);
        pass.refresh.insert(name);
        pass.touched.insert(name);
    }
}

void StudyWatch::catch_up(Refresh how) {
    std::lock_guard working(work_);
    Pass pass;
    bool whole = how == Refresh::all;
    alignas(inotify_event) char events[1 << 14];
    for (ssize_t n; !polling_ && (n = ::read(inotify_.fd(), events, sizeof events)) > 0;) {
        for (const char* p = events; p < events + n;) {
            const auto* e = reinterpret_cast<const inotify_event*>(p);
            p += sizeof(inotify_event) + e->len;
            if (e->mask & IN_Q_OVERFLOW) whole = true;  // events were lost: the tree is walked again
            const auto at = wds_.find(e->wd);
            if (at == wds_.end() || (e->mask & IN_IGNORED)) continue;  // a folder dropped, or going
            const std::string folder = at->second;                     // kept: a drop below may erase it
            pass.refresh.insert(folder);
            pass.touched.insert(folder);
            if (e->len == 0) continue;
            const std::string child = folder == "." ? e->name : folder + "/" + e->name;
            // In the order they came: a folder moved within the tree goes, then comes.
            if (e->mask & (IN_DELETE | IN_MOVED_FROM)) drop(child, pass);
            if (e->mask & (IN_CREATE | IN_MOVED_TO)) add(child, pass);
        }
    }
    if (whole) walk(pass);
    if (how == Refresh::growing)
        for (const auto& [name, f] : folders_)
            if (f.growing) pass.refresh.insert(name);

    // The folders read again, on every core when there are many (a walk).
    std::vector<std::pair<const std::string, Folder>*> todo;
    for (const std::string& name : pass.refresh)
        if (const auto at = folders_.find(name); at != folders_.end()) todo.push_back(&*at);
    std::atomic<std::size_t> next{0};
    const auto read = [&] {
        for (std::size_t k; (k = next++) < todo.size();)
            todo[k]->second.runs = runs_of_folder(root_, todo[k]->first, cache_);
    };
    std::vector<std::thread> pool;
    for (unsigned t = 1; t < std::min<std::size_t>(todo.size(), std::thread::hardware_concurrency()); ++t)
        pool.emplace_back(read);
    read();
    for (std::thread& t : pool) t.join();
    refreshes_ += todo.size();

    bool changed = pass.changed || !published_;
    for (auto* at : todo) {
        Folder& f = at->second;
        std::string signature = study_signature(f.runs);
        f.growing = std::any_of(f.runs.begin(), f.runs.end(),
                                [](const StudyRun& r) { return r.state == RunState::growing; });
        changed = changed || signature != f.signature;
        f.signature = std::move(signature);
    }
    if (!changed && pass.touched.empty()) return;
    std::shared_ptr<Study> study;
    if (changed) {
        study = std::make_shared<Study>();
        for (const auto& [name, f] : folders_)
            study->runs.insert(study->runs.end(), f.runs.begin(), f.runs.end());
    }
    published_ = true;
    {
        std::lock_guard lock(m_);
        if (study) {
            study_ = std::move(study);
            ++changes_;
        }
        for (const std::string& name : pass.touched) ++touched_[name];
    }
    cv_.notify_all();
}

void StudyWatch::loop() {
    auto walked = steady_clock::now(), grown = walked;
    for (;;) {
        const auto next_walk = walked + (polling_ ? kPollWalk : kWalk);
        const auto until = std::min(next_walk, grown + kGrowing);
        if (polling_) {
            std::unique_lock lock(m_);
            if (cv_.wait_until(lock, until, [&] { return stopping_; })) return;
        } else {
            const auto wait =
                std::chrono::duration_cast<std::chrono::milliseconds>(until - steady_clock::now());
            const Inotify::Waited got =
                inotify_.wait(static_cast<int>(std::clamp<long long>(wait.count() + 1, 0, 60'000)));
            if (got == Inotify::Waited::woken) return;
            if (got == Inotify::Waited::events) {
                if (inotify_.woken_within(kBurstMs)) return;
                catch_up(Refresh::events);
            }
        }
        const auto now = steady_clock::now();
        if (now >= next_walk) {
            catch_up(Refresh::all);
            walked = grown = now;
        } else if (now >= grown + kGrowing) {
            catch_up(Refresh::growing);
            grown = now;
        }
    }
}

}  // namespace viewer::web
