#pragma once

#include "korvane-runner/Desktop/FakeDesktop.h"
#include "korvane-runner/Desktop/WebDesktop.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace korvane::test {

/// A page's value, as the engine hands it over.
struct Value final : runner::PageValue {
    struct Absent {};
    struct List {};
    using Fields = std::map<std::string, Value>;

    Value() = default;
    Value(const char* text) : content(std::u16string()), utf8(text) {} // NOLINT(*-explicit-*)
    Value(std::string text) : content(std::u16string()), utf8(std::move(text)) {} // NOLINT
    Value(double number) : content(number) {}                                     // NOLINT
    Value(int number) : content(static_cast<double>(number)) {}                   // NOLINT
    Value(List list) : content(list) {}                                           // NOLINT
    Value(Fields fields) : content(std::move(fields)) {}                          // NOLINT

    bool isDictionary() const override { return std::holds_alternative<Fields>(content); }
    std::unique_ptr<PageValue> field(const char* name) const override;
    std::optional<double> number() const override;
    /// For texts of ASCII a byte is a unit.
    std::optional<std::string> text(std::size_t most) const override;

    std::variant<Absent, List, double, std::u16string, Fields> content;
    std::string utf8; ///< of a text
};

/// A message of the bridge.
inline Value message(const char* type, Value::Fields payload) {
    return Value::Fields{{"type", type}, {"payload", Value(std::move(payload))}};
}

struct FakeBanners final : runner::Banners {
    void post(const runner::Banner& banner, std::function<void()> done) override {
        posted.push_back(banner);
        underWay.push_back(std::move(done));
    }

    std::vector<runner::Banner> posted;
    std::vector<std::function<void()>> underWay;
};

struct FakeBadge final : runner::IconBadge {
    void show(std::int64_t count) override { shown.push_back(count); }

    std::vector<std::int64_t> shown;
};

/// What became of the window; it outlives it.
struct WindowRecord {
    struct Asked {
        std::string question;
        std::string yes;
        std::function<void(bool)> answer;
    };

    /// The person answers a question, once.
    void answer(std::size_t index, bool agrees) {
        std::exchange(asked.at(index).answer, nullptr)(agrees);
    }

    std::optional<runner::WebWindowSetup> setup;
    std::string script; ///< of the setup, kept
    std::vector<std::string> titles;
    std::vector<std::string> loaded;
    std::vector<std::pair<std::string, std::string>> pages; ///< HTML and address
    std::vector<Asked> asked;
    int presented = 0;
    runner::WindowFrame frame;
};

class FakeWebDesktop final : public runner::WebDesktop {
public:
    runner::AppLoop& loop() override { return fakeLoop; }
    runner::StatusArea& statusArea() override { return fakeStatusArea; }
    runner::ProgramWindows& windows() override { return fakeWindows; }
    runner::Banners& banners() override { return fakeBanners; }
    runner::IconBadge& badge() override { return fakeBadge; }
    std::unique_ptr<runner::WebWindow> openWindow(const runner::WebWindowSetup& setup,
                                                  runner::WebWindowEvents& events) override;
    void flush() override {
        ++flushed;
        if (whenFlushed) whenFlushed();
    }

    FakeLoop fakeLoop;
    FakeStatusArea fakeStatusArea;
    FakeWindows fakeWindows;
    FakeBanners fakeBanners;
    FakeBadge fakeBadge;
    WindowRecord window;
    runner::WebWindowEvents* events = nullptr; ///< while there is a window
    int flushed = 0;
    std::function<void()> whenFlushed; ///< what comes meanwhile
};

} // namespace korvane::test
