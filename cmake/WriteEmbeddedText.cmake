# The step of embed_text() that runs while building: writes OUTPUT, a source file with the bytes of
# FILE. As numbers, so that no text can end its own quotation and none is too long for a compiler.
file(READ "${FILE}" bytes HEX)
string(LENGTH "${bytes}" digits)
math(EXPR size "${digits} / 2")
string(REGEX REPLACE "(................................)" "\\1\n" bytes "${bytes}")
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${bytes}")
file(WRITE "${OUTPUT}" "// Generated.
#include \"${HEADER}\"

namespace {

constexpr char bytes[] = {
${bytes}
};

} // namespace

const std::string_view ${NAME}{bytes, ${size}};
")
