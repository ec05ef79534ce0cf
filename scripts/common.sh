# SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
# SPDX-License-Identifier: MIT
# shellcheck shell=bash
#
# What ./run and ./test share; to be sourced. Messages go to stderr, so that stdout belongs to what
# the scripts were called for.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
logs=$root/build/logs
ticker=
mkdir -p "$logs"

say() { printf '%s\n' "$*" >&2; }
die() { say "$@"; exit 1; }

# On a terminal: show the last line of the log of the step that is running, once a second.
startTicker() { # TITLE LOG
    [[ -t 2 ]] || return 0
    (
        while sleep 1; do
            printf '\r\033[K...     %s: %s' "$1" "$(tail -n 1 "$2" | tr -d '\r' | cut -c 1-60)" >&2
        done
    ) &
    ticker=$!
}

stopTicker() {
    [[ -n $ticker ]] || return 0
    kill "$ticker" 2>/dev/null || true
    wait "$ticker" 2>/dev/null || true
    ticker=
    printf '\r\033[K' >&2
}
trap stopTicker EXIT

# step TITLE COMMAND...: one line for one step. The command's output goes to a log of the title's
# name; its end is shown when the command fails.
step() {
    local title=$1 started=$SECONDS status=0 log
    shift
    log=$logs/${title// /-}.log
    : >"$log"
    startTicker "$title" "$log"
    "$@" >"$log" 2>&1 || status=$?
    stopTicker
    if ((status != 0)); then
        say "FAILED  $title (exit code $status). The end of ${log#"$root"/}:"
        tail -n "${stepTail:-40}" "$log" >&2
        return "$status"
    fi
    say "ok      $title, $((SECONDS - started)) s"
}

# The names of one or more classes ("run", "test") of packaging/debian-packages.txt.
listedPackages() {
    local class
    for class in "$@"; do
        sed -n "s/^${class}[[:space:]]\{1,\}\([^[:space:]#]\{1,\}\).*/\1/p" \
            "$root/packaging/debian-packages.txt"
    done
}

# aptInstall NAME...: as root, or through sudo.
aptInstall() {
    local asRoot=()
    if ((EUID != 0)); then
        command -v sudo >/dev/null ||
            { echo "Neither root nor sudo. As root: apt-get install $*"; return 1; }
        asRoot=(sudo)
    fi
    local apt=(env DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=300)
    "${asRoot[@]}" "${apt[@]}" update &&
        "${asRoot[@]}" "${apt[@]}" install -y --no-install-recommends "$@"
}

# ensurePackages CLASS...: install what is missing of the named classes; touches nothing, and needs
# no network, when nothing is. Elsewhere than on Debian the packages are the user's business.
ensurePackages() {
    command -v dpkg-query >/dev/null || return 0
    local names missing
    names=$(listedPackages "$@" | sort)
    # shellcheck disable=SC2086  # one name a word
    missing=$(comm -23 <(echo "$names") <(dpkg-query -W -f '${db:Status-Status} ${Package}\n' \
        $names 2>/dev/null | sed -n 's/^installed //p' | sort -u))
    [[ -n $missing ]] || return 0
    say "        installing $(tr '\n' ' ' <<<"$missing")"
    # shellcheck disable=SC2086
    step "Debian packages" aptInstall $missing
    rm -f "$root"/build/*/.configured
}

# ensureNodeModules DIRECTORY: what its package-lock.json names, installed once.
ensureNodeModules() {
    local directory=$root/$1
    { command -v node && command -v npm; } >/dev/null || ensurePackages node
    cmp -s "$directory"/{package-lock.json,node_modules/.installed-lock.json} && return 0
    step "Node.js packages of $(basename "$1")" \
        npm --prefix "$directory" ci --no-audit --no-fund --ignore-scripts
    cp "$directory"/{package-lock.json,node_modules/.installed-lock.json}
}

# configure PRESET: once; afterwards the build itself notices changed CMake files.
configure() {
    local stamp=$root/build/$1/.configured
    [[ $stamp -nt $root/CMakePresets.json ]] && return 0
    step "configure $1" cmake -S "$root" --preset "$1"
    touch "$stamp"
}

# build PRESET [TARGET...]
build() {
    local preset=$1
    local warning=$root/build/$preset/trust-key-warning.txt
    shift
    step "build $preset" cmake --build "$root/build/$preset" --parallel "$(nproc)" \
        ${1:+--target "$@"}
    [[ ! -f $warning ]] || say "WARNING $(fold -s -w 92 "$warning" | sed '2,$s/^/        /')"
}
