#include "korvane-runner/Desktop/Linux/WindowManager.h"

#include "korvane-runner/Desktop/Linux/Toolkit.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <optional>
#include <vector>
#include <xcb/res.h>
#include <xcb/xcb.h>

namespace korvane::runner {

namespace {

/// What the library hands out is the caller's to free.
struct Free {
    void operator()(void* memory) const noexcept { std::free(memory); }
};
template <class T> std::unique_ptr<T, Free> owned(T* reply) {
    return std::unique_ptr<T, Free>(reply);
}

struct Disconnect {
    void operator()(xcb_connection_t* server) const noexcept { xcb_disconnect(server); }
};

constexpr std::uint32_t onEveryDesktop = 0xFFFFFFFF;

/// Errors are told by answers that are missing: a window may go at any time.
class Server {
public:
    Server() : server_(xcb_connect(nullptr, &screen_)) {}

    void bringToFront(const std::set<int>& processes) {
        if (xcb_connection_has_error(server_.get()) != 0 || !findRoot()) return;
        internAtoms();
        hasClientIds_ = openXRes() && hasExtension("X-Resource");
        auto windows = numbers(ask(root_, stacking_));
        // Window managers that only tile need not tell which window lies over which.
        if (windows.empty()) windows = numbers(ask(root_, clientList_));
        const auto current = numbers(ask(root_, currentDesktop_));
        const auto desktop = current.empty() ? std::nullopt : std::optional(current.front());
        for (const auto& window : windowsOf(processes, windows)) raise(window, desktop);
        // What the server has answered after it has all arrived.
        owned(
            xcb_get_input_focus_reply(server_.get(), xcb_get_input_focus(server_.get()), nullptr));
    }

private:
    struct Window {
        xcb_window_t id;
        std::optional<std::uint32_t> desktop;
    };

    /// What is asked of a window, all of it before the first answer is awaited.
    struct Questions {
        xcb_window_t window;
        xcb_get_property_cookie_t process;
        xcb_get_property_cookie_t desktop;
        std::optional<xcb_res_query_client_ids_cookie_t> client;
    };

    bool findRoot() {
        auto screens = xcb_setup_roots_iterator(xcb_get_setup(server_.get()));
        for (; screens.rem > 0 && screen_ > 0; --screen_) xcb_screen_next(&screens);
        if (screens.rem == 0) return false;
        root_ = screens.data->root;
        return true;
    }

    void internAtoms() {
        struct Wanted {
            const char* name;
            xcb_atom_t& atom;
            xcb_intern_atom_cookie_t cookie{};
        };
        Wanted all[] = {{"_NET_CLIENT_LIST_STACKING", stacking_},
                        {"_NET_CLIENT_LIST", clientList_},
                        {"_NET_CURRENT_DESKTOP", currentDesktop_},
                        {"_NET_WM_DESKTOP", windowDesktop_},
                        {"_NET_WM_PID", processId_},
                        {"_NET_ACTIVE_WINDOW", activeWindow_}};
        for (auto& each : all) {
            each.cookie = xcb_intern_atom(
                server_.get(), 0, static_cast<std::uint16_t>(std::strlen(each.name)), each.name);
        }
        for (auto& each : all) {
            const auto answer = owned(xcb_intern_atom_reply(server_.get(), each.cookie, nullptr));
            if (answer) each.atom = answer->atom;
        }
    }

    bool hasExtension(const char* name) {
        const auto cookie =
            xcb_query_extension(server_.get(), static_cast<std::uint16_t>(std::strlen(name)), name);
        const auto answer = owned(xcb_query_extension_reply(server_.get(), cookie, nullptr));
        return answer && answer->present != 0;
    }

    xcb_get_property_cookie_t ask(xcb_window_t window, xcb_atom_t property) {
        constexpr std::uint32_t most = 1 << 16;
        return xcb_get_property(server_.get(), 0, window, property, XCB_ATOM_ANY, 0, most);
    }

    std::vector<std::uint32_t> numbers(xcb_get_property_cookie_t cookie) {
        const auto answer = owned(xcb_get_property_reply(server_.get(), cookie, nullptr));
        if (!answer || answer->format != 32) return {};
        const auto* first = static_cast<const std::uint32_t*>(xcb_get_property_value(answer.get()));
        return {first, first + answer->value_len};
    }

    Questions questionsFor(xcb_window_t window) {
        Questions questions{window, ask(window, processId_), ask(window, windowDesktop_), {}};
        const xcb_res_client_id_spec_t client{window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
        if (hasClientIds_) questions.client = xcb_res_query_client_ids(server_.get(), 1, &client);
        return questions;
    }

    /// Those of the processes, in the same order.
    std::vector<Window> windowsOf(const std::set<int>& processes,
                                  const std::vector<std::uint32_t>& windows) {
        std::vector<Questions> asked;
        for (const auto window : windows) asked.push_back(questionsFor(window));
        std::vector<Window> result;
        for (const auto& questions : asked) {
            const auto desktop = numbers(questions.desktop);
            bool isTheirs = areAmong(processes, numbers(questions.process));
            if (questions.client && areAmong(processes, clientOf(*questions.client))) {
                isTheirs = true;
            }
            if (!isTheirs) continue;
            result.push_back({questions.window, {}});
            if (!desktop.empty()) result.back().desktop = desktop.front();
        }
        return result;
    }

    static bool areAmong(const std::set<int>& processes, const std::vector<std::uint32_t>& told) {
        return !told.empty() && processes.contains(static_cast<int>(told.front()));
    }

    /// The process that the server has found at the other end of the connection. What a program
    /// writes to its window may be missing, or be true in another namespace.
    std::vector<std::uint32_t> clientOf(xcb_res_query_client_ids_cookie_t cookie) {
        const auto answer = owned(xcb_res_query_client_ids_reply(server_.get(), cookie, nullptr));
        if (!answer) return {};
        const auto ids = xcb_res_query_client_ids_ids_iterator(answer.get());
        if (ids.rem == 0) return {};
        const auto* first = xcb_res_client_id_value_value(ids.data);
        return {first, first + xcb_res_client_id_value_value_length(ids.data)};
    }

    void raise(const Window& window, std::optional<std::uint32_t> current) {
        constexpr std::uint32_t byPerson = 2; // of a pager's kind, which is not held up
        if (current && window.desktop && window.desktop != current &&
            *window.desktop != onEveryDesktop) {
            send(window.id, windowDesktop_, {*current, byPerson});
        }
        send(window.id, activeWindow_, {byPerson});
    }

    void send(xcb_window_t window, xcb_atom_t type, std::initializer_list<std::uint32_t> data) {
        xcb_client_message_event_t event{};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 32;
        event.window = window;
        event.type = type;
        std::copy(data.begin(), data.end(), event.data.data32);
        xcb_send_event(server_.get(), 0, root_,
                       XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                       reinterpret_cast<const char*>(&event));
    }

    int screen_ = 0;
    std::unique_ptr<xcb_connection_t, Disconnect> server_;
    xcb_window_t root_ = XCB_NONE;
    bool hasClientIds_ = false;
    xcb_atom_t stacking_ = XCB_NONE;
    xcb_atom_t clientList_ = XCB_NONE;
    xcb_atom_t currentDesktop_ = XCB_NONE;
    xcb_atom_t windowDesktop_ = XCB_NONE;
    xcb_atom_t processId_ = XCB_NONE;
    xcb_atom_t activeWindow_ = XCB_NONE;
};

} // namespace

void windowManager::bringToFront(const std::set<int>& processes) noexcept {
    if (openXcb()) Server().bringToFront(processes);
}

} // namespace korvane::runner
