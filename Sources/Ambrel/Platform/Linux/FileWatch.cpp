#include "Ambrel/Platform/FileWatch.h"

#include "Ambrel/Platform/FileError.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <optional>
#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

namespace ambrel {

namespace {

constexpr std::string_view action = "watch";

std::optional<FileWatch::Event> eventOf(const inotify_event& event, const std::string& name) {
    if ((event.mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED | IN_UNMOUNT)) != 0) {
        return FileWatch::Event::folderGone;
    }
    // Lost notifications may have been about the file.
    if ((event.mask & IN_Q_OVERFLOW) != 0) return FileWatch::Event::changed;
    if (event.len > 0 && name == event.name) return FileWatch::Event::changed;
    return std::nullopt;
}

/// Reads what is there. A folder that is gone outweighs a change.
std::optional<FileWatch::Event> readEvents(int notifications, const std::string& name) {
    alignas(inotify_event) std::array<char, 16384> buffer;
    const auto size = ::read(notifications, buffer.data(), buffer.size());
    std::optional<FileWatch::Event> result;
    for (std::size_t at = 0; size > 0 && at < static_cast<std::size_t>(size);) {
        // Each notification is padded so that the next one is aligned (inotify(7)).
        const auto* event = reinterpret_cast<const inotify_event*>(buffer.data() + at);
        const auto found = eventOf(*event, name);
        if (found && result != FileWatch::Event::folderGone) result = found;
        at += sizeof(inotify_event) + event->len;
    }
    return result;
}

} // namespace

FileWatch::FileWatch(const Path& folder, std::string name)
    : notifications_(::inotify_init1(IN_CLOEXEC)), name_(std::move(name)) {
    if (!notifications_) throwFileError(std::string(action), folder);
    constexpr auto events = IN_MODIFY | IN_CREATE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE |
                            IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
    if (::inotify_add_watch(notifications_.get(), folder.c_str(), events) < 0) {
        throwFileError(std::string(action), folder);
    }
}

FileWatch::Event FileWatch::wait(int output, int stop) {
    while (true) {
        pollfd sources[] = {{notifications_.get(), POLLIN, 0}, {output, 0, 0}, {stop, POLLIN, 0}};
        if (::poll(sources, 3, -1) < 0) {
            if (errno == EINTR) continue;
            throwFileError(std::string(action), name_);
        }
        if ((sources[1].revents & (POLLERR | POLLHUP | POLLNVAL)) != 0) return Event::outputClosed;
        if (sources[2].revents != 0) return Event::stopped;
        if ((sources[0].revents & POLLIN) == 0) continue;
        if (const auto event = readEvents(notifications_.get(), name_)) return *event;
    }
}

} // namespace ambrel
