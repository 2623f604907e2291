# Completion of korvane for fish.

function __korvane_instances
    korvane list --json 2>/dev/null |
        string replace --filter --regex '^ *"displayName": "([^"\\\\]*)",?$' '$1'
end

function __korvane_is
    # Whether the words so far begin with these.
    set -l words (commandline -opc)
    test (count $words) -gt (count $argv); or return 1
    for i in (seq (count $argv))
        test "$words[$(math $i + 1)]" = "$argv[$i]"; or return 1
    end
end

function __korvane_needs_verb
    test (count (commandline -opc)) -eq 1
end

function __korvane_needs_second
    set -l words (commandline -opc)
    test (count $words) -eq 2; and test "$words[2]" = $argv[1]
end

complete -c korvane -f
complete -c korvane -n __korvane_needs_verb -l version -d 'Show the version'
complete -c korvane -s h -l help -d 'Show help'

for verb in create:'Make an instance' adopt:'Make an application of an installed program' \
    list:'List the instances' show:'Show one instance' open:'Start an instance' \
    run:'Run an instance and wait' logs:'Show what an instance has written' \
    edit:'Change an instance' migrate:'Move the files of an instance to yours' \
    register:'Show an instance on the desktop' unregister:'Take an instance off the desktop' \
    delete:'Delete an instance' apps:'List the applications' \
    inspect:'Show what is known of an application' profile:'Check a profile' \
    icon:'Make an icon file of a picture' help:'Show help'
    set -l parts (string split -m 1 : -- $verb)
    complete -c korvane -n __korvane_needs_verb -a $parts[1] -d $parts[2]
end
complete -c korvane -n '__korvane_needs_second create' -a 'app web file command'
complete -c korvane -n '__korvane_needs_second profile' -a check
complete -c korvane -n '__korvane_needs_second icon' -a lint -d 'Check an icon file'

for verb in show open run logs edit migrate register unregister delete
    complete -c korvane -n "__korvane_is $verb" -a '(__korvane_instances)'
end
for verb in create adopt inspect profile icon
    complete -c korvane -n "__korvane_is $verb" -F
end

set -l create '__korvane_is create'
complete -c korvane -n $create -l home -rF -d 'The data of the instance'
complete -c korvane -n $create -l output -rF -d 'Where the bundle goes'
complete -c korvane -n $create -l bundle-id -x -d 'The identifier of the bundle'
complete -c korvane -n $create -l runner -rF -d 'The runner to put into the bundle'
complete -c korvane -n $create -l replace -d 'Replace the instance of this name'
complete -c korvane -n $create -l strategy -x -d 'How it is isolated' \
    -a 'home-override container-redirect wrapper-identity unsupported'
complete -c korvane -n $create -l arg -x -d 'An argument in place of those for the engine'
complete -c korvane -n $create -l add-arg -x -d 'One more argument'
complete -c korvane -n $create -l env -x -d 'An environment variable'
complete -c korvane -n $create -l working-directory -rF -d 'Where a command runs'
complete -c korvane -n $create -l process-name -x -d 'Start the program by this name'
complete -c korvane -n "$create; or __korvane_is inspect" -l no-profile -d 'Use no profile and no name for the windows'
complete -c korvane -n $create -l no-share-folders -d 'Do not link the folders of the user'
complete -c korvane -n $create -l icon -rF -d 'An image for the icon'
complete -c korvane -n $create -l hide-icon -d 'Show no icon in the Dock'
complete -c korvane -n $create -l label -x -d 'A text on the icon'
complete -c korvane -n $create -l label-color -x -d 'The color of the label'
complete -c korvane -n $create -l label-position -x -a 'bottom center top' -d 'Where the label is'
complete -c korvane -n $create -l plist -x -d 'An entry of Info.plist'
complete -c korvane -n $create -l browser -d 'Offer the instance as a web browser'
complete -c korvane -n $create -l open-with -d 'Offer the instance for opening documents'
complete -c korvane -n $create -l menu-bar -d 'Show an item in the menu bar'
complete -c korvane -n $create -l menu-bar-template -d 'Draw that item as a template image'

for verb in create adopt list show migrate apps inspect profile
    complete -c korvane -n "__korvane_is $verb" -l json -d 'Write JSON'
end
complete -c korvane -n '__korvane_is adopt' -l into -rF -d 'Where the bundle goes'
complete -c korvane -n '__korvane_is list; or __korvane_is apps' -l in -rF -d 'Look in this folder'
complete -c korvane -n '__korvane_is logs' -s f -l follow -d 'Go on as more is written'
complete -c korvane -n '__korvane_is edit' -l set -x -d 'Set a field'
complete -c korvane -n '__korvane_is edit' -l unset -x -d 'Give a field its default' \
    -a 'kind targetAppPath instanceHome strategy extraArgs environment menuBarIcon
        menuBarIconTemplate shareUserFolders url openPath commandPath commandArgs workingDirectory'
complete -c korvane -n '__korvane_is delete' -l data -d 'Delete its home with all data too'
complete -c korvane -n '__korvane_is delete' -s y -l yes -d 'Do not ask'
complete -c korvane -n '__korvane_is delete' -l no-input -d 'Refuse instead of asking'
complete -c korvane -n '__korvane_is icon' -l label -x -d 'A text to draw onto it'
complete -c korvane -n '__korvane_is icon' -l color -x -d 'Its color'
complete -c korvane -n '__korvane_is icon' -l position -x -a 'bottom center top' -d 'Where it is'
complete -c korvane -n '__korvane_is icon' -s o -l output -rF -d 'The icon file to write'
complete -c korvane -n '__korvane_is icon' -l preview -rF -d 'Show its sizes in a PNG picture'
complete -c korvane -n '__korvane_is icon lint' -l json -d 'Write JSON'
complete -c korvane -n '__korvane_is profile' -l signature -x -d 'The environment to compare with'
