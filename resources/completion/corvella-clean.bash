# bash completion for corvella-clean: options, browser names (some have a space), and categories.
_corvella_clean()
{
    local cur prev words cword
    _init_completion || return

    local options="--list --preview --keep --allow-home-access --help --version"
    local categories="cookies databases flash silverlight cache history favicons webpage forms
        downloads websitePrefs searchEngines"
    local browsers=(Firefox "Google Chrome" Chromium Opera Brave Vivaldi "Microsoft Edge" "Google Chrome Beta"
        "Google Chrome Dev" "Microsoft Edge Beta" "Microsoft Edge Dev" LibreWolf Waterfox Floorp)

    if [[ $prev == --layout ]]; then
        COMPREPLY=($(compgen -W "Linux macOS" -- "$cur"))
        return
    fi
    [[ $prev == --keep ]] && return # a site: the user's to type

    # What is already on the line: past "--", options end; the first word that is no option is
    # the browser, and the rest are categories.
    local i browser="" options_ended=""
    for ((i = 1; i < cword; i++)); do
        case ${words[i]} in
            --) options_ended=1 ;;
            --list | --help | -h | --version) [[ $options_ended ]] || return ;;
            --keep) [[ $options_ended ]] || ((i++)) ;;
            --layout) [[ $options_ended ]] || { ((i++)); [[ ${words[i]} == macOS ]] && browsers=(Safari "${browsers[@]}"); } ;;
            -*) [[ $options_ended ]] && browser=${words[i]} ;;
            *) browser=${words[i]}; break ;;
        esac
    done

    if [[ -z $browser ]]; then
        if [[ $cur == -* && -z $options_ended ]]; then
            COMPREPLY=($(compgen -W "$options" -- "$cur"))
            return
        fi
        # Browser names as one word each, quoted for the shell; what is typed may be quoted or
        # have its spaces escaped ("Microsoft\ Edge\ B").
        local name typed=${cur#[\"\']}
        typed=${typed//\\ / }
        COMPREPLY=()
        for name in "${browsers[@]}"; do
            [[ $name == "$typed"* ]] && COMPREPLY+=("$(printf '%q' "$name")")
        done
        return
    fi
    COMPREPLY=($(compgen -W "$categories" -- "$cur"))
} &&
    complete -F _corvella_clean corvella-clean
