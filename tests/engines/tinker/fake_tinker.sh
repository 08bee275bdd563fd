#!/bin/sh
# A stand-in for one Tinker program, run under its name (minimize, analyze,
# ...) from the Tinker directory of a test. It keeps the answers it was
# given in answers.<program>, prints the log the real program printed and
# writes the files it wrote, renamed for the job named on the first answer.
prog=$(basename "$0")
data="$FAKE_TINKER_DATA/$prog"
cat > "answers.$prog"
job=$(head -n 1 "answers.$prog" | sed 's/\.[xX][yY][zZ]$//')
if [ -f "$data/ZENTOL.LOG" ]; then cat "$data/ZENTOL.LOG"; fi
for f in "$data"/JOB.*; do
    [ -f "$f" ] || continue
    cp "$f" "$job.${f##*.}"
done
exit 0
