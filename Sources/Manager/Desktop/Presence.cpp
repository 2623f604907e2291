#include "Manager/Desktop/Presence.h"

#include "Ambrel/Base/Utf8.h"
#include "Manager/Rules/InstanceLookup.h"

namespace korvane::presence {

using ambrel::InstanceRecord;
using ambrel::UserPlaces;
using registration::Entry;

namespace {

/// A sentence and a reason as one text; some reasons end in a dot.
std::string sentence(const std::string& text, const std::string& reason) {
    return text + " " + reason + (reason.ends_with('.') ? "" : ".");
}

/// Its name is shorter, but finding out whether it is the only one can fail.
std::string shortNameOf(const InstanceRecord& record, const UserPlaces& user) noexcept {
    try {
        return nameFor(record, user);
    } catch (const std::exception&) {
        return record.bundleURL;
    }
}

/// `failure` is what is the case when it fails.
void add(const InstanceRecord& record, const UserPlaces& user, Notice failure,
         std::vector<Notice>& notices) {
    try {
        registration::add(record, user);
    } catch (const std::exception& error) {
        failure.subject = shortNameOf(record, user);
        failure.sentence = sentence(failure.sentence, error.what());
        failure.remedy = Remedy::registerAgain;
        notices.push_back(std::move(failure));
    }
}

/// No entry can offer itself without that: a desktop without a choice takes what it finds.
Notice offer(const InstanceRecord& record, const UserPlaces& user) {
    return {.kind = Notice::Kind::mayBeDefault,
            .severity = Notice::Severity::information,
            .subject = shortNameOf(record, user),
            .sentence = "It is offered for opening files or addresses; where you have chosen no "
                        "program for them, the desktop may take it."};
}

void remove(const Entry& entry, const UserPlaces& user, std::vector<Notice>& notices) {
    try {
        registration::remove(entry, user);
    } catch (const std::exception& error) {
        notices.push_back({.kind = Notice::Kind::entryNotRemoved,
                           .subject = entry.file,
                           .sentence = sentence(
                               "Its desktop entry, or what belongs to it, could not be removed: " +
                                   ambrel::utf8::oneLine(entry.file) + ".",
                               error.what())});
    }
}

} // namespace

std::vector<Notice> created(const InstanceRecord& made, const UserPlaces& user) noexcept {
    std::vector<Notice> notices;
    for (const auto& former : registration::findFormer(made, user)) remove(former, user, notices);
    add(made, user,
        {.kind = Notice::Kind::notRegistered,
         .subject = {},
         .sentence = "The desktop does not show it yet."},
        notices);
    const bool isOffered =
        registration::findEntry(made, user) && !registration::offeredTypes(made.config).empty();
    if (isOffered) notices.push_back(offer(made, user));
    return notices;
}

std::vector<Notice> changed(const InstanceRecord& record, const UserPlaces& user) noexcept {
    std::vector<Notice> notices;
    if (!registration::findEntry(record, user)) return notices;
    add(record, user,
        {.kind = Notice::Kind::entryIsOutdated,
         .subject = {},
         .sentence = "The desktop still has it as it was."},
        notices);
    return notices;
}

std::vector<Notice> moved(const std::optional<Entry>& former, const InstanceRecord& record,
                          const UserPlaces& user) noexcept {
    std::vector<Notice> notices;
    if (!former) return notices;
    remove(*former, user, notices);
    add(record, user,
        {.kind = Notice::Kind::notRegistered,
         .subject = {},
         .sentence = "The desktop does not show it in its new place."},
        notices);
    return notices;
}

std::vector<Notice> deleted(const std::optional<Entry>& entry, const UserPlaces& user) noexcept {
    std::vector<Notice> notices;
    if (entry) remove(*entry, user, notices);
    return notices;
}

} // namespace korvane::presence
