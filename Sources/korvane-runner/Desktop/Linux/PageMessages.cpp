#include "korvane-runner/Desktop/Linux/PageMessages.h"

#include "korvane-runner/Desktop/Linux/JscValue.h"
#include "korvane-runner/Desktop/Linux/PageLoads.h"

namespace korvane::runner {

namespace {

struct UserScriptUnref {
    void operator()(WebKitUserScript* script) const noexcept { webkit_user_script_unref(script); }
};

void addScript(WebKitUserContentManager* content, const std::string& text) {
    const std::unique_ptr<WebKitUserScript, UserScriptUnref> script(
        webkit_user_script_new(text.c_str(), WEBKIT_USER_CONTENT_INJECT_TOP_FRAME,
                               WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START, nullptr, nullptr));
    webkit_user_content_manager_add_script(content, script.get());
}

} // namespace

PageMessages::PageMessages(WebKitUserContentManager* content, const WebWindowSetup& setup,
                           const PageLoads& loads, WebWindowEvents& events)
    : loads_(loads), events_(events),
      handler_(content, ("script-message-received::" + setup.handler).c_str(), onMessage, this) {
    // After the connection: a page could post in between.
    webkit_user_content_manager_register_script_message_handler(content, setup.handler.c_str(),
                                                                nullptr);
    addScript(content, std::string(setup.script));
}

void PageMessages::onMessage(WebKitUserContentManager*, JSCValue* message,
                             PageMessages* self) noexcept {
    if (self->loads_.showsOwnPage()) return; // the script runs there as well
    self->events_.messageArrived(JscValue(retained(message)));
}

} // namespace korvane::runner
