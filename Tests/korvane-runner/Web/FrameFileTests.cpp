#include "korvane-runner/Web/FrameFile.h"

#include "Support/Expect.h"
#include "Support/Files.h"
#include "Support/TempDir.h"

using namespace korvane::runner;
using namespace korvane::test;

namespace {

WindowFrame frame(int width, int height, std::optional<WindowFrame::Position> position = {},
                  bool maximized = false) {
    WindowFrame made;
    made.width = width;
    made.height = height;
    made.position = position;
    made.maximized = maximized;
    return made;
}

const WindowFrame standard = frame(1160, 780);

} // namespace

TEST_CASE("a window's frame lies in the home under the identifier, and comes back as it was") {
    const TempDir tmp;
    const FrameFile file(tmp.path(), "app.korvane.instance.mail");
    for (const auto& kept : {frame(800, 600), frame(800, 600, WindowFrame::Position{0, -20}),
                             frame(64, 16'384, WindowFrame::Position{-32'767, 32'767}, true),
                             frame(900, 700, {}, true)}) {
        file.write(kept);
        CHECK(FrameFile(tmp.path(), "app.korvane.instance.mail").read() == kept);
        CHECK(FrameFile(tmp.path(), "app.korvane.instance.other").read() == standard);
    }
    CHECK(namesIn(tmp.path()) == Strings{"KorvaneWeb-app.korvane.instance.mail"});
}

TEST_CASE("a frame file of another form is as good as none") {
    for (const std::string text :
         {"", "size", "size 800", "size 800 600", "size 800 600\n\n", "size  800 600\n",
          "size 800 600 \n", "size 800 600\nposition 1\n",
          "size 800 600\nmaximized\nposition 1 2\n", "size 800 600\nmaximized",
          "size 800 600\nmaximized 1\n", "size +800 600\n", "size 800.5 600\n",
          "size 99999999999 600\n", "position 1 2\n", "\nsize 800 600\n", "size 800 600\r\n",
          "size 800 600\nsize 800 600\n"}) {
        CAPTURE(text);
        CHECK_FALSE(FrameFile::parse(text));
    }
    CHECK(FrameFile::parse("size 800 600\nposition -5 7\nmaximized\n") ==
          frame(800, 600, WindowFrame::Position{-5, 7}, true));
}

TEST_CASE("a frame that nobody could see or use is not used") {
    const TempDir tmp;
    const FrameFile file(tmp.path(), "b");
    for (const auto& row : std::vector<std::pair<std::string, WindowFrame>>{
             {"size 63 600\n", standard},
             {"size 800 16385\n", standard},
             {"size -800 600\n", standard},
             {"size 0 0\nmaximized\n", frame(1160, 780, {}, true)},
             {"size 800 600\nposition 32768 0\n", frame(800, 600)},
             {"size 800 600\nposition 0 -32768\n", frame(800, 600)},
             {"nonsense", standard},
         }) {
        const auto& text = row.first;
        const auto& expected = row.second;
        CAPTURE(text);
        writeFile(file.path(), text);
        CHECK(file.read() == expected);
    }
}

TEST_CASE(
    "an identifier with a slash leads nowhere else, and a home that is not there is no matter") {
    const TempDir tmp;
    const FrameFile file(tmp.path(), "../../up");
    file.write(frame(800, 600));
    CHECK(namesIn(tmp.path()) == Strings{"KorvaneWeb-.._.._up"});

    for (const auto& home : {tmp / "missing", ambrel::Path()}) {
        const FrameFile none(home, "b");
        none.write(frame(800, 600));
        CHECK(none.read() == standard);
    }
    CHECK_FALSE(isThere(tmp / "missing"));
}
