#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
# SPDX-License-Identifier: MIT
#
# clazy.sh PROGRAM BUILD_DIR FOLDER...: all sources below the folders that the build compiles,
# through clazy's checks of level 1. Fails if there is any warning about a file of ours.
set -euo pipefail

program=$1 build=$2
shift 2
folders=$(IFS='|'; echo "$*")
mapfile -t sources < <(sed -n 's/^ *"file": "\(.*\)",\{0,1\}$/\1/p' "$build/compile_commands.json" |
    grep -E "^$PWD/($folders)/.*\.cpp$" | sort -u)
log=$build/clazy.log
printf '%s\0' "${sources[@]}" |
    xargs -0 -n 4 -P "$(nproc)" "$program" -p "$build" -checks=level1 \
        -header-filter="$PWD/($folders)/.*" >"$log" 2>&1 || { cat "$log"; exit 1; }
if grep -E "^$PWD/($folders)/.*(warning|error):" "$log" | sort -u; then
    exit 1
fi
echo "${#sources[@]} files, nothing found"
