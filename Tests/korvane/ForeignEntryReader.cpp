#include "ForeignEntryReader.h"

#include "Support/Programs.h"

#include <gio/gdesktopappinfo.h>
#include <memory>

namespace korvane::test {

namespace {

struct Release {
    void operator()(char* text) const { g_free(text); }
    void operator()(char** texts) const { g_strfreev(texts); }
    void operator()(GKeyFile* file) const { g_key_file_unref(file); }
    void operator()(GDesktopAppInfo* info) const { g_object_unref(info); }
};
template <class T> using Owned = std::unique_ptr<T, Release>;

std::string valueOf(GKeyFile* file, const char* key) {
    const Owned<char> text(g_key_file_get_string(file, G_KEY_FILE_DESKTOP_GROUP, key, nullptr));
    REQUIRE(text);
    return text.get();
}

Strings wordsOf(const std::string& exec) {
    char** parsed = nullptr;
    REQUIRE(g_shell_parse_argv(exec.c_str(), nullptr, &parsed, nullptr));
    const Owned<char*> words(parsed);
    Strings result;
    for (char** word = words.get(); *word != nullptr; ++word) {
        std::string text = *word;
        for (auto at = text.find("%%"); at != std::string::npos; at = text.find("%%", at + 1)) {
            text.erase(at, 1);
        }
        result.push_back(text);
    }
    return result;
}

} // namespace

ForeignEntry readWithGLib(const Path& file) {
    const Owned<GKeyFile> keys(g_key_file_new());
    REQUIRE(g_key_file_load_from_file(keys.get(), file.c_str(), G_KEY_FILE_NONE, nullptr));
    const Owned<GDesktopAppInfo> info(g_desktop_app_info_new_from_filename(file.c_str()));
    REQUIRE(info);
    CHECK(g_app_info_should_show(G_APP_INFO(info.get())));
    return {g_app_info_get_name(G_APP_INFO(info.get())), wordsOf(valueOf(keys.get(), "Exec")),
            valueOf(keys.get(), "X-Korvane-Bundle")};
}

std::string complaintsAbout(const Path& file) {
    const auto done = run({"desktop-file-validate", file});
    const auto text = done.output + done.error;
    return done.status == 0 ? text : "status " + std::to_string(done.status) + "\n" + text;
}

} // namespace korvane::test
