#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
# SPDX-License-Identifier: MIT
#
# fuzz.sh SECONDS [NAME]: builds the fuzz targets and runs each, or those whose name matches, for so
# long. They go on from the inputs that earlier runs found worth keeping. To be called by ./test.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

seconds=$1
filter=${2-}
built=$root/build/fuzz/tests/fuzz
found=$root/build/fuzz/found

targetNames() {
    local source
    for source in "$root"/tests/fuzz/fuzz_*.cpp; do
        basename "$source" .cpp | sed 's/^fuzz_//'
    done | grep -E -e "$filter" || true
}

# fuzz NAME: one target on one core.
fuzz() {
    local name=$1 corpus=$root/build/fuzz/corpus/$1
    mkdir -p "$corpus" "$found"
    step "fuzz $name" "$built/fuzz_$name" -max_total_time="$seconds" -timeout=20 \
        -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="$found/$name-" \
        "$corpus" "$built/corpus/$name"
}

# What a run's log says of itself: how many inputs, and the one that failed.
closingLines() { # NAME
    local log=$root/build/logs/fuzz-$1.log
    sed -n "s/^stat::number_of_executed_units: */        $1: inputs tried: /p" "$log"
    sed -n "s|^.*Test unit written to |        $1: fails with |p" "$log"
}

mapfile -t names < <(targetNames)
((${#names[@]} > 0)) || die "No fuzz target matches '$filter'."
ensurePackages run fuzz
configure fuzz
build fuzz nkpm_fuzzers

status=0
for name in "${names[@]}"; do
    fuzz "$name" || status=1
    closingLines "$name"
done
exit "$status"
