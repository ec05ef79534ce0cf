#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
# SPDX-License-Identifier: MIT
#
# tour.sh NKPM NKLEDGER CATALOGUE DIRECTORY: shows nkpm at work on a catalogue, first as a directory,
# then published and served over HTTP. What it makes goes below DIRECTORY, from which an earlier tour
# is cleared away first, but for the keys and the publication.
set -euo pipefail
nkpm=$1 nkledger=$2 catalogue=$3 directory=$4
keys=$(cd "$(dirname "${BASH_SOURCE[0]}")/../keys" && pwd)
project=$directory/project
package=scene-reading-corner
sources=(--local "$catalogue" --data "$directory/data")
server=

bold='' plain=''
if [[ -t 1 && -z ${NO_COLOR:-} && ${TERM:-dumb} != dumb ]]; then
    bold=$'\e[1m' plain=$'\e[0m'
fi

stopServer() {
    [[ -n $server ]] || return 0
    kill "$server" 2>/dev/null || true
    wait "$server" 2>/dev/null || true
    server=
}
trap stopServer EXIT

say() { # TEXT COMMAND
    printf '\n%s\n%s$ %s%s\n' "$1" "$bold" "$2" "$plain"
}

# Says what comes, shows the command without the options that are the same each time, runs it.
show() { # TEXT NKPM-ARGUMENTS...
    say "$1" "nkpm ${*:2}"
    "$nkpm" "${sources[@]}" "${@:2}"
}

# An issuer for this machine, signed with the development key, which every default build trusts.
makeIssuer() {
    [[ -f keys/tour-issuer.json ]] && return 0
    rm -rf keys
    mkdir keys
    "$nkledger" keygen keys/tour >/dev/null
    "$nkledger" issue keys/tour.pem --trust "$keys/development-trust-private.pem" \
        --label "Tour of the example catalogue" >/dev/null
}

# Sets url to the address of the publication once it is served.
startServer() {
    "$nkledger" serve public >serve.log &
    server=$!
    while [[ ! -s serve.log ]]; do
        kill -0 "$server" 2>/dev/null || return 1
        sleep 0.05
    done
    url=$(head -n 1 serve.log)
}

mkdir -p "$directory"
cd "$directory"
rm -rf project project-from-server data-from-server serve.log

echo "A tour of the example catalogue, the content of a small scene editor:"
echo "$catalogue"

show "What it holds:" sources
show "Everything of one type, with what it costs:" list furniture:seating --field price --sort price
show "Packages aren't tagged, they are linked to words that are linked to each other. Searching for
wood finds what is made of oak and walnut:" list furniture --search wood
show "The categories that its furniture falls into, in your language:" keywords furniture --categories
show "One package:" show armchair-nora
show "Install a scene with all that it requires, three links deep:" install "$package" --into project

makeIssuer
say "The same catalogue for users elsewhere: signed, and written for any web server." \
    "nkledger publish $(basename "$catalogue") public --issuer keys/tour-private.pem"
"$nkledger" publish "$catalogue" public --issuer keys/tour-private.pem
startServer
say "Served on this machine, at $url" "nkledger serve public"
sources=(--server "$url" --data "$directory/data-from-server")
show "A client that knows only this address:" list furniture:seating --sort price
show "A preview, through the file proxy, before anything is installed:" \
    file armchair-nora armchair-nora.svg --output project/preview.svg
show "Install the scene over HTTP, each file checked against its signed digest:" \
    install "$package" --into project-from-server
stopServer
diff -r --exclude=preview.svg project project-from-server
cmp project/preview.svg project/furniture/seating/armchairs/armchair-nora/armchair-nora.svg

asked() { # PATTERN: how often the server was
    grep -c "$1" serve.log || true
}
printf '\nBoth installs are the same. The server was asked for %s files and %s times for the ledger;
where that had not changed it said so (%s times).\n' "$(asked '^GET .*/[0-9a-f]\{56\} 200$')" \
    "$(asked '^GET /api/v1/ledger ')" "$(asked '^GET /api/v1/ledger 304$')"

cat <<END

The files lie in
  $project

Go on with
  ./run list --help
  ./run keywords --search light
  ./run install scene-terrace --into my-project
  LANG=de_DE.UTF-8 ./run list lighting

./run starts $nkpm on this
catalogue; name another one with --local DIR or --server URL. docs/publishing.md tells how to publish
your own.
END
