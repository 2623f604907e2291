#include "Manager/Base/Refusal.h"

namespace korvane {

Refusal::Refusal(Kind itsKind, std::string itsSubject, const std::string& sentence,
                 Remedy itsRemedy, std::vector<std::string> itsAlternatives)
    : std::runtime_error(sentence), kind(itsKind), subject(std::move(itsSubject)),
      remedy(itsRemedy), alternatives(std::move(itsAlternatives)) {}

} // namespace korvane
