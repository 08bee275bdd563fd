#!/bin/sh
# A stand-in for ORCA that replays a recorded run: "orca job.ino" prints
# the listing FAKE_ORCA_LST on standard output and leaves the files the
# engine writes beside the deck, named for the job:
#   FAKE_ORCA_XYZ       job.xyz, the final geometry in the engine's format
#   FAKE_ORCA_PROPERTY  job_property.txt
# Either may be unset. The deck it was given is kept as deck.seen.
job=${1%.*}
cp "$1" deck.seen
[ -n "$FAKE_ORCA_XYZ" ] && cp "$FAKE_ORCA_XYZ" "$job.xyz"
[ -n "$FAKE_ORCA_PROPERTY" ] && cp "$FAKE_ORCA_PROPERTY" "${job}_property.txt"
[ -n "$FAKE_ORCA_LST" ] && cat "$FAKE_ORCA_LST"
exit 0
