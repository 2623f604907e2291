#include "Receiving.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <sys/socket.h>

namespace korvane::test {

using namespace korvane::runner::bus;

ssize_t receiveOnce(const ambrel::OwnedFd& socket, std::size_t most, std::string& bytes,
                    Descriptors& descriptors) {
    const auto before = bytes.size();
    bytes.resize(before + most);
    alignas(cmsghdr) std::array<char, CMSG_SPACE(mostDescriptors * sizeof(int))> control{};
    iovec part{bytes.data() + before, most};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    const auto size = ::recvmsg(socket.get(), &message, MSG_CMSG_CLOEXEC | MSG_DONTWAIT);
    bytes.resize(before + static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    if (size <= 0) return size;
    for (auto* header = CMSG_FIRSTHDR(&message); header != nullptr;
         header = CMSG_NXTHDR(&message, header)) {
        const auto count = (header->cmsg_len - CMSG_LEN(0)) / sizeof(int);
        for (std::size_t i = 0; i < count; ++i) {
            int number = -1;
            std::memcpy(&number, CMSG_DATA(header) + i * sizeof(int), sizeof number);
            descriptors.emplace_back(number);
        }
    }
    return size;
}

} // namespace korvane::test
