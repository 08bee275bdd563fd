#!/bin/sh
# A stand-in for the ICONC engine, run as "iconc <iconcinp.kar >iconc.out"
# in the job directory. Its total energy follows a Morse curve of the
# distance between two atoms of the deck:
#   E = -100 + 2 (1 - exp(-1.5 (r - re)))^2  eV
# with the atoms FAKE_ICONC_ATOMS (deck numbers, default "1 2") and re
# FAKE_ICONC_RE (default 2.0 Angstrom). It writes ENERTOT.DAT (three
# heading lines, then the four energies behind 20 columns of text, the
# total last) and a listing with energy levels and net charges. Each energy
# is also added to fake_energies.txt. FAKE_ICONC_ENERTOT=none, short or
# garbage spoils ENERTOT.DAT the way a failed run does.
set -- ${FAKE_ICONC_ATOMS:-1 2}
awk -v a="$1" -v b="$2" -v re="${FAKE_ICONC_RE:-2.0}" -v spoil="${FAKE_ICONC_ENERTOT:-}" '
NR == 1 { n = $1 + 0; next }
{ k = NR - 1; label[k] = substr($0, 1, 4); x[k] = substr($0, 5, 12) + 0; y[k] = substr($0, 17, 12) + 0; z[k] = substr($0, 29, 12) + 0 }
END {
    if (n < 1 || k != n || a > n || b > n) { print "ICONC ERROR: no atoms"; exit 1 }
    r = sqrt((x[a] - x[b]) ^ 2 + (y[a] - y[b]) ^ 2 + (z[a] - z[b]) ^ 2)
    m = 1 - exp(-1.5 * (r - re))
    e = -100 + 2 * m * m
    out = "ENERTOT.DAT"
    if (spoil != "none") {
        print " ICONC ENERGIES (EV)" > out
        print " STABILIZATION   REPULSION   ONE-ELECTRON   TOTAL" > out
        print " -------------------------------------------------" > out
        if (spoil == "garbage") print " TOTAL ENERGY (EV)   ****** NaN overflow" > out
        else if (spoil != "short") printf "%-20s%14.6f%14.6f%14.6f%16.8f\n", " TOTAL ENERGY (EV)", e - 12.5, 12.5, e * 1.1, e > out
    }
    printf "%.8f\n", e >> "fake_energies.txt"
    print " ICONC test engine"
    print " ENERGY LEVELS (eV)"
    printf "%5d%14.5f%10.4f\n", 1, -15.2, 2.0
    printf "%5d%14.5f%10.4f\n", 2, -12.7, 2.0
    printf "%5d%14.5f%10.4f\n", 3, -11.3, 2.0
    printf "%5d%14.5f%10.4f\n", 4, -8.4, 0.0
    printf "%5d%14.5f%10.4f\n", 5, -6.1, 0.0
    printf " SUM OF ONE-ELECTRON ENERGIES = %14.5f\n", e * 1.1
    print ""
    print "ATOM      NET CHG."
    for (i = 1; i <= n; i++) printf "%-10s%10.4f\n", label[i], (i == 1 ? 0.6 : -0.6 / (n - 1))
    print ""
}'
