#include "Manager/Operations/ApplicationForInstance.h"

#include "Ambrel/Wrapper/WrapperFactory.h"
#include "Manager/Operations/Unadopting.h"

namespace korvane {

ApplicationForInstance::ApplicationForInstance(const std::string& program,
                                               const ambrel::UserPlaces& user,
                                               const ambrel::Environment& environment)
    : user_(user), environment_(environment) {
    folders_.make(ambrel::WrapperFactory::defaultOutputDir(user));
    adopted_ = adopt({.program = program, .folder = {}}, user, environment);
}

ApplicationForInstance::~ApplicationForInstance() {
    if (isKept_ || adopted_.existed) return;
    try {
        unadopt(adopted_.bundle, user_, environment_);
    } catch (const std::exception&) {
        // An application too many harms nobody, and the first failure is the one to tell.
    }
}

void ApplicationForInstance::keep() noexcept {
    isKept_ = true;
    folders_.keep();
}

} // namespace korvane
