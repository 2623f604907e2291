#include "korvane-runner/Web/FakeWebDesktop.h"

#include <utility>

namespace korvane::test {

using namespace runner;

std::unique_ptr<PageValue> Value::field(const char* name) const {
    const auto& fields = std::get<Fields>(content); // to ask another one is a mistake
    const auto entry = fields.find(name);
    return std::make_unique<Value>(entry == fields.end() ? Value() : entry->second);
}

std::optional<double> Value::number() const {
    const auto* number = std::get_if<double>(&content);
    return number == nullptr ? std::nullopt : std::optional(*number);
}

std::optional<std::string> Value::text(std::size_t most) const {
    if (!std::holds_alternative<std::u16string>(content)) return std::nullopt;
    return utf8.substr(0, most);
}

namespace {

class FakeWindow final : public WebWindow {
public:
    explicit FakeWindow(FakeWebDesktop& desktop) : desktop_(desktop), record_(desktop.window) {}
    FakeWindow(const FakeWindow&) = delete;
    FakeWindow& operator=(const FakeWindow&) = delete;
    ~FakeWindow() override {
        desktop_.events = nullptr;
        for (const auto& asked : std::exchange(record_.asked, {})) {
            if (asked.answer) asked.answer(false);
        }
    }

    void setTitle(const std::string& title) override { record_.titles.push_back(title); }
    void load(const std::string& url) override { record_.loaded.push_back(url); }
    void showPage(const std::string& html, const std::string& url) override {
        record_.pages.emplace_back(html, url);
    }
    void ask(const std::string& question, const std::string& yes,
             std::function<void(bool)> answer) override {
        record_.asked.push_back({question, yes, std::move(answer)});
    }
    void present() override { ++record_.presented; }
    WindowFrame frame() const override { return record_.frame; }

private:
    FakeWebDesktop& desktop_;
    WindowRecord& record_;
};

} // namespace

std::unique_ptr<WebWindow> FakeWebDesktop::openWindow(const WebWindowSetup& setup,
                                                      WebWindowEvents& windowEvents) {
    window.setup = setup;
    window.script = setup.script;
    window.frame = setup.frame;
    events = &windowEvents;
    return std::make_unique<FakeWindow>(*this);
}

} // namespace korvane::test
