#include "korvane/DesktopPresence.h"

#include "Ambrel/Support/Utf8.h"
#include "korvane/Instances.h"
#include "korvane/Messages.h"

namespace korvane::presence {

using ambrel::InstanceRecord;
using registration::Entry;

namespace {

/// A sentence and a reason as one text; some reasons end in a dot.
std::string sentence(const std::string& text, const std::string& reason) {
    return text + " " + reason + (reason.ends_with('.') ? "" : ".");
}

void add(const InstanceRecord& record, const std::string& failure,
         const Surroundings& surroundings) {
    try {
        registration::add(record);
    } catch (const std::exception& error) {
        warn(surroundings, sentence(failure, error.what()) +
                               " Try again with: " + commandLine("register", {nameFor(record)}));
    }
}

void remove(const Entry& entry, const Surroundings& surroundings) {
    try {
        registration::remove(entry);
    } catch (const std::exception& error) {
        warn(surroundings,
             sentence("Its desktop entry, or what belongs to it, could not be removed: " +
                          ambrel::utf8::oneLine(entry.file) + ".",
                      error.what()));
    }
}

} // namespace

void created(const InstanceRecord& made, const std::optional<InstanceRecord>& old,
             const Surroundings& surroundings) noexcept {
    if (old && old->config.bundleId != made.config.bundleId) {
        const auto former = registration::findEntry(*old);
        const auto own = registration::findEntry(made);
        if (former && !(own && own->id == former->id)) remove(*former, surroundings);
    }
    add(made, "The desktop does not show it yet.", surroundings);
}

void changed(const InstanceRecord& record, const Surroundings& surroundings) noexcept {
    if (!registration::findEntry(record)) return;
    add(record, "The desktop still has it as it was.", surroundings);
}

void deleted(const std::optional<Entry>& entry, const Surroundings& surroundings) noexcept {
    if (entry) remove(*entry, surroundings);
}

} // namespace korvane::presence
