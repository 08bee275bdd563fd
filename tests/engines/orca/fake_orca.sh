#!/bin/sh
# A stand-in for ORCA: "orca job.ino" prints the listing FAKE_ORCA_LST and
# leaves FAKE_ORCA_XYZ as job.xyz (the final geometry) and FAKE_ORCA_PROPERTY
# as job_property.txt beside the deck (either may be unset); the deck it was
# given is kept as deck.seen.
job=${1%.*}
cp "$1" deck.seen
[ -n "$FAKE_ORCA_XYZ" ] && cp "$FAKE_ORCA_XYZ" "$job.xyz"
[ -n "$FAKE_ORCA_PROPERTY" ] && cp "$FAKE_ORCA_PROPERTY" "${job}_property.txt"
[ -n "$FAKE_ORCA_LST" ] && cat "$FAKE_ORCA_LST"
exit 0
