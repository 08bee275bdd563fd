#!/bin/sh
# A stand-in for orca_pltvib: "orca_pltvib job.hess ALL" writes one
# trajectory job.hess.vNNN.xyz for each mode number in FAKE_PLTVIB_MODES,
# each a copy of the recorded trajectory FAKE_PLTVIB_XYZ. Its words are
# appended to pltvib.seen.
echo "$*" >> pltvib.seen
for mode in $FAKE_PLTVIB_MODES; do
    cp "$FAKE_PLTVIB_XYZ" "$1.v$(printf %03d "$mode").xyz"
done
exit 0
