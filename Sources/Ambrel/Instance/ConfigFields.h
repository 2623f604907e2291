#pragma once

#include "Ambrel/Instance/InstanceConfig.h"

#include <initializer_list>

namespace ambrel {

/// Whether a configuration can do without the field.
enum class Presence { required, optional };

/// What a field tells of its instance. What shows a configuration goes part by part.
enum class ConfigPart {
    name,     ///< what the instance is called
    identity, ///< what it is
    subject,  ///< what it opens; one field for each kind
    command,  ///< how its command is run
    start,    ///< how its application is started, and where its data lies
    sharing,  ///< what it shares with the user
    desktop,  ///< what it offers to the desktop
    look,     ///< how it looks
};

/// Kinds of instances.
class KindSet {
public:
    constexpr KindSet(std::initializer_list<ShortcutKind> kinds) {
        for (const auto kind : kinds) bits_ |= bit(kind);
    }
    constexpr bool contains(ShortcutKind kind) const { return (bits_ & bit(kind)) != 0; }

private:
    static constexpr unsigned bit(ShortcutKind kind) { return 1U << static_cast<unsigned>(kind); }

    unsigned bits_ = 0;
};

/// How an edit changes a field.
struct FieldEdit {
    enum class Form {
        value,           ///< as its type wants it: JSON, the word for a choice, or any text
        path,            ///< a path that is stored absolute, a leading tilde kept
        expandedPath,    ///< a path that is stored absolute, its tilde expanded
        byCreatingAgain, ///< not at all: the bundle carries the field elsewhere too
    };

    Form form;
};

/// One field of InstanceConfig.
template <class T> struct ConfigField {
    const char* key; ///< in the file, and for an edit
    T InstanceConfig::*member;
    Presence presence;
    KindSet kinds; ///< for which the field means something; the others carry it unused
    ConfigPart part;
    FieldEdit edit;
    const char* description; ///< one short line, without a full stop
};

template <class T>
ConfigField(const char*, T InstanceConfig::*, Presence, KindSet, ConfigPart, FieldEdit, const char*)
    -> ConfigField<T>;

namespace fields {

inline constexpr KindSet app{ShortcutKind::app};
inline constexpr KindSet web{ShortcutKind::web};
inline constexpr KindSet file{ShortcutKind::file};
inline constexpr KindSet command{ShortcutKind::command};
inline constexpr KindSet appOrWeb{ShortcutKind::app, ShortcutKind::web};
inline constexpr KindSet appOrCommand{ShortcutKind::app, ShortcutKind::command};
inline constexpr KindSet allButFile{ShortcutKind::app, ShortcutKind::web, ShortcutKind::command};
inline constexpr KindSet every{ShortcutKind::app, ShortcutKind::web, ShortcutKind::file,
                               ShortcutKind::command};

inline constexpr FieldEdit asValue{FieldEdit::Form::value};
inline constexpr FieldEdit asPath{FieldEdit::Form::path};
inline constexpr FieldEdit asExpandedPath{FieldEdit::Form::expandedPath};
inline constexpr FieldEdit byCreatingAgain{FieldEdit::Form::byCreatingAgain};

} // namespace fields

/// Calls `visit` with the ConfigField of every field, in the order of decoding. An optional one has
/// the default of its member. Calls and no array: a program keeps only what its visitors look at.
template <class Visitor> constexpr void forEachField(Visitor&& visit) {
    using namespace fields;
    using C = InstanceConfig;
    using enum Presence;
    using Part = ConfigPart;

    visit(ConfigField{"displayName", &C::displayName, required, every, Part::name, byCreatingAgain,
                      "What the instance is called"});
    visit(ConfigField{"bundleId", &C::bundleId, required, every, Part::identity, byCreatingAgain,
                      "The identifier of the bundle"});
    visit(ConfigField{"kind", &C::kind, optional, every, Part::identity, byCreatingAgain,
                      "What sort of thing the instance opens"});
    // The launcher takes this path as it stands, without a tilde's meaning.
    visit(ConfigField{"targetAppPath", &C::targetAppPath, optional, app, Part::subject,
                      asExpandedPath, "The bundle of the application"});
    visit(ConfigField{"instanceHome", &C::instanceHome, required, allButFile, Part::start, asPath,
                      "The folder for the data of the instance"});
    visit(ConfigField{"strategy", &C::strategy, optional, app, Part::start, asValue,
                      "How the application is isolated"});
    visit(ConfigField{"extraArgs", &C::extraArgs, optional, app, Part::start, asValue,
                      "Arguments of the application"});
    visit(ConfigField{"environment", &C::environment, optional, appOrCommand, Part::start, asValue,
                      "Variables for the environment"});
    visit(ConfigField{"infoPlistOverrides", &C::infoPlistOverrides, optional, every, Part::start,
                      byCreatingAgain, "Entries of the Info.plist of the bundle"});
    visit(ConfigField{"registerAsBrowser", &C::registerAsBrowser, optional, app, Part::desktop,
                      byCreatingAgain, "The instance is offered as a web browser"});
    visit(ConfigField{"openWithPassthrough", &C::openWithPassthrough, optional, app, Part::desktop,
                      byCreatingAgain, "The instance is offered for opening documents"});
    visit(ConfigField{"iconLabel", &C::iconLabel, optional, every, Part::look, asValue,
                      "The label that is drawn on the icon"});
    visit(ConfigField{"menuBarIcon", &C::menuBarIcon, optional, allButFile, Part::desktop, asValue,
                      "The instance shows a status item"});
    visit(ConfigField{"menuBarIconTemplate", &C::menuBarIconTemplate, optional, allButFile,
                      Part::desktop, asValue, "That item is drawn as a template image"});
    // True by default, unlike the others: files written before the key existed share the folders.
    visit(ConfigField{"shareUserFolders", &C::shareUserFolders, optional, appOrWeb, Part::sharing,
                      asValue, "Downloads, Documents and Desktop are the user's own"});
    visit(ConfigField{"url", &C::url, optional, web, Part::subject, asValue,
                      "The address of the site"});
    visit(ConfigField{"openPath", &C::openPath, optional, file, Part::subject, asPath,
                      "The document or folder to open"});
    visit(ConfigField{"commandPath", &C::commandPath, optional, command, Part::subject, asPath,
                      "The program to run"});
    visit(ConfigField{"commandArgs", &C::commandArgs, optional, command, Part::command, asValue,
                      "Arguments of the program"});
    visit(ConfigField{"workingDirectory", &C::workingDirectory, optional, command, Part::command,
                      asPath, "The folder in which the program runs"});
}

} // namespace ambrel
