# Completion of the arguments of kesxml for bash.

_kesxml()
{
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} words= i
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        words='check diff edit format help query stats tree version --help --version'
    elif [[ $previous == --xsd || $previous == --html ]]; then
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -f -X "!*.${previous#--}" -- "$current"
            compgen -d -- "$current")
        return
    elif [[ $previous == --color ]]; then
        words='always never auto'
    elif [[ ${COMP_WORDS[1]} == help ]]; then
        words='check diff edit format query stats tree version'
    elif [[ $previous =~ ^--(depth|attribute|max-errors|set-text|set-attribute|remove-attribute|rename)$ ]]
    then
        # A number or a name that only the user knows.
        compopt +o default
        return
    elif [[ $current == -* ]]; then
        for ((i = 1; i < COMP_CWORD; ++i)); do
            # Options end here.
            [[ ${COMP_WORDS[i]} != -- ]] || return
        done
        case ${COMP_WORDS[1]} in
        check) words='--xsd --allow-entities --quiet --max-errors --json --html --color --help' ;;
        format) words='--output --in-place --no-header --lossy --escape-all --color --help' ;;
        diff) words='--allow-entities --color --help' ;;
        edit) words='--set-text --set-attribute --remove-attribute --rename --remove --output --in-place
            --color --help' ;;
        query) words='--count --text --attribute --allow-entities --json --color --help' ;;
        stats) words='--json --color --help' ;;
        tree) words='--depth --allow-entities --color --help' ;;
        version) words='--attribute --color --help' ;;
        esac
    fi
    # Without words, bash offers the names of files.
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
} && complete -o default -F _kesxml kesxml
