#include "korvane/Output/Attempts.h"

#include "Ambrel/Base/Utf8.h"
#include "korvane/Output/Messages.h"
#include "korvane/Output/Remedies.h"

namespace korvane {

int attemptEach(std::size_t count, const Surroundings& surroundings,
                const std::function<void(std::size_t)>& action) {
    int status = 0;
    for (std::size_t number = 0; number < count; ++number) {
        try {
            action(number);
        } catch (const Refusal& error) {
            if (count == 1) throw;
            complain(surroundings, wholeText(error));
            status = 1;
        } catch (const std::exception& error) {
            if (count == 1) throw;
            complain(surroundings, ambrel::utf8::oneLine(error.what()));
            status = 1;
        }
    }
    return status;
}

} // namespace korvane
