#pragma once

namespace korvane {

/// What a person can do about a notice or a refusal. How it is done, by an option or a button, is
/// for the front end to say.
enum class Remedy {
    none,
    // Change the request.
    chooseName,       ///< give the instance another name, or another folder
    chooseFolder,     ///< take what is there away, or choose another folder
    chooseHome,       ///< give the request another home
    chooseIdentifier, ///< give the request another bundle identifier
    chooseRunner,     ///< name the runner's file
    chooseIcon,       ///< give the request an icon
    replace,          ///< allow the request to replace what is there
    goWithoutProfile, ///< mend the profile, or go without it
    // Change something else first.
    changeHome,                ///< give the wanted configuration another home
    changeAddress,             ///< give the instance called `subject` another address
    shareFolders,              ///< let the instance called `subject` share the user's folders
    adoptFirst,                ///< make an application of the program called `subject`
    adoptAgain,                ///< adopt the program again whose application `subject` was
    keepApart,                 ///< close what runs outside the instance called `subject`, or
                               ///< give it an argument that keeps it apart
    createAgain,               ///< make the instance again, in place of this one
    createAgainWithIdentifier, ///< the same under another bundle identifier
    registerAgain,             ///< register the instance called `subject` again
    stopFirst,                 ///< end what runs of the instance called `subject`
    deleteFirst,               ///< delete the `alternatives`, which are instances
    lookAgain,                 ///< make the plan again
    workOutArguments,          ///< let those of the instance called `subject` be worked out anew
    workOutVariables,          ///< the same for its variables
    hideFromDesktop,           ///< take the instance's entry off the desktop
    // Name something else.
    nameByPath,       ///< name one of the `alternatives`, which are paths
    listInstances,    ///< look at the instances; the name of `alternatives` may be meant
    listApplications, ///< look at the applications
    nameSuggested,    ///< the name of `alternatives` is probably meant
    listLeftovers,    ///< look at the homes that no instance has any more
};

} // namespace korvane
