#include "Manager/Desktop/Linux/Categories.h"

#include <algorithm>
#include <array>
#include <vector>

namespace korvane::registration {

namespace {

/// "Audio" and "Video" are main categories too, but only beside "AudioVideo".
constexpr std::array<std::string_view, 13> mainCategories{
    "AudioVideo", "Audio",  "Video",   "Development", "Education", "Game",   "Graphics",
    "Network",    "Office", "Science", "Settings",    "System",    "Utility"};

/// The additional categories of the Desktop Menu Specification, without the reserved ones.
constexpr std::string_view additionalCategories[] = {
    "2DGraphics",
    "3DGraphics",
    "Accessibility",
    "ActionGame",
    "AdventureGame",
    "Adult",
    "Amusement",
    "ArcadeGame",
    "Archiving",
    "Art",
    "ArtificialIntelligence",
    "Astronomy",
    "AudioVideoEditing",
    "Biology",
    "BlocksGame",
    "BoardGame",
    "Building",
    "Calculator",
    "Calendar",
    "CardGame",
    "Chart",
    "Chat",
    "Chemistry",
    "Clock",
    "Compression",
    "ComputerScience",
    "ConsoleOnly",
    "Construction",
    "ContactManagement",
    "DataVisualization",
    "Database",
    "Debugger",
    "DesktopSettings",
    "Dialup",
    "Dictionary",
    "DiscBurning",
    "Documentation",
    "Economy",
    "Electricity",
    "Electronics",
    "Email",
    "Emulator",
    "Engineering",
    "Feed",
    "FileManager",
    "FileTools",
    "FileTransfer",
    "Filesystem",
    "Finance",
    "FlowChart",
    "GTK",
    "GUIDesigner",
    "Geography",
    "Geology",
    "Geoscience",
    "HamRadio",
    "HardwareSettings",
    "History",
    "Humanities",
    "IDE",
    "IRCClient",
    "ImageProcessing",
    "InstantMessaging",
    "Java",
    "KidsGame",
    "Languages",
    "Literature",
    "LogicGame",
    "Maps",
    "Math",
    "MedicalSoftware",
    "Midi",
    "Mixer",
    "Monitor",
    "Motif",
    "Music",
    "News",
    "NumericalAnalysis",
    "OCR",
    "P2P",
    "PDA",
    "PackageManager",
    "ParallelComputing",
    "Photography",
    "Physics",
    "Player",
    "Presentation",
    "Printing",
    "Profiling",
    "ProjectManagement",
    "Publishing",
    "Qt",
    "RasterGraphics",
    "Recorder",
    "RemoteAccess",
    "RevisionControl",
    "Robotics",
    "RolePlaying",
    "Scanning",
    "Security",
    "Sequencer",
    "Simulation",
    "Spirituality",
    "Sports",
    "SportsGame",
    "Spreadsheet",
    "StrategyGame",
    "TV",
    "Telephony",
    "TelephonyTools",
    "TerminalEmulator",
    "TextEditor",
    "TextTools",
    "Translation",
    "Tuner",
    "VectorGraphics",
    "VideoConference",
    "Viewer",
    "WebBrowser",
    "WebDevelopment",
    "WordProcessor",
};

template <class List> bool isAmong(const List& list, std::string_view name) {
    return std::find(std::begin(list), std::end(list), name) != std::end(list);
}

std::vector<std::string_view> parts(std::string_view list) {
    std::vector<std::string_view> names;
    while (!list.empty()) {
        const auto end = list.find(';');
        names.push_back(list.substr(0, end));
        list.remove_prefix(end == std::string_view::npos ? list.size() : end + 1);
    }
    return names;
}

} // namespace

std::string usableCategories(std::string_view list) {
    std::vector<std::string_view> usable;
    for (const auto name : parts(list)) {
        const bool isKnown = isAmong(mainCategories, name) || isAmong(additionalCategories, name);
        if (!isKnown || isAmong(usable, name)) continue;
        usable.push_back(name);
    }
    const bool wantsBoth = isAmong(usable, "Audio") || isAmong(usable, "Video");
    if (wantsBoth && !isAmong(usable, "AudioVideo")) usable.insert(usable.begin(), "AudioVideo");
    const bool hasMain = std::any_of(usable.begin(), usable.end(), [](std::string_view name) {
        return isAmong(mainCategories, name);
    });
    std::string text;
    if (!hasMain) return text;
    for (const auto name : usable) text.append(name).append(";");
    return text;
}

} // namespace korvane::registration
