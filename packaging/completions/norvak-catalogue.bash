# SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
# SPDX-License-Identifier: MIT
#
# bash completion for norvak-catalogue; to be installed as
# share/bash-completion/completions/norvak-catalogue

_norvak-catalogue() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]} words=''
    case $previous in
        --local | --data)
            mapfile -t COMPREPLY < <(compgen -d -- "$current")
            return
            ;;
        --collection | --screenshot)
            mapfile -t COMPREPLY < <(compgen -f -- "$current")
            return
            ;;
        --view) words='grid list detail search sources collection' ;;
        --theme) words='light dark' ;;
        --server | --couchdb | --size) ;;
        *)
            words='--local --server --couchdb --data --collection --view --theme --size --screenshot
                --measure --help --help-all --version'
            ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}

complete -o filenames -F _norvak-catalogue norvak-catalogue
