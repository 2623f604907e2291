#include "korvane/Verbs/DesktopPresence.h"

#include "Ambrel/Base/Utf8.h"
#include "Manager/Rules/InstanceLookup.h"
#include "korvane/Output/Messages.h"

namespace korvane::presence {

using ambrel::InstanceRecord;
using registration::Entry;

namespace {

/// A sentence and a reason as one text; some reasons end in a dot.
std::string sentence(const std::string& text, const std::string& reason) {
    return text + " " + reason + (reason.ends_with('.') ? "" : ".");
}

/// Its name is shorter, but finding out whether it is the only one can fail.
std::string shortNameOf(const InstanceRecord& record, const ambrel::UserPlaces& user) noexcept {
    try {
        return nameFor(record, user);
    } catch (const std::exception&) {
        return record.bundleURL;
    }
}

void add(const InstanceRecord& record, const std::string& failure,
         const Surroundings& surroundings) {
    try {
        registration::add(record, surroundings.user);
    } catch (const std::exception& error) {
        warn(surroundings, sentence(failure, error.what()) + " Try again with: " +
                               commandLine("register", {shortNameOf(record, surroundings.user)}));
    }
}

void remove(const Entry& entry, const Surroundings& surroundings) {
    try {
        registration::remove(entry, surroundings.user);
    } catch (const std::exception& error) {
        warn(surroundings,
             sentence("Its desktop entry, or what belongs to it, could not be removed: " +
                          ambrel::utf8::oneLine(entry.file) + ".",
                      error.what()));
    }
}

} // namespace

void created(const InstanceRecord& made, const Surroundings& surroundings) noexcept {
    for (const auto& former : registration::findFormer(made, surroundings.user))
        remove(former, surroundings);
    add(made, "The desktop does not show it yet.", surroundings);
}

void changed(const InstanceRecord& record, const Surroundings& surroundings) noexcept {
    if (!registration::findEntry(record, surroundings.user)) return;
    add(record, "The desktop still has it as it was.", surroundings);
}

void deleted(const std::optional<Entry>& entry, const Surroundings& surroundings) noexcept {
    if (entry) remove(*entry, surroundings);
}

} // namespace korvane::presence
