// Calls the library from a process of its own, for tests that need another user, another root
// folder or another locale. Prints one line for each result.
#include "Ambrel/Application/AppCatalog.h"
#include "Ambrel/Instance/InstanceRegistry.h"
#include "Ambrel/Platform/MainBundle.h"
#include "Ambrel/Platform/UserPlaces.h"
#include "Ambrel/Wrapper/WrapperFactory.h"

#include <iostream>
#include <string>

using namespace ambrel;

int main(int argc, char** argv) {
    const auto user = UserPlaces::ofThisProcess();
    const std::string verb = argc > 1 ? argv[1] : "";
    if (verb == "home") {
        std::cout << user.home << "\n";
    } else if (verb == "expand" && argc == 3) {
        std::cout << user.expandingTilde(argv[2]) << "\n";
    } else if (verb == "fragment" && argc == 3) {
        std::cout << WrapperFactory::idFragment(argv[2]) << "\n";
    } else if (verb == "scan") {
        for (const auto& app : AppCatalog::scan(AppCatalog::defaultSearchDirs(user))) {
            std::cout << app.url << " " << app.bundleId << "\n";
        }
    } else if (verb == "instances") {
        for (const auto& record : InstanceRegistry(user).list()) std::cout << record.id() << "\n";
    } else if (verb == "bundle") {
        const auto bundle = MainBundle::current();
        std::cout << bundle.executableURL.value_or("absent") << "\n"
                  << bundle.resourceURL.value_or("absent") << "\n"
                  << bundle.dataURL.value_or("absent") << "\n";
    } else {
        return 2;
    }
    return 0;
}
