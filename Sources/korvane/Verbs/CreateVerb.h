#pragma once

#include "Ambrel/Instance/InstanceConfig.h"
#include "korvane/CommandLine/Verb.h"

namespace korvane {

/// What the verbs that create an instance have in common: their options, and what is said. A verb
/// adds its summary and examples. `subject` is the help's word for what the kind opens.
Verb createVerb(ambrel::ShortcutKind kind, const std::string& subject,
                const std::string& subjectHelp);

} // namespace korvane
