# Completion of korvane for bash.

# The names of the instances, one on a line; those with escapes in JSON are left to be typed.
_korvane_instances() {
    korvane list --json 2>/dev/null |
        sed -n 's/^ *"displayName": "\([^"\\]*\)",\{0,1\}$/\1/p'
}

# Takes the arguments of compgen, one match on a line.
_korvane_offer() {
    mapfile -t COMPREPLY < <(compgen "$@")
}

# Offers the lines of standard input that begin with the word. The shell quotes them.
_korvane_offer_lines() {
    local word=$1 line
    while IFS= read -r line; do
        [[ $line == "$word"* ]] && COMPREPLY+=("$line")
    done
}

_korvane() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
    local verb=${COMP_WORDS[1]} options='' first=2
    COMPREPLY=()

    if ((COMP_CWORD == 1)); then
        _korvane_offer -W "create adopt list show open run logs edit migrate register unregister
            delete apps inspect profile icon help --help --version" -- "$word"
        return
    fi
    case $verb in
    create | profile)
        if ((COMP_CWORD == 2)); then
            local kinds="app web file command"
            [[ $verb == profile ]] && kinds=check
            _korvane_offer -W "$kinds --help" -- "$word"
            return
        fi
        first=3
        ;;
    esac

    case $before in
    --home | --output | --working-directory | --in | --into)
        local kind=-d
        [[ $verb == icon ]] && kind=-f
        _korvane_offer "$kind" -- "$word"
        return
        ;;
    --icon | --runner | --preview | -o)
        _korvane_offer -f -- "$word"
        return
        ;;
    --strategy)
        _korvane_offer -W "home-override container-redirect wrapper-identity unsupported" \
            -- "$word"
        return
        ;;
    --label-position | --position)
        _korvane_offer -W "bottom center top" -- "$word"
        return
        ;;
    --set | --unset)
        local fields="kind targetAppPath instanceHome strategy extraArgs environment menuBarIcon
            menuBarIconTemplate shareUserFolders url openPath commandPath commandArgs
            workingDirectory"
        _korvane_offer -W "$fields" -- "$word"
        return
        ;;
    --bundle-id | --process-name | --arg | --add-arg | --env | --plist | --label | --label-color | --color | --signature)
        return
        ;;
    esac

    case $verb in
    create) options="--home --output --bundle-id --runner --replace --strategy --arg --add-arg --env
            --process-name --no-profile --working-directory --no-share-folders --icon --hide-icon
            --label --label-color --label-position --plist --browser --open-with --menu-bar
            --menu-bar-template --json" ;;
    adopt) options="--into --json" ;;
    list | apps) options="--in --json" ;;
    show | migrate) options="--json" ;;
    inspect) options="--no-profile --json" ;;
    logs) options="--follow" ;;
    edit) options="--set --unset" ;;
    delete) options="--data --yes --no-input" ;;
    profile) options="--signature --json" ;;
    icon)
        options="--label --color --position --output --preview"
        [[ ${COMP_WORDS[2]} == lint ]] && options=--json
        ((COMP_CWORD == 2)) && [[ -n $word && lint == "$word"* ]] && COMPREPLY=(lint)
        ;;
    esac
    if [[ $word == -* ]]; then
        _korvane_offer -W "$options --help" -- "$word"
        return
    fi

    case $verb in
    show | open | run | logs | edit | migrate | register | unregister | delete)
        ((COMP_CWORD == first)) && _korvane_offer_lines "$word" < <(_korvane_instances)
        ;;
    esac
    # A bundle, document or program by its path.
    ((${#COMPREPLY[@]})) || _korvane_offer -f -- "$word"
}

complete -o filenames -F _korvane korvane
