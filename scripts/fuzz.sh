#!/bin/sh
# Runs every fuzz target built in the given directory for the given number of
# seconds each, starting from its seed corpus (copied, so that the checked-in
# seeds stay as they are) with its dictionary when there is one.  Fails on the
# first target that finds a crash, a leak, a sanitizer report or a hang; the
# input that did it is left in build/fuzz/findings/<Name>/.
#   scripts/fuzz.sh BUILD_DIR SECONDS [NAME...]
set -eu
bin=$1
seconds=$2
shift 2
top=$(cd "$(dirname "$0")/.." && pwd)
work=$top/build/fuzz

[ $# -gt 0 ] || set -- $(cd "$top/fuzz" && ls *_fuzz.cpp 2>/dev/null | sed 's/_fuzz\.cpp$//')
for name in "$@"; do
    target=$bin/${name}_fuzz
    corpus=$work/corpus/$name
    findings=$work/findings/$name
    mkdir -p "$corpus" "$findings"
    [ -d "$top/fuzz/corpus/$name" ] && cp -R "$top/fuzz/corpus/$name/." "$corpus/"
    dict=""
    [ -f "$top/fuzz/dict/$name.dict" ] && dict="-dict=$top/fuzz/dict/$name.dict"
    echo "== $name: $seconds s"
    # shellcheck disable=SC2086
    "$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
        -print_final_stats=1 -artifact_prefix="$findings/" $dict "$corpus" 2>"$work/$name.log" \
        || { tail -n 60 "$work/$name.log"; echo "fuzz: $name found a fault; input in $findings" >&2; exit 1; }
    grep -E '^stat::number_of_executed_units|^Done [0-9]+ runs' "$work/$name.log" | tail -n 1
done
