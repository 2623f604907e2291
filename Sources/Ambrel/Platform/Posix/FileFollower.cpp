#include "Ambrel/Platform/FileFollower.h"

#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/FileWatch.h"
#include "Ambrel/Platform/Pipe.h"
#include "Ambrel/Platform/Posix/Retry.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <mutex>
#include <poll.h>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace ambrel {

namespace {

/// False when nobody takes the bytes any more. Waits where the descriptor does not.
bool handOn(int output, const char* bytes, std::size_t size) {
    while (size > 0) {
        const auto count = retryInterrupted([&] { return ::write(output, bytes, size); });
        if (count < 0 && errno == EAGAIN) {
            pollfd source{output, POLLOUT, 0};
            ::poll(&source, 1, -1);
            continue;
        }
        if (count < 0) return false;
        bytes += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

/// Where a regular file was left, and which it was: held open, so that no other is given its
/// number.
struct Position {
    OwnedFd file;
    dev_t device = 0;
    ino_t number = 0;
    off_t offset = 0;
};

} // namespace

/// What the object and the thread share.
struct FileFollower::State {
    State(const Path& folder, const std::string& name, int theOutput)
        : watch(folder, name), file(paths::join(folder, name)), output(theOutput),
          stop(Pipe::make()) {
        auto [opened, status] = open();
        if (!opened) return;
        position = {std::move(opened), status.st_dev, status.st_ino, status.st_size};
    }

    /// The file, where it is a regular one and not the output itself.
    std::pair<OwnedFd, struct stat> open() const {
        struct stat status {};
        struct stat target {};
        OwnedFd fd(retryInterrupted(
            [&] { return ::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC); }));
        const bool isFile = fd && ::fstat(fd.get(), &status) == 0 && S_ISREG(status.st_mode);
        if (!isFile || ::fstat(output, &target) != 0) return {};
        const bool isOutput = target.st_dev == status.st_dev && target.st_ino == status.st_ino;
        if (isOutput) return {};
        return {std::move(fd), status};
    }

    /// Hands on what the file holds now. False when nobody takes it any more.
    bool copy() {
        auto [fd, status] = open();
        if (!fd) return true;
        const bool isSame =
            position.file && status.st_dev == position.device && status.st_ino == position.number;
        const bool isFromStart = !isSame || status.st_size < position.offset;
        position = {std::move(fd), status.st_dev, status.st_ino, isFromStart ? 0 : position.offset};
        std::array<char, 65536> buffer{};
        while (position.offset < status.st_size) {
            const auto most = std::min<off_t>(status.st_size - position.offset, buffer.size());
            const auto count = retryInterrupted([&] {
                return ::pread(position.file.get(), buffer.data(), static_cast<std::size_t>(most),
                               position.offset);
            });
            if (count <= 0) return true;
            if (!handOn(output, buffer.data(), static_cast<std::size_t>(count))) return false;
            position.offset += count;
        }
        return true;
    }

    void follow() {
        try {
            auto event = FileWatch::Event::changed;
            while (event == FileWatch::Event::changed && copy()) {
                event = watch.wait(output, stop.readEnd.get());
            }
            if (event == FileWatch::Event::stopped) copy();
        } catch (const FileError&) {
            // The file keeps everything; only the handing on has come to its end.
        }
        end();
    }

    void end() {
        const std::lock_guard lock(mutex);
        done = true;
        if (whenDone) whenDone();
    }

    FileWatch watch;
    Path file;
    int output;
    Position position;
    Pipe stop;
    std::mutex mutex;
    bool done = false;
    std::function<void()> whenDone;
};

FileFollower::FileFollower(const Path& folder, const std::string& name, int output)
    : state_(std::make_shared<State>(folder, name, output)) {
    try {
        std::thread([state = state_] { state->follow(); }).detach();
    } catch (const std::system_error& error) {
        throw FileError("follow", state_->file, error.code().value());
    }
}

FileFollower::~FileFollower() {
    const std::lock_guard lock(state_->mutex);
    state_->whenDone = nullptr;
    state_->stop.writeEnd.reset();
}

void FileFollower::finish(std::function<void()> whenDone) {
    const std::lock_guard lock(state_->mutex);
    state_->stop.writeEnd.reset(); // the end of the pipe is what the thread waits for
    state_->whenDone = std::move(whenDone);
    if (state_->done && state_->whenDone) state_->whenDone();
}

bool FileFollower::isDone() const {
    const std::lock_guard lock(state_->mutex);
    return state_->done;
}

} // namespace ambrel
