// An inotify descriptor with the pipe that wakes the thread waiting on it,
// both closed with it: what the watches of the browser view share.
#pragma once

namespace viewer::web {

class Inotify {
public:
    // `open` false, or inotify not to be had: ready() is false, and the
    // owner looks at its files by polling instead.
    explicit Inotify(bool open);
    ~Inotify();
    Inotify(const Inotify&) = delete;
    Inotify& operator=(const Inotify&) = delete;

    bool ready() const { return fd_ >= 0 && wake_[0] >= 0; }
    int fd() const { return fd_; }  // to add and remove watches, and to read events

    enum class Waited { woken, events, timeout };
    // Waits up to `ms` milliseconds for an event or for wake().
    Waited wait(int ms) const;
    // Whether wake() comes within `ms` milliseconds, events aside.
    bool woken_within(int ms) const;
    void drain() const;  // drops the events queued
    void wake();         // the waiting thread returns from wait()

private:
    int fd_ = -1, wake_[2] = {-1, -1};
};

}  // namespace viewer::web
