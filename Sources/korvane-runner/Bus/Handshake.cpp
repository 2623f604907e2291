#include "korvane-runner/Bus/Handshake.h"

namespace korvane::runner::bus {

namespace {

/// The bus ends a connection at this length.
constexpr std::size_t longestLine = 16 * 1024;

/// Whether a line, without its end, is the one behind which messages begin. What follows the word
/// is ignored by the bus; a line with any other byte than ASCII's is an error to it.
bool isBegin(std::string_view line) {
    constexpr std::string_view word = "BEGIN";
    for (const char c : line) {
        if (c == '\0' || static_cast<unsigned char>(c) >= 0x80) return false;
    }
    if (!line.starts_with(word)) return false;
    return line.size() == word.size() || line[word.size()] == ' ' || line[word.size()] == '\t';
}

} // namespace

/// Takes one byte, and tells whether a line has ended with it.
bool ClientHandshake::endsLine(char byte) {
    line_ += byte;
    if (!line_.ends_with("\r\n")) return false;
    line_.resize(line_.size() - 2);
    return true;
}

Checked<std::size_t> ClientHandshake::take(std::string_view bytes) {
    std::size_t taken = 0;
    while (taken < bytes.size() && !isOver_) {
        const char byte = bytes[taken++];
        // The first byte carries the credentials and is no part of a line.
        if (!hasBegun_) {
            if (byte != '\0') return Fault{"The handshake does not begin with a zero byte"};
            hasBegun_ = true;
            continue;
        }
        if (endsLine(byte)) {
            isOver_ = isBegin(line_);
            line_.clear();
        }
        if (line_.size() > longestLine) return Fault{"A line of the handshake does not end"};
    }
    return taken;
}

// No line of the bus begins with either letter, and every message does.
Checked<std::size_t> BusHandshake::take(std::string_view bytes) {
    std::size_t taken = 0;
    while (taken < bytes.size() && !isOver_) {
        const char byte = bytes[taken];
        if (lineLength_ == 0 && (byte == 'l' || byte == 'B')) {
            isOver_ = true;
            break;
        }
        ++taken;
        lineLength_ = byte == '\n' ? 0 : lineLength_ + 1;
        if (lineLength_ > longestLine) return Fault{"A line of the handshake does not end"};
    }
    return taken;
}

} // namespace korvane::runner::bus
