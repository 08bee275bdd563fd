#!/bin/sh
# Runs fuzz targets one after the other, each for SECONDS, from a corpus
# seeded with the real files of the source tree. Everything it writes stays
# under BUILD_DIR:
#   seeds/<target>/     the real files the target starts from
#   corpus/<target>/    what the fuzzer keeps (kept between runs)
#   crashes/<target>/   inputs that crashed, broke a check or hung
#   logs/<target>.log   the fuzzer's output
#   fuzz-results.txt    one line a target: executions, seconds, result
# usage: run_fuzzers.sh BUILD_DIR SECONDS TARGET...
set -u
build=$(cd "$1" && pwd)
seconds=$2
shift 2
cd "$(dirname "$0")/../.." || exit 2

# The real files each target starts from.
seeds() {
    case $1 in
    xyz) find tests/data data/library examples \( -name '*.xyz' -o -name '*.xyz_2' -o -name '*.0[0-9][0-9]' \) -type f ;;
    key) find tests/data -name '*.key' -type f; find tests/fuzz/seeds/key -type f ;;
    emphasis) find tests/fuzz/seeds/emphasis -type f ;;
    def) find data/cfgset tests/fuzz/seeds/def -type f ;;
    library) find data/library examples -name '*.xyz' -type f ;;
    point_group) find tests/fuzz/seeds/point_group -type f; find tests/data/lewis examples -name '*.xyz' -type f ;;
    mopac_listing) find tests/data/mopac \( -name '*.out' -o -name '*.lst' \) -type f ;;
    mopac_mgf) find tests/data/mopac -name '*.mgf' -type f ;;
    tinker) find tests/data/tinker -type f ! -name '*.md' ;;
    *) echo "run_fuzzers.sh: no seeds for $1" >&2 ;;
    esac
}

results=$build/fuzz-results.txt
: >"$results"
failed=0
for target in "$@"; do
    program=$build/tests/fuzz/fuzz_$target
    [ -x "$program" ] || { echo "run_fuzzers.sh: $program is not built" >&2; exit 2; }
    rm -rf "$build/seeds/$target"
    mkdir -p "$build/seeds/$target" "$build/corpus/$target" "$build/crashes/$target" "$build/logs"
    n=0
    for f in $(seeds "$target"); do
        n=$((n + 1))
        cp "$f" "$build/seeds/$target/$n-$(basename "$f")"
    done
    log=$build/logs/$target.log
    echo "fuzz_$target: $seconds s from $n seed files"
    start=$(date +%s)
    "$program" -max_total_time="$seconds" -timeout=30 -rss_limit_mb=2560 -print_final_stats=1 \
        -artifact_prefix="$build/crashes/$target/" "$build/corpus/$target" "$build/seeds/$target" >"$log" 2>&1
    status=$?
    took=$(($(date +%s) - start))
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -n 1)
    if [ "$status" -eq 0 ]; then
        result="no crash, no sanitizer report"
    else
        failed=1
        result="FAILED: $(grep -m 1 -E 'ERROR|SUMMARY|check failed|timeout' "$log")"
    fi
    line="fuzz_$target: ${runs:-?} executions in $took s, $result"
    echo "$line" | tee -a "$results"
done
echo "Results in $results"
exit $failed
