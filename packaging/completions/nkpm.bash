# SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
# SPDX-License-Identifier: MIT
#
# bash completion for nkpm; to be installed as share/bash-completion/completions/nkpm

_nkpm() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]}
    local command='' action='' behind=0 word options takesValue=false
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        if $takesValue; then
            takesValue=false
            continue
        fi
        case $word in
            --local | --server | --couchdb | --data | --into | --output) takesValue=true ;;
            --keyword | --search | --field | --sort | --max-size) takesValue=true ;;
            -*) ;;
            *)
                case $((behind++)) in
                    0) command=$word ;;
                    1) [[ $command != store ]] || action=$word ;;
                    2) [[ $command != collection ]] || action=$word ;;
                esac
                ;;
        esac
    done

    case $previous in
        --local | --data | --into)
            mapfile -t COMPREPLY < <(compgen -d -- "$current")
            return
            ;;
        --output)
            mapfile -t COMPREPLY < <(compgen -f -- "$current")
            return
            ;;
        --server | --couchdb | --keyword | --search | --field | --sort | --max-size)
            COMPREPLY=()
            return
            ;;
    esac

    options='--local --server --couchdb --data --json --verbose --help'
    case $command$action in
        '') options+=' --version' ;;
        list) options+=' --keyword --search --full --field --sort' ;;
        keywords) options+=' --search --categories' ;;
        file) options+=' --output' ;;
        install | collectioninstall) options+=' --into --link --replace' ;;
        storeclean) options+=' --max-size' ;;
    esac
    if [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
    elif [[ -z $command ]]; then
        mapfile -t COMPREPLY < <(compgen -W \
            'list show file keywords install collection sources store' -- "$current")
    elif [[ $command == collection && $behind == 1 ]]; then
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
    elif [[ $command == collection && $behind == 2 ]]; then
        mapfile -t COMPREPLY < <(compgen -W 'add remove list install' -- "$current")
    elif [[ $command == store && $behind == 1 ]]; then
        mapfile -t COMPREPLY < <(compgen -W 'usage verify repair clean' -- "$current")
    else
        COMPREPLY=()
    fi
}

complete -o filenames -F _nkpm nkpm
