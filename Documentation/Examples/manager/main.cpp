// Makes an instance of a command, lists the instances and deletes the new one again, as a window
// would: by records alone, without a text typed or read.
//
//   manager RUNNER PROGRAM [ARGUMENT]...        RUNNER is the installed korvane-runner
#include <Manager/Operations/Creation.h>
#include <Manager/Operations/Deletion.h>

#include <iostream>

int main(int argc, char** argv) {
    if (argc < 3) return 2;
    const auto user = ambrel::UserPlaces::ofThisProcess();
    const auto environment = ambrel::processEnvironment();
    korvane::CreateRequest request;
    request.name = "Example";
    request.kind = ambrel::ShortcutKind::command;
    request.commandPath = argv[2];
    request.commandArgs.assign(argv + 3, argv + argc);
    request.runner = argv[1];
    try {
        const auto created = korvane::create(request, user, environment);
        for (const auto& notice : created.notices) std::cout << notice.sentence << "\n";
        for (const auto& record : ambrel::InstanceRegistry(user).list()) {
            std::cout << record.config.displayName << ": " << record.bundleURL << "\n";
        }

        // Data that was there before is not ours to delete.
        const auto data = created.homeExisted ? ambrel::UserData::keep : ambrel::UserData::remove;
        const auto plan = korvane::planDeletion(created.record, data, user);
        std::cout << plan.bundleSize.bytes + plan.dataSize.bytes << " bytes would go\n";
        const auto deleted = korvane::perform(plan, user);
        std::cout << (deleted.removedHome ? "deleted" : "deleted, but for its data") << "\n";
        return 0;
    } catch (const korvane::Refusal& refusal) {
        // A window would look at refusal.kind, and offer what refusal.remedy says.
        std::cerr << refusal.sentence() << "\n";
        return 1;
    }
}
