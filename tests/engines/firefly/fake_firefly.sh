#!/bin/sh
# A stand-in for Firefly: "fake_firefly.sh -i job.inp -o job.lst [-np N]"
# copies FAKE_FIREFLY_LST to the listing and FAKE_FIREFLY_PUN to PUNCH
# (either may be unset), keeps the deck as deck.seen and its words as
# args.seen, and adds a line to runs.seen.
echo "$*" > args.seen
echo run >> runs.seen
in=""
out=""
while [ $# -gt 0 ]; do
    case "$1" in
        -i) in=$2; shift ;;
        -o) out=$2; shift ;;
    esac
    shift
done
[ -n "$in" ] && cp "$in" deck.seen
[ -n "$FAKE_FIREFLY_LST" ] && [ -n "$out" ] && cp "$FAKE_FIREFLY_LST" "$out"
[ -n "$FAKE_FIREFLY_PUN" ] && cp "$FAKE_FIREFLY_PUN" PUNCH
exit 0
