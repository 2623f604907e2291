#include "korvane/Verbs/IconVerb.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Icon/IconComposer.h"
#include "Ambrel/Icon/ImageReader.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Files/ContactSheet.h"
#include "Manager/Files/IconConversion.h"
#include "Manager/Rules/UserText.h"
#include "korvane/CommandLine/EnumText.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/JsonOutput.h"
#include "korvane/Output/Messages.h"

#include <ostream>

namespace korvane {

using ambrel::IconComposer;
using ambrel::IconLabel;
using ambrel::Path;
namespace fileSystem = ambrel::fileSystem;

namespace {

struct IconOptions {
    std::string source;
    std::optional<std::string> label;
    std::optional<std::string> color;
    std::optional<std::string> position;
    std::optional<std::string> output;
    std::optional<std::string> preview;
    bool asJson = false;
};

IconLabel labelFrom(const IconOptions& options) {
    if (!options.label && (options.color || options.position)) {
        throw UsageError("--color and --position want the text of the --label.");
    }
    const auto text = options.label.value_or("");
    requireUtf8(text, "--label");
    return {text, checkedColor(options.color.value_or("FFFFFF")),
            enumFrom<IconLabel::Position>(options.position.value_or("bottom"), "--position")};
}

/// The icon file that `source` and the label make. A picture that is not there, or may not be read,
/// is told as such and not as one without an image.
std::string composed(const Path& source, const IconLabel& label) {
    fileSystem::read(source);
    try {
        return IconComposer::composed(source, label);
    } catch (const IconComposer::ComposeError& error) {
        throw Refusal(ambrel::utf8::oneLine(error.description()));
    }
}

/// What was written, under the name of the option that asked for it.
using Written = std::vector<std::pair<const char*, Path>>;

Written writeAll(const IconOptions& options, const Surroundings& surroundings) {
    const auto label = labelFrom(options);
    const auto source = usablePath(options.source, surroundings.user);
    const auto icon = composed(source, label);
    Written written;
    if (options.output) {
        const auto output = usablePath(*options.output, surroundings.user);
        fileSystem::replace(output, icon);
        written.emplace_back("icon", output);
    }
    if (options.preview) {
        const auto preview = usablePath(*options.preview, surroundings.user);
        // The seven images as they stand in the file.
        const auto sheet = contactSheet(ambrel::imagesIn(icon));
        fileSystem::replace(preview, ambrel::images::encodePng(sheet));
        written.emplace_back("preview", preview);
    }
    if (const auto obstacle = obstacleTo(label)) warn(surroundings, *obstacle);
    return written;
}

int makeIcon(const IconOptions& options, const Surroundings& surroundings) {
    if (!options.output && !options.preview) {
        throw UsageError("Where to? Give --output FILE, --preview FILE or both.");
    }
    const auto written = writeAll(options, surroundings);
    nlohmann::json object;
    for (const auto& [word, file] : written) {
        object[word] = json::text(file);
        if (!options.asJson) surroundings.results << file << '\n';
    }
    if (options.asJson) json::write(object, surroundings.results);
    return 0;
}

} // namespace

Verb iconVerb() {
    return {
        "icon",
        "Make an icon file of a picture, with a label if you like.",
        {"korvane icon photo.jpg --output photo.icns",
         "korvane icon App.icns --label Work --color FFCC00 --position top -o Work.icns",
         "korvane icon App.icns --label Work --preview sheet.png", "korvane icon lint App.icns"},
        [](CLI::App& app, const Surroundings& surroundings) -> Action {
            const auto given = std::make_shared<IconOptions>();
            options::text(app, "SOURCE", given->source, "A picture of any usual format")
                ->required();
            options::text(app, "--label", given->label, "A text to draw onto it");
            options::text(app, "--color", given->color, "Its color (default: FFFFFF)")
                ->type_name("RRGGBB");
            options::choice<IconLabel::Position>(app, "--position", given->position,
                                                 " (default: bottom)");
            options::text(app, "-o,--output", given->output,
                          "The icon file to write, in place of what is there")
                ->type_name("FILE");
            options::text(app, "--preview", given->preview,
                          "Show its seven sizes, on light and on dark, in a PNG picture")
                ->type_name("FILE");
            options::asJson(app, given->asJson);
            return [given, &surroundings](const auto&) { return makeIcon(*given, surroundings); };
        }};
}

} // namespace korvane
