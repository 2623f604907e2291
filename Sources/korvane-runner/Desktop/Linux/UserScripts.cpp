#include "korvane-runner/Desktop/Linux/UserScripts.h"

#include <memory>

namespace korvane::runner {

namespace {

struct UserScriptUnref {
    void operator()(WebKitUserScript* script) const noexcept { webkit_user_script_unref(script); }
};
using UserScriptPtr = std::unique_ptr<WebKitUserScript, UserScriptUnref>;

} // namespace

void addUserScript(WebKitUserContentManager* content, const std::string& text, const char* world) {
    constexpr auto frames = WEBKIT_USER_CONTENT_INJECT_TOP_FRAME;
    constexpr auto time = WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START;
    const UserScriptPtr script(
        world == nullptr ? webkit_user_script_new(text.c_str(), frames, time, nullptr, nullptr)
                         : webkit_user_script_new_for_world(text.c_str(), frames, time, world,
                                                            nullptr, nullptr));
    webkit_user_content_manager_add_script(content, script.get());
}

} // namespace korvane::runner
