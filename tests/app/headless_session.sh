#!/bin/sh
# A whole headless session through the program itself: start on a molecule
# given by its path, zoom, close; the transcript and the files it leaves.
set -eu
zentol=$1
data=$2
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
export ZENTOL_ROOT="$tmp/root" ZENTOL_WORK="$tmp/work"
mkdir -p "$tmp/job dir"
cp "$data/water.xyz" "$tmp/job dir/water.xyz"
printf 'menu 40039\nkey R\n# the window is closed\nclose\n' > "$tmp/script"
"$zentol" --headless --script "$tmp/script" "$tmp/job dir/water.xyz" > "$tmp/out"
fail() { echo "FAIL: $*"; cat "$tmp/out"; exit 1; }
grep -q '^window 800x600 "Zentol 2026  Version 6.1.7"$' "$tmp/out" || fail "window line"
grep -q '^status 2: 1:water$' "$tmp/out" || fail "job name in field 2"
grep -q '^status 4:    3$' "$tmp/out" || fail "atom count"
grep -q '^status 10: Display Idle$' "$tmp/out" || fail "idle mode"
grep -q '^window closed$' "$tmp/out" || fail "exit sequence"
[ "$(head -1 "$tmp/job dir/water.geo")" = " Zentol water" ] || fail "log"
# A script line that is not understood is refused with its number.
printf 'menu 40039\njump\n' > "$tmp/bad"
if "$zentol" --headless --script "$tmp/bad" > "$tmp/out" 2> "$tmp/err"; then fail "bad script accepted"; fi
grep -q 'script line 2' "$tmp/err" || fail "bad line named"
# The options a user tries first; nothing is opened or written by them.
cd "$tmp"
"$zentol" --help > "$tmp/out" || fail "--help"
grep -q '^Usage: zentol' "$tmp/out" || fail "--help text"
"$zentol" --version > "$tmp/out" || fail "--version"
grep -q '^zentol [0-9][0-9.]*$' "$tmp/out" || fail "--version text"
if "$zentol" --frobnicate > "$tmp/out" 2> "$tmp/err"; then fail "unknown option accepted"; fi
grep -q 'unknown option --frobnicate' "$tmp/err" || fail "unknown option named"
[ ! -e "$tmp/--help.geo" ] && [ ! -e "$tmp/work/scratch/--help.xyz" ] || fail "an option became a job"
# An example opens as a copy in the scratch folder; the shipped file is not touched.
printf 'close\n' > "$tmp/script"
"$zentol" --headless --script "$tmp/script" --example benzene > "$tmp/out" || fail "--example"
[ -f "$tmp/work/scratch/benzene.xyz" ] || fail "example copied into scratch"
grep -q '^status 2: 1:benzene$' "$tmp/out" || fail "example opened"
echo "headless session: ok"
