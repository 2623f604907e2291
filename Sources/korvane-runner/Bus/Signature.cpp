#include "korvane-runner/Bus/Signature.h"

namespace korvane::runner::bus {

namespace {

constexpr int deepestNesting = 32;
constexpr std::string_view basicTypes = "ybnqiuxtdsogh";

bool isBasic(char type) { return basicTypes.find(type) != std::string_view::npos; }

/// Takes complete types off the front of a signature that may be anything.
class SignatureCheck {
public:
    explicit SignatureCheck(std::string_view rest) : rest_(rest) {}

    bool isAtEnd() const { return rest_.empty(); }

    bool takeType() {
        const char type = next();
        if (isBasic(type) || type == 'v') return true;
        if (type == 'a') return takeElement();
        return type == '(' && takeMembers();
    }

private:
    char next() {
        if (rest_.empty()) return '\0';
        const char first = rest_.front();
        rest_.remove_prefix(1);
        return first;
    }

    bool takeElement() {
        if (++arrays_ > deepestNesting) return false;
        const bool isRight = rest_.starts_with('{') ? takeEntry() : takeType();
        --arrays_;
        return isRight;
    }

    bool takeEntry() {
        next();
        return isBasic(next()) && takeType() && next() == '}';
    }

    bool takeMembers() {
        if (++structs_ > deepestNesting) return false;
        do {
            if (!takeType()) return false;
        } while (!rest_.starts_with(')'));
        next();
        --structs_;
        return true;
    }

    std::string_view rest_;
    int arrays_ = 0;
    int structs_ = 0;
};

} // namespace

bool isSignature(std::string_view signature) {
    if (signature.size() > longestSignature) return false;
    SignatureCheck check(signature);
    while (!check.isAtEnd()) {
        if (!check.takeType()) return false;
    }
    return true;
}

bool isSingleType(std::string_view signature) {
    if (signature.size() > longestSignature) return false;
    SignatureCheck check(signature);
    return check.takeType() && check.isAtEnd();
}

std::size_t firstTypeLength(std::string_view signature) {
    std::size_t length = 0;
    while (signature[length] == 'a') ++length;
    int depth = 0;
    do {
        const char type = signature[length++];
        if (type == '(' || type == '{') ++depth;
        if (type == ')' || type == '}') --depth;
    } while (depth > 0);
    return length;
}

std::size_t alignmentOf(char type) {
    switch (type) {
    case 'y':
    case 'g':
    case 'v':
        return 1;
    case 'n':
    case 'q':
        return 2;
    case 'x':
    case 't':
    case 'd':
    case '(':
    case '{':
        return 8;
    default:
        return 4;
    }
}

} // namespace korvane::runner::bus
