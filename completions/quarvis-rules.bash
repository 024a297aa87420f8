# Completion of quarvis-rules for bash.

_quarvis_rules() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    COMPREPLY=()

    # A value is a number, so there is nothing to offer. Bash splits --count=5 into three words.
    case $previous in
        = | -[cClosVw] | --count | --confidence | --lift | --order | --support | --conviction | \
            --window)
            return
            ;;
    esac

    if [[ $current != -* ]]; then
        compopt -o default # The names of files.
        return
    fi
    mapfile -t COMPREPLY < <(compgen -W '-\\? -c -C -l -o -s -V -v -w --help --count= --confidence=
        --lift= --order= --support= --conviction= --verbose --window=' -- "$current")
    if [[ ${#COMPREPLY[@]} == 1 && ${COMPREPLY[0]} == *= ]]; then
        compopt -o nospace
    fi
}

complete -F _quarvis_rules quarvis-rules
