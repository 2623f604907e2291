// Turns a command into an application of its own, then lists the applications made so far.
//
//   consumer RUNNER FOLDER NAME PROGRAM [ARGUMENT]...
//
// RUNNER is the installed korvane-runner, FOLDER where the applications lie. Without CMake:
//
//   g++ -std=c++20 main.cpp $(pkg-config --static --cflags --libs ambrel)

#include <Ambrel/Instance/InstanceRegistry.h>
#include <Ambrel/Wrapper/WrapperFactory.h>

#include <exception>
#include <iostream>
#include <string>
#include <vector>

namespace {

ambrel::Path makeCommand(const std::vector<std::string>& arguments,
                         const ambrel::UserPlaces& user) {
    ambrel::WrapperFactory::Request request;
    request.kind = ambrel::ShortcutKind::command;
    request.outputDir = arguments[1];
    request.displayName = arguments[2];
    request.commandPath = arguments[3];
    request.commandArgs.assign(arguments.begin() + 4, arguments.end());
    return ambrel::WrapperFactory(user, arguments[0]).create(request);
}

void printInstances(const ambrel::Path& folder, const ambrel::UserPlaces& user) {
    const ambrel::InstanceRegistry registry(user, std::vector<ambrel::Path>{folder});
    for (const auto& record : registry.list())
        std::cout << record.config.displayName << ": " << record.config.resolvedHome(user) << "\n";
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() < 4) {
        std::cerr << "Usage: consumer RUNNER FOLDER NAME PROGRAM [ARGUMENT]...\n";
        return 2;
    }

    try {
        const auto user = ambrel::UserPlaces::ofThisProcess();
        std::cout << "made " << makeCommand(arguments, user) << "\n";
        printInstances(arguments[1], user);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "consumer: " << error.what() << "\n";
        return 1;
    }
}
