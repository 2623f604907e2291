#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace korvane::test {

/// Bytes of values, as a message has them, written without the code that is tested.
class Bytes {
public:
    explicit Bytes(char order = 'l') : order_(order) {}

    Bytes& pad(std::size_t size);
    Bytes& number(std::uint32_t value); ///< padded to 4
    Bytes& text(std::string_view text);
    Bytes& signature(std::string_view text);
    Bytes& raw(std::string_view bytes);
    /// `content` behind its length, which does not count the padding before an element of `size`.
    Bytes& array(std::string_view content, std::size_t size = 4);

    const std::string& str() const { return bytes_; }

private:
    char order_;
    std::string bytes_;
};

/// A message of any kind, right or wrong. What it is made of may be changed before it is asked for
/// its bytes.
struct RawMessage {
    struct Field {
        int code;
        std::string type;
        std::string value; ///< a text for "s", "o" and "g", else bytes as they stand
    };

    char order = 'l';
    int type = 1;
    int flags = 0;
    int version = 1;
    std::uint32_t serial = 7;
    std::vector<Field> fields{};
    std::string body{};
    char padding = '\0';                      ///< behind the fields
    std::uint32_t fieldsLength = 0xFFFF'FFFF; ///< this one: what is true
    std::uint32_t bodyLength = 0xFFFF'FFFF;   ///< likewise

    RawMessage& with(int code, const std::string& type, const std::string& value);
    /// With texts under a code's usual type; instead of a field of that code, where there is one.
    RawMessage& with(int code, const std::string& value);
    RawMessage& withNumber(int code, std::uint32_t value);
    RawMessage& without(int code);
    RawMessage& withBody(const std::string& signature, const Bytes& bytes);

    std::string header() const;
    std::string bytes() const { return header() + body; }
};

/// A call to the bus itself, without arguments.
RawMessage busCall(const std::string& member, char order = 'l');
/// A call to another program: org.example.Editor.Open of "/".
RawMessage callTo(const std::string& destination, char order = 'l');
/// What the bus answers to the call with that serial.
RawMessage busAnswer(std::uint32_t replySerial, char order = 'l');
RawMessage busError(std::uint32_t replySerial, const std::string& name, const std::string& text,
                    char order = 'l');
RawMessage busSignal(const std::string& member, const std::string& name, char order = 'l');

/// Messages as programs and dbus-daemon 1.14 wrote them to each other.
extern const std::vector<std::string> recordedMessages;

} // namespace korvane::test
