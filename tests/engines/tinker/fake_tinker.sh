#!/bin/sh
# A stand-in for one Tinker 26.2 program, run under its name (minimize,
# analyze.x, ...) from the Tinker directory of a test. It keeps the answers
# it was given in answers.<program> and replays a real run: the log Tinker
# printed and the files it wrote (JOB.* in the data folder, renamed for the
# job). It behaves as the real programs do where a front end can go wrong:
#   - the coordinate file is opened as named, case and all; without it the
#     question comes again until the input runs out;
#   - every file is named after the name it was told, less its extension,
#     and the key file is looked for under exactly that name;
#   - a new structure goes to base.xyz, or base.xyz_2, _3 ... when taken;
#   - DYNAMIC and ANNEAL restart from base.dyn when it is there, and append
#     to the archive;
#   - ANALYZE asks for an atom list after analysis types holding A, P or C;
#   - DYNAMIC offers modes 3 and 4 only with a periodic box in the key file;
#   - an answer that is not there ends the run with Fortran's "End of file".
# The data folder of a program is $FAKE_TINKER_DATA/<program>, or the folder
# named by $FAKE_TINKER_CASE_<program> (a recorded failure); a ZENTOL.ERR
# there goes to standard error and a file EXIT gives the exit code. Each run
# that got past its questions adds "<program> <file>[ restarting]" to
# tinker.runs.
prog=$(basename "$0")
prog=${prog%.x}
eval "case_dir=\${FAKE_TINKER_CASE_$prog:-$prog}"
data="$FAKE_TINKER_DATA/$case_dir"
answers="answers.$prog"
cat > "$answers"

answer() { sed -n "${1}p" "$answers"; }
have() { [ "$(wc -l < "$answers")" -ge "$1" ]; }
banner() { sed -n '1,15p' "$FAKE_TINKER_DATA/minimize/ZENTOL.LOG"; }
prompt() { printf ' Enter Cartesian Coordinate File Name :  \n'; }
end_of_file() {
    echo "At line $1 of file $2 (unit = 5, file = 'stdin')" >&2
    echo "Fortran runtime error: End of file" >&2
    echo "" >&2
    echo "Error termination. Backtrace:" >&2
    echo "#0  0x7ff4180218c2 in ???" >&2
    exit 2
}
# The next free version of a name: the name itself, then name_2, name_3 ...
version() {
    if [ ! -f "$1" ]; then echo "$1"; return; fi
    i=2
    while [ -f "$1_$i" ]; do i=$((i + 1)); done
    echo "$1_$i"
}

xyz=$(answer 1)
[ -f "$xyz" ] || [ ! -f "$xyz.xyz" ] || xyz="$xyz.xyz"
if [ -z "$xyz" ] || [ ! -f "$xyz" ]; then
    banner; prompt; prompt; prompt
    end_of_file 50 getcart.f
fi
base=${xyz%.*}
[ -n "$base" ] || base=$xyz
if [ ! -f "$base.key" ]; then
    banner; prompt
    printf '\n Enter Potential Parameter File Name :  \n'
    end_of_file 120 getprm.f
fi

log="$data/ZENTOL.LOG"
restart=""
case $prog in
    minimize|optimize) have 2 || { banner; prompt; end_of_file 130 "$prog.f"; } ;;
    analyze)
        have 2 || { banner; prompt; end_of_file 110 analyze.f; }
        case $(answer 2 | tr 'a-z' 'A-Z') in
            *A*|*P*|*C*)
                have 3 || {
                    banner; prompt
                    printf ' Enter the Desired Analysis Types [G,P,E,A,L,D,M,V,C] :  \n'
                    printf ' List Atoms for which Output is Desired [ALL] :  \n    >  \n'
                    end_of_file 142 analyze.f
                } ;;
        esac ;;
    dynamic)
        have 5 || { banner; prompt; end_of_file 200 mdinit.f; }
        mode=$(answer 5)
        if [ "$mode" = 3 ] || [ "$mode" = 4 ]; then
            grep -qi '^ *a-axis' "$base.key" || {
                banner; prompt
                printf ' Available Simulation Control Modes :\n\n    (1) Constant Total Energy Value (E)\n'
                printf '    (2) Constant Temperature via Thermostat (T)\n\n'
                printf ' Enter the Number of the Desired Choice [1] :  \n'
                end_of_file 285 dynamic.f
            }
        fi
        need=5
        case $mode in 2|3) need=6 ;; 4) need=7 ;; esac
        have $need || { banner; prompt; end_of_file 290 dynamic.f; }
        [ -f "$base.dyn" ] && restart=yes ;;
    anneal)
        have 8 || { banner; prompt; end_of_file 150 anneal.f; }
        [ -f "$base.dyn" ] && restart=yes ;;
    vibrate) have 2 || { banner; prompt; end_of_file 300 vibrate.f; } ;;
    spacefill)
        need=3
        case $(answer 2) in 2|3) need=4 ;; esac
        have $need || { banner; prompt; end_of_file 90 spacefill.f; } ;;
esac

echo "$prog $xyz${restart:+ restarting}" >> tinker.runs
if [ -f "$log" ]; then
    if [ -n "$restart" ]; then
        awk -v f="$base.dyn" 'NR == 17 { print " Restarting Molecular Dynamics Using :  " f } { print }' "$log"
    else
        cat "$log"
    fi
fi
for f in "$data"/JOB.*; do
    [ -f "$f" ] || continue
    ext=${f##*.}
    case $ext in
        arc) if [ -n "$restart" ]; then cat "$f" >> "$base.arc"; else cp "$f" "$base.arc"; fi ;;
        dyn) cp "$f" "$base.dyn" ;;
        xyz_2) cp "$f" "$(version "$base.xyz")" ;;
        *) cp "$f" "$(version "$base.$ext")" ;;
    esac
done
[ -f "$data/ZENTOL.ERR" ] && cat "$data/ZENTOL.ERR" >&2
[ -f "$data/EXIT" ] && exit "$(cat "$data/EXIT")"
exit 0
