#include "korvane-runner/Desktop/Linux/LoadedTitle.h"

#include "korvane-runner/Desktop/Linux/JscValue.h"
#include "korvane-runner/Desktop/Linux/UserScripts.h"

namespace korvane::runner {

namespace {

constexpr const char* world = "title";
constexpr const char* script = R"(
addEventListener('pageshow', event => {
    if (event.isTrusted) webkit.messageHandlers.title.postMessage(document.title);
});
)";

} // namespace

LoadedTitle::LoadedTitle(WebKitUserContentManager* content, Told told)
    : told_(std::move(told)), handler_(content, "script-message-received::title", onMessage, this) {
    webkit_user_content_manager_register_script_message_handler(content, "title", world);
    addUserScript(content, script, world);
}

void LoadedTitle::onMessage(WebKitUserContentManager*, JSCValue* title,
                            LoadedTitle* self) noexcept {
    constexpr std::size_t most = 4096; // far beyond what a title bar shows
    self->told_(JscValue(retained(title)).text(most).value_or(""));
}

} // namespace korvane::runner
