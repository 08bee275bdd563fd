#!/bin/sh
# A stand-in for MOPAC that replays a recorded run.
#   fake_mopac.sh job.mop   the 2016 generation: writes job.out and job.mgf
#   fake_mopac.sh           Mopac 6: reads INPUT, writes output and for013
# The files come from FAKE_MOPAC_OUT, FAKE_MOPAC_MGF (the graph file, for013
# under Mopac 6) and FAKE_MOPAC_DENS (dens.dat and spn.dat); any may be unset.
# The deck it was given is kept as deck.seen.
if [ $# -ge 1 ]; then
    job=${1%.*}
    cp "$1" deck.seen
    [ -n "$FAKE_MOPAC_OUT" ] && cp "$FAKE_MOPAC_OUT" "$job.out"
    [ -n "$FAKE_MOPAC_MGF" ] && cp "$FAKE_MOPAC_MGF" "$job.mgf"
else
    cp INPUT deck.seen
    [ -n "$FAKE_MOPAC_OUT" ] && cp "$FAKE_MOPAC_OUT" output
    [ -n "$FAKE_MOPAC_MGF" ] && cp "$FAKE_MOPAC_MGF" for013
    if [ -n "$FAKE_MOPAC_DENS" ]; then
        cp "$FAKE_MOPAC_DENS" dens.dat
        cp "$FAKE_MOPAC_DENS" spn.dat
    fi
fi
exit 0
