#include "Manager/Operations/Stopping.h"

#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Rules/InstanceLookup.h"
#include "Manager/Rules/Running.h"

#include <algorithm>

namespace korvane {

using ambrel::InstanceRecord;
using ambrel::ProcessHandle;
using ambrel::UserPlaces;

namespace {

/// The processes of one instance on their way out.
class Ending {
public:
    Ending(const InstanceRecord& record, const UserPlaces& user) : record_(record), user_(user) {}

    /// Returns what still runs at `deadline`.
    RunningProcesses run(ProcessHandle::Clock::time_point deadline) {
        auto found = look();
        while (!found.none()) {
            askAll(found.heads);
            if (ProcessHandle::Clock::now() >= deadline) break;
            // One that ends may leave others behind, which nobody has asked yet.
            if (!asked_.empty()) ProcessHandle::waitForAny(asked_, deadline);
            std::erase_if(asked_, [](const auto& process) { return process.hasEnded(); });
            found = look();
        }
        return found;
    }

private:
    RunningProcesses look() const { return Running::now(user_).of(record_); }

    bool isAsked(int id) const {
        return std::ranges::find(asked_, id, &ProcessHandle::id) != asked_.end();
    }

    void askAll(const std::vector<int>& ids) {
        std::vector<ProcessHandle> held;
        for (const int id : ids) {
            if (isAsked(id)) continue;
            if (auto process = ProcessHandle::open(id)) held.push_back(std::move(*process));
        }
        if (held.empty()) return;
        // Only now is it sure whose the ids are: those that are held mean nobody else any more.
        const auto heads = look().heads;
        for (auto& process : held) {
            if (std::ranges::find(heads, process.id()) == heads.end()) continue;
            process.requestEnd();
            asked_.push_back(std::move(process));
        }
    }

    const InstanceRecord& record_;
    const UserPlaces& user_;
    std::vector<ProcessHandle> asked_; ///< and not ended yet
};

} // namespace

Stopped stop(const InstanceRecord& record, const UserPlaces& user,
             std::chrono::milliseconds limit) {
    if (Running::now(user).of(record).none()) return Stopped::wasNotRunning;
    const auto left = Ending(record, user).run(ProcessHandle::Clock::now() + limit);
    if (left.none()) return Stopped::ended;
    throw Refusal(
        Refusal::Kind::notStopped, nameFor(record, user),
        "The instance " + inQuotes(record.config.displayName) +
            " was asked to end, and is still running: " + spokenProcesses(left.ids, left.programs) +
            ". It may be asking you something, or not heed being asked.");
}

} // namespace korvane
