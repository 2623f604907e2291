// Comes before the C library in the runner of a web instance, and lets the engine hear late that a
// load has started: when somebody has written to the pipe that LATE_START_GATE names. A page's
// process tells LATE_START_URL twice, to ask whether it may go there and as it starts. What asks
// for a name tells it as well, behind the first of them, and must not be held back.

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <string_view>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using Receive = ssize_t (*)(int, msghdr*, int);

// What the runner starts is as ever.
[[gnu::constructor]] void begin() { ::unsetenv("LD_PRELOAD"); }

bool isOfTheEngine(int socket) {
    int type = 0;
    socklen_t size = sizeof type;
    return ::getsockopt(socket, SOL_SOCKET, SO_TYPE, &type, &size) == 0 && type == SOCK_SEQPACKET;
}

bool holds(const msghdr& message, std::size_t size, std::string_view text) {
    if (message.msg_iovlen == 0) return false;
    const auto& part = message.msg_iov[0];
    return ::memmem(part.iov_base, std::min(size, part.iov_len), text.data(), text.size()) !=
           nullptr;
}

/// Whether it is the socket of the page's process, which is the first to tell the address.
bool isOfThePage(int socket) {
    static std::atomic<int> page = -1;
    int none = -1;
    return page.compare_exchange_strong(none, socket) || none == socket;
}

void awaitGate() {
    const int gate = ::open(std::getenv("LATE_START_GATE"), O_RDONLY | O_CLOEXEC);
    char byte = 0;
    (void)!::read(gate, &byte, 1);
    ::close(gate);
}

} // namespace

extern "C" __attribute__((visibility("default"))) ssize_t recvmsg(int socket, msghdr* message,
                                                                  int flags) {
    static const auto receive = reinterpret_cast<Receive>(::dlsym(RTLD_NEXT, "recvmsg"));
    static std::atomic<int> told = 0;
    const auto size = receive(socket, message, flags);
    const char* url = std::getenv("LATE_START_URL");
    if (size > 0 && url != nullptr && isOfTheEngine(socket) &&
        holds(*message, static_cast<std::size_t>(size), url) && isOfThePage(socket) &&
        ++told == 2) {
        awaitGate();
    }
    return size;
}
