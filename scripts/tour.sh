#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
# SPDX-License-Identifier: MIT
#
# tour.sh NKPM CATALOGUE DIRECTORY: shows nkpm at work on a catalogue. What it makes goes below
# DIRECTORY, from which an earlier tour is cleared away first.
set -euo pipefail
nkpm=$1 catalogue=$2 directory=$3
project=$directory/project
package=scene-reading-corner

bold='' plain=''
if [[ -t 1 && -z ${NO_COLOR:-} && ${TERM:-dumb} != dumb ]]; then
    bold=$'\e[1m' plain=$'\e[0m'
fi

# Says what comes, shows the command without the options that are the same each time, runs it.
show() { # TEXT NKPM-ARGUMENTS...
    printf '\n%s\n%s$ nkpm %s%s\n' "$1" "$bold" "${*:2}" "$plain"
    "$nkpm" --local "$catalogue" --data "$directory/data" "${@:2}"
}

rm -rf "$project"
mkdir -p "$directory"
cd "$directory"

echo "A tour of the example catalogue, the content of a small scene editor:"
echo "$catalogue"

show "What it holds:" sources
show "Everything of one type, with what it costs:" list furniture:seating --field price --sort price
show "Packages aren't tagged, they are linked to words that are linked to each other. Searching for
wood finds what is made of oak and walnut:" list furniture --search wood
show "The categories that its furniture falls into, in your language:" keywords furniture --categories
show "One package:" show armchair-nora
show "Install a scene with all that it requires, three links deep:" install "$package" --into project

cat <<END

The files lie in
  $project

Go on with
  ./run list --help
  ./run keywords --search light
  ./run install scene-terrace --into my-project
  LANG=de_DE.UTF-8 ./run list lighting

./run starts $nkpm on this
catalogue; name another one with --local DIR.
END
