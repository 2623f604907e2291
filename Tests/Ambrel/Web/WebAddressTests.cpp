#include "Ambrel/Web/WebAddress.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Platform/Text.h"
#include "Support/Expect.h"

#include <vector>

using namespace ambrel;

namespace {

using Fault = WebAddressFault;

/// A text of a request, in plain words for the list of failures.
struct Row {
    std::string raw;
    std::string url; ///< empty for none
};

void checkAll(const std::vector<Row>& table) {
    for (const auto& row : table) {
        CAPTURE(row.raw);
        CHECK(normalizedURL(row.raw).value_or("") == row.url);
        CHECK(findWebAddressFault(row.raw).has_value() == row.url.empty());
    }
}

std::string characterText(char32_t character) {
    std::string text;
    utf8::append(text, character);
    return text;
}

} // namespace

TEST_CASE("a text without a scheme becomes an https address") {
    checkAll({
        {"mail.example.org", "https://mail.example.org"},
        {"mail.example.org/inbox?folder=1#top", "https://mail.example.org/inbox?folder=1#top"},
        {"mail.example.org:8080/x", "https://mail.example.org:8080/x"},
        {"localhost", "https://localhost"},
        {"[::1]:8443/", "https://[::1]:8443/"},
        {"mailto:a@b", "https://mailto:a@b"}, // a name, a password and a host
        {"mail.example.org?next=//other", "https://mail.example.org?next=//other"},
        {"m\xc3\xbcller.example", "https://m\xc3\xbcller.example"},
        {"mail.example.org/a b", "https://mail.example.org/a b"},
    });
}

TEST_CASE("a text with a scheme stays as it stands") {
    checkAll({
        {"https://mail.example.org/", "https://mail.example.org/"},
        {"http://127.0.0.1:8080", "http://127.0.0.1:8080"},
        {"HTTPS://Mail.Example.org", "HTTPS://Mail.Example.org"},
        {"https://name:p@ss@mail.example.org/", "https://name:p@ss@mail.example.org/"},
        {"https://a:b c@mail.example.org/", "https://a:b c@mail.example.org/"},
        {"https://mail.example.org:/x", "https://mail.example.org:/x"},
        {"https://[2001:db8::1]", "https://[2001:db8::1]"},
        {"https://mail.example.org?q=http://x y", "https://mail.example.org?q=http://x y"},
        {"https://\xe4\xbe\x8b\xe3\x81\x88.example/", "https://\xe4\xbe\x8b\xe3\x81\x88.example/"},
        {"ftp://", "ftp://"},
        {"web+mail-1.0://x y:z", "web+mail-1.0://x y:z"},
        {"data:text/html,<a href='https://x'>x</a>", "data:text/html,<a href='https://x'>x</a>"},
        {"data:", "data:"},
        {"file:///usr/share/doc", "file:///usr/share/doc"},
        {"file:x y", "file:x y"},
    });
}

TEST_CASE("white space around an address is left out, that of Unicode and line breaks too") {
    checkAll({
        {"  https://mail.example.org/ \r\n", "https://mail.example.org/"},
        {"\t\vmail.example.org\f", "https://mail.example.org"},
        {"\xc2\xa0\xe3\x80\x80mail.example.org\xe2\x80\xa8\xc2\x85", "https://mail.example.org"},
        {"\n data:text/plain,a b \n", "data:text/plain,a b"},
        {" \xe2\x80\x83", ""},
    });
}

TEST_CASE("what is trimmed off an address is what the rules of Unicode trim off a text") {
    for (char32_t character = 0; character <= 0x10FFFF; ++character) {
        if (character >= 0xD800 && character <= 0xDFFF) continue;
        const auto one = characterText(character);
        const bool isTrimmed = normalizedURL(one + "data:" + one) == "data:";
        if (isTrimmed != text::trimmingWhitespaceAndNewlines(one).empty()) {
            CAPTURE(static_cast<unsigned>(character));
            CHECK(isTrimmed == text::trimmingWhitespaceAndNewlines(one).empty());
        }
    }
}

TEST_CASE("a text that is no address has its reason") {
    const std::vector<std::pair<std::string, Fault>> table{
        {"", Fault::empty},
        {" \n\t", Fault::empty},
        {"://mail.example.org", Fault::scheme},
        {"1http://mail.example.org", Fault::scheme},
        {"my site://mail.example.org", Fault::scheme},
        {"h\xc3\xa4ttp://mail.example.org", Fault::scheme},
        {"mail.example.org/?next=https://other.example", Fault::scheme},
        {"mailto:a@b?body=http://x", Fault::scheme},
        {"https://", Fault::noHost},
        {"http:///inbox", Fault::noHost},
        {"HTTP://?q", Fault::noHost},
        {"https://name@", Fault::noHost},
        {"https://:80", Fault::noHost},
        {"https://[]", Fault::noHost},
        {"/inbox", Fault::noHost},
        {"?q", Fault::noHost},
        {"my mail", Fault::badHost},
        {"https://mail example.org/", Fault::badHost},
        {"https://mail.example.org /", Fault::badHost},
        {"https://mail\xc2\xa0.example", Fault::badHost},
        {"https://mail\xe2\x80\xa9.example", Fault::badHost},
        {"https://mail\x1b.example", Fault::badHost},
        {"https://mail\xc2\x9f.example", Fault::badHost},
        {std::string("https://mail\0.example", 21), Fault::badHost},
        {"https://mail\xff.example", Fault::badHost},
        {"https://[::1", Fault::badHost},
        {"https://[::1 ]/", Fault::badHost},
        {"mail.example.org:inbox", Fault::port},
        {"about:blank", Fault::port},
        {"DATA:text/plain,x", Fault::port}, // no scheme that is known by its colon alone
        {"https://mail.example.org:80a/", Fault::port},
        {"https://mail.example.org: 80/", Fault::port},
        {"https://mail.example.org:-1", Fault::port},
        {"https://2001:db8::1/", Fault::port},
        {"https://[::1]80", Fault::port},
    };
    for (const auto& row : table) {
        CAPTURE(row.first);
        CHECK(findWebAddressFault(row.first) == row.second);
        CHECK_FALSE(normalizedURL(row.first).has_value());
    }
}
