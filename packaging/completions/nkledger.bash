# SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
# SPDX-License-Identifier: MIT
#
# bash completion for nkledger; to be installed as share/bash-completion/completions/nkledger

_nkledger() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]}
    local command='' word options
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        case $word in
            -*) ;;
            *) command=$word; break ;;
        esac
    done

    case $previous in
        --label | --port | --listen | --server-name | --prefix) COMPREPLY=(); return ;;
        --trust | --output | --issuer)
            mapfile -t COMPREPLY < <(compgen -f -- "$current")
            return
            ;;
    esac

    options='--json --help'
    case $command in
        '') options+=' --version' ;;
        issue) options+=' --trust --label --output' ;;
        check) options+=' --strict --follow-links' ;;
        publish) options+=' --issuer --trust --follow-links --force' ;;
        couch-push) options+=' --follow-links' ;;
        prune) options+=' --dry-run' ;;
        verify) options+=' --trust' ;;
        serve) options+=' --port' ;;
        nginx-config) options+=' --listen --server-name --prefix' ;;
    esac
    if [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
        return
    fi
    case $command in
        '')
            mapfile -t COMPREPLY < <(compgen -W \
                'keygen issue check publish prune inspect verify diff serve nginx-config couch-push' -- "$current")
            ;;
        check | publish | prune | serve | nginx-config | couch-push)
            mapfile -t COMPREPLY < <(compgen -d -- "$current")
            ;;
        *) mapfile -t COMPREPLY < <(compgen -f -- "$current") ;;
    esac
}

complete -o filenames -F _nkledger nkledger
