#include "korvane-runner/Web/PermissionQuestion.h"

#include "korvane-runner/Web/NavigationRule.h"
#include "korvane-runner/Web/PlainText.h"

namespace korvane::runner {

namespace {

constexpr std::size_t longestShown = 200;

std::string shown(const std::string& text) {
    const auto start = plainText::cut(text, longestShown);
    return plainText::oneLine(start) + (start.size() < text.size() ? "…" : "");
}

const char* wishFor(Permission permission) {
    switch (permission) {
    case Permission::camera:
        return "use your camera";
    case Permission::microphone:
        return "use your microphone";
    case Permission::cameraAndMicrophone:
        return "use your camera and microphone";
    case Permission::location:
        break;
    }
    return "know where you are";
}

} // namespace

Question permissionQuestion(Permission permission, const std::string& origin) {
    const auto who = origin.empty() ? "this page" : shown(origin);
    return {"Allow " + who + " to " + wishFor(permission) + "?", "Allow"};
}

Question otherProgramQuestion(const std::string& url) {
    return {"Open this “" + schemeOf(url) + "” address with another program?\n" + shown(url),
            "Open"};
}

} // namespace korvane::runner
