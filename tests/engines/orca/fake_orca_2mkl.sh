#!/bin/sh
# A stand-in for orca_2mkl: "orca_2mkl job -molden" writes
# job.molden.input, a copy of FAKE_MOLDEN when set. Its words are appended
# to 2mkl.seen.
echo "$*" >> 2mkl.seen
[ -n "$FAKE_MOLDEN" ] && cp "$FAKE_MOLDEN" "$1.molden.input"
exit 0
