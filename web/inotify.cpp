// The inotify descriptor and its wake-up pipe.
#include "web/inotify.hpp"

#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <initializer_list>

namespace viewer::web {

Inotify::Inotify(bool open) {
    if (!open) return;
    fd_ = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (fd_ >= 0 && ::pipe2(wake_, O_CLOEXEC) < 0) wake_[0] = wake_[1] = -1;
}

Inotify::~Inotify() {
    for (int fd : {fd_, wake_[0], wake_[1]})
        if (fd >= 0) ::close(fd);
}

Inotify::Waited Inotify::wait(int ms) const {
    pollfd fds[] = {{wake_[0], POLLIN, 0}, {fd_, POLLIN, 0}};
    ::poll(fds, 2, ms);
    return fds[0].revents ? Waited::woken : fds[1].revents ? Waited::events : Waited::timeout;
}

bool Inotify::woken_within(int ms) const {
    pollfd wake{wake_[0], POLLIN, 0};
    return ::poll(&wake, 1, ms) > 0;
}

void Inotify::drain() const {
    alignas(inotify_event) char events[1 << 14];
    while (::read(fd_, events, sizeof events) > 0) {
    }
}

void Inotify::wake() {
    if (wake_[1] >= 0) (void)!::write(wake_[1], "x", 1);
}

}  // namespace viewer::web
