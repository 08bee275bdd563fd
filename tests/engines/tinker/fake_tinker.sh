#!/bin/sh
# A stand-in for one Tinker 26.2 program, run under its name (minimize,
# analyze.x, ...), replaying $FAKE_TINKER_DATA/<program> or the failure named
# by $FAKE_TINKER_CASE_<program>: its log, ZENTOL.ERR to standard error, EXIT
# as exit code, its files JOB.* renamed for the job. As Tinker does, it opens
# the coordinate file as named and the key under that name less its
# extension; writes base.xyz, or _2, _3 ... when taken; restarts DYNAMIC and
# ANNEAL from base.dyn, appending to the archive; asks ANALYZE for atoms
# after types holding A, P or C; ends a run short of answers with Fortran's
# "End of file". Answers go to answers.<program>; each run past its
# questions adds "<program> <file>[ restarting]" to tinker.runs.
prog=$(basename "$0")
prog=${prog%.x}
eval "case_dir=\${FAKE_TINKER_CASE_$prog:-$prog}"
data="$FAKE_TINKER_DATA/$case_dir"
answers="answers.$prog"
cat > "$answers"

answer() { sed -n "${1}p" "$answers"; }
have() { [ "$(wc -l < "$answers")" -ge "$1" ]; }
# Out of answers at line $1 of source file $2, after the question $3.
short() {
    sed -n '1,15p' "$FAKE_TINKER_DATA/minimize/ZENTOL.LOG"
    printf ' Enter Cartesian Coordinate File Name :  \n%b' "$3"
    echo "At line $1 of file $2 (unit = 5, file = 'stdin')" >&2
    printf 'Fortran runtime error: End of file\n\nError termination. Backtrace:\n#0  0x7ff4180218c2 in ???\n' >&2
    exit 2
}
# The next free version of a name: the name itself, then name_2, name_3 ...
version() {
    i=2 v=$1
    while [ -f "$v" ]; do v="$1_$i" i=$((i + 1)); done
    echo "$v"
}

xyz=$(answer 1)
[ -f "$xyz" ] || [ ! -f "$xyz.xyz" ] || xyz="$xyz.xyz"
[ -n "$xyz" ] && [ -f "$xyz" ] || short 50 getcart.f
base=${xyz%.*}
[ -n "$base" ] || base=$xyz
[ -f "$base.key" ] || short 120 getprm.f '\n Enter Potential Parameter File Name :  \n'

restart=""
case $prog in
    minimize|optimize) have 2 || short 130 "$prog.f" ;;
    analyze)
        have 2 || short 110 analyze.f
        case $(answer 2 | tr 'a-z' 'A-Z') in
            *A*|*P*|*C*) have 3 || short 142 analyze.f ;;
        esac ;;
    dynamic)
        have 5 || short 200 mdinit.f
        need=5
        case $(answer 5) in 2|3) need=6 ;; 4) need=7 ;; esac
        have $need || short 290 dynamic.f
        [ -f "$base.dyn" ] && restart=yes ;;
    anneal)
        have 8 || short 150 anneal.f
        [ -f "$base.dyn" ] && restart=yes ;;
    vibrate) have 2 || short 300 vibrate.f ;;
    spacefill)
        need=3
        case $(answer 2) in 2|3) need=4 ;; esac
        have $need || short 90 spacefill.f ;;
esac

echo "$prog $xyz${restart:+ restarting}" >> tinker.runs
log="$data/ZENTOL.LOG"
if [ -f "$log" ] && [ -n "$restart" ]; then
    awk -v f="$base.dyn" 'NR == 17 { print " Restarting Molecular Dynamics Using :  " f } { print }' "$log"
elif [ -f "$log" ]; then
    cat "$log"
fi
for f in "$data"/JOB.*; do
    [ -f "$f" ] || continue
    case ${f##*.} in
        arc) if [ -n "$restart" ]; then cat "$f" >> "$base.arc"; else cp "$f" "$base.arc"; fi ;;
        dyn) cp "$f" "$base.dyn" ;;
        xyz_2) cp "$f" "$(version "$base.xyz")" ;;
        *) cp "$f" "$(version "$base.${f##*.}")" ;;
    esac
done
[ -f "$data/ZENTOL.ERR" ] && cat "$data/ZENTOL.ERR" >&2
[ -f "$data/EXIT" ] && exit "$(cat "$data/EXIT")"
exit 0
