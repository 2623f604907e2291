#include "korvane-runner/Desktop/Linux/PageMessages.h"

#include "korvane-runner/Desktop/Linux/JscValue.h"
#include "korvane-runner/Desktop/Linux/PageLoads.h"
#include "korvane-runner/Desktop/Linux/UserScripts.h"

namespace korvane::runner {

PageMessages::PageMessages(WebKitUserContentManager* content, const WebWindowSetup& setup,
                           const PageLoads& loads, WebWindowEvents& events)
    : loads_(loads), events_(events),
      handler_(content, ("script-message-received::" + setup.handler).c_str(), onMessage, this) {
    // After the connection: a page could post in between.
    webkit_user_content_manager_register_script_message_handler(content, setup.handler.c_str(),
                                                                nullptr);
    addUserScript(content, std::string(setup.script));
}

void PageMessages::onMessage(WebKitUserContentManager*, JSCValue* message,
                             PageMessages* self) noexcept {
    if (self->loads_.showsOwnPage()) return; // the script runs there as well
    self->events_.messageArrived(JscValue(retained(message)));
}

} // namespace korvane::runner
