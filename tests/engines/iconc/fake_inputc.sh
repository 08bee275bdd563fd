#!/bin/sh
# A stand-in for ICONC's inputc ("inputc <inputc.inp >inputc.lst"): checks
# the deck line by line as the real program reads it, keeps every deck in
# fake_decks.txt (each followed by "----") and writes iconcinp.kar: the atom
# count, then a line an atom, label (4 columns) and coordinates. A bad deck
# or a missing table is reported on the listing and leaves no iconcinp.kar.
deck=$(cat)
printf '%s\n----\n' "$deck" >> fake_decks.txt
for table in atomdef.dat voi.dat Foi.dat; do
    if [ ! -f "$table" ]; then
        echo "INPUTC ERROR: $table missing"
        exit 1
    fi
done
printf '%s\n' "$deck" | awk '
function fail(why) { print "INPUTC ERROR: line " NR ": " why; bad = 1; exit 1 }
NR == 1 { if ($0 != "1") fail("expected 1"); next }
NR == 2 { if ($0 != "ICONCINP") fail("expected ICONCINP"); next }
NR == 3 { if ($0 != "PTEST") fail("expected PTEST"); next }
NR == 4 { if ($0 !~ /^ *[0-9]+$/ || length($0) != 4) fail("atom count not I4"); n = $0 + 0; next }
NR == 5 { if ($0 !~ /^ *-?[0-9]+$/ || length($0) > 3) fail("charge not I3"); next }
NR <= 5 + n {
    if (length($0) < 1 || length($0) > 4 || $0 ~ /[^A-Z0-9 ]/) fail("label not A4 in capitals")
    label[NR - 5] = $0; next
}
NR <= 5 + 2 * n {
    if (length($0) != 36) fail("coordinates not 3F12.5")
    for (c = 0; c < 3; c++) {
        f = substr($0, 12 * c + 1, 12)
        if (f !~ /^ *-?[0-9]*\.[0-9][0-9][0-9][0-9][0-9]$/) fail("coordinate not F12.5")
    }
    xyz[NR - 5 - n] = $0; next
}
{ rest[++r] = $0 }
END {
    if (bad) exit 1
    if (NR < 5 + 2 * n + 1) { print "INPUTC ERROR: deck ends early"; exit 1 }
    if (rest[1] == "N") {
        if (r != 1) { print "INPUTC ERROR: lines after N"; exit 1 }
    } else {
        if (rest[1] != "Y" || rest[2] != "1" || rest[3] != "B" || rest[4] != "B") {
            print "INPUTC ERROR: iteration answers not Y 1 B B"; exit 1
        }
        m = rest[5] + 0
        if (rest[5] !~ /^[1-3]$/ || r != 5 + m + 2 || rest[6 + m] != "Y" || rest[7 + m] != "9") {
            print "INPUTC ERROR: iterated metals not count, labels, Y, 9"; exit 1
        }
    }
    print n > "iconcinp.kar"
    for (i = 1; i <= n; i++) printf "%-4s%s\n", label[i], xyz[i] > "iconcinp.kar"
    print "INPUTC OK " n " atoms"
}'
