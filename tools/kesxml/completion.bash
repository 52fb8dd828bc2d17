# Completion of the arguments of kesxml for bash.

_kesxml()
{
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} words= i
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        words='check format query stats tree version --help --version'
    elif [[ $previous == --xsd || $previous == --html ]]; then
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -f -X "!*.${previous#--}" -- "$current"
            compgen -d -- "$current")
        return
    elif [[ $previous == --depth || $previous == --attribute ]]; then
        # A number or a name that only the user knows.
        compopt +o default
        return
    elif [[ $current == -* ]]; then
        for ((i = 1; i < COMP_CWORD; ++i)); do
            # Options end here.
            [[ ${COMP_WORDS[i]} != -- ]] || return
        done
        case ${COMP_WORDS[1]} in
        check) words='--xsd --allow-entities --json --html --help' ;;
        format) words='--output --in-place --no-header --lossy --escape-all --help' ;;
        query) words='--count --allow-entities --json --help' ;;
        stats) words='--json --help' ;;
        tree) words='--depth --allow-entities --help' ;;
        version) words='--attribute --help' ;;
        esac
    fi
    # Without words, bash offers the names of files.
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
} && complete -o default -F _kesxml kesxml
