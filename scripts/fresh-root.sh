#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
# SPDX-License-Identifier: MIT
#
# Proves that a bare Debian 12 is enough: makes one, takes the commit that is checked out there, and
# runs ./run and ./test in it. See usage.
#
# shellcheck disable=SC2317  # some functions are called through step
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

usage() {
    cat <<'USAGE'
scripts/fresh-root.sh [--root DIRECTORY] [COMMAND ARGUMENTS...]

As root, with debootstrap, on a machine whose apt knows Debian 12: makes a root directory with
nothing but what Debian cannot be without, clones HEAD into it and runs there, in this order,
./run and ./test; or COMMAND alone, such as ./run or ./test NAME.

  --root DIRECTORY   make the root there and leave it; go on in it if it is there already.
                     Without, it is made below ${TMPDIR:-/var/tmp} and removed at the end.

Takes 6 GB of disk for all of it. Exit code: 0 if all commands ended so.
USAGE
}

release=bookworm
directory=
while (($# > 0)); do
    case $1 in
        -h | --help) usage; exit 0 ;;
        --root) directory=$(realpath -m "${2?}"); shift 2 ;;
        -*) usage >&2; exit 2 ;;
        *) break ;;
    esac
done
((EUID == 0)) || die "This takes root."
command -v debootstrap >/dev/null || die "This takes debootstrap: apt-get install debootstrap"

if [[ -z $directory ]]; then
    directory=$(mktemp -d "${TMPDIR:-/var/tmp}/fresh-root.XXXXXX")
    # What was mounted is gone by then: it was so in enter's own namespace only.
    trap 'stopTicker; rm -rf --one-file-system "$directory"' EXIT
fi

# Where this machine's apt has Debian from, as lines of a sources.list.
debianSources() {
    # shellcheck disable=SC2016  # for apt to fill in
    apt-get indextargets --format 'deb $(REPO_URI) $(RELEASE) $(COMPONENT)' \
        'Created-By: Packages' 'Origin: Debian' | grep " $release" | sort -u
}

# As this machine's apt goes to the network.
networkSettings() {
    apt-config dump | grep -E '^Acquire::(https?|Check-[A-Za-z-]*)(::[^ ]+)? ' || true
}

# The root itself. step looks at its exit code, so that errexit is off in here.
makeRoot() {
    local mirror proxy=
    mirror=$(debianSources | sed -n "s/^deb \([^ ]*\) $release .*/\1/p" | head -n 1)
    [[ -n $mirror ]] || { echo "This machine's apt knows no $release."; return 1; }
    eval "$(apt-config shell proxy Acquire::http::Proxy)"
    mkdir -p "$directory" && chmod 755 "$directory" && # apt and servers go on as other users
        http_proxy=${http_proxy:-$proxy} unshare --mount \
            debootstrap --variant=minbase "$release" "$directory" "$mirror" &&
        debianSources >"$directory/etc/apt/sources.list" &&
        networkSettings >"$directory/etc/apt/apt.conf.d/90network" &&
        echo '127.0.0.1 localhost' >"$directory/etc/hosts" && # as every installed system has it
        # No package starts its server here.
        install -m 755 <(printf '#!/bin/sh\nexit 101\n') "$directory/usr/sbin/policy-rc.d" &&
        touch "$directory/.made"
}

takeSources() {
    local source=$directory/src
    [[ -d $source ]] || git init -q "$source" || return 1
    git -C "$source" fetch -q --no-tags "file://$root" HEAD &&
        git -C "$source" checkout -q --force --detach FETCH_HEAD &&
        cp -L /etc/resolv.conf "$directory/etc/resolv.conf" || return 1
    # A certificate that this machine's network takes more than the usual ones.
    [[ ! -f ${NODE_EXTRA_CA_CERTS-} ]] ||
        cp -L "$NODE_EXTRA_CA_CERTS" "$directory/etc/extra-ca.pem"
}

# enter COMMAND...: in the root's /src, with namespaces of its own for mounts and processes, so that
# none of either is left when it ends, however it does.
enter() {
    local settings=(HOME=/root TERM="${TERM:-dumb}" LANG=C.UTF-8 PATH=/usr/sbin:/usr/bin:/sbin:/bin)
    local name
    for name in http_proxy https_proxy no_proxy; do
        [[ -z ${!name-} ]] || settings+=("$name=${!name}")
    done
    [[ ! -f $directory/etc/extra-ca.pem ]] || settings+=(NODE_EXTRA_CA_CERTS=/etc/extra-ca.pem)
    # shellcheck disable=SC2016  # for the inner shell
    unshare --mount --pid --fork --kill-child bash -euc '
        root=$0
        mount -t proc proc "$root/proc"
        mount -t devpts -o newinstance,ptmxmode=0666 devpts "$root/dev/pts"
        ln -sf pts/ptmx "$root/dev/ptmx"
        mkdir -p "$root/dev/shm"
        mount -t tmpfs tmpfs "$root/dev/shm"
        exec chroot "$root" env -i -C /src "$@"' "$directory" "${settings[@]}" "$@"
}

# try COMMAND...
try() {
    local started=$SECONDS status=0
    say "        $*"
    enter "$@" || status=$?
    say "$( ((status == 0)) && echo 'ok     ' || echo FAILED) $* in the fresh root," \
        "$((SECONDS - started)) s"
    return "$status"
}

[[ -e $directory/.made ]] || step "fresh root" makeRoot
step "fresh root sources" takeSources
status=0
if (($# > 0)); then
    try "$@" || status=1
else
    try ./run || status=1
    try ./test || status=1
fi
say "$(git -C "$directory/src" log -1 --format='%h %s'): $SECONDS s in all"
exit "$status"
