#!/bin/sh
# A stand-in for the ICONC engine, run as "iconc <iconcinp.kar >iconc.out"
# in the job directory. Its total energy follows a Morse curve of the
# distance r between deck atoms 1 and 2:
#   E = -100 + 2 (1 - exp(-1.5 (r - re)))^2  eV,  re = FAKE_ICONC_RE or 2.0
# It writes ENERTOT.DAT (three heading lines, then the four energies behind
# 20 columns of text, the total last; none when FAKE_ICONC_ENERTOT=none)
# and a listing with energy levels and net charges. Each energy is also
# added to fake_energies.txt.
awk -v a=1 -v b=2 -v re="${FAKE_ICONC_RE:-2.0}" -v spoil="${FAKE_ICONC_ENERTOT:-}" '
NR == 1 { n = $1 + 0; next }
{ k = NR - 1; label[k] = substr($0, 1, 4); x[k] = substr($0, 5, 12) + 0; y[k] = substr($0, 17, 12) + 0; z[k] = substr($0, 29, 12) + 0 }
END {
    if (n < 2 || k != n) { print "ICONC ERROR: no atoms"; exit 1 }
    r = sqrt((x[a] - x[b]) ^ 2 + (y[a] - y[b]) ^ 2 + (z[a] - z[b]) ^ 2)
    m = 1 - exp(-1.5 * (r - re))
    e = -100 + 2 * m * m
    out = "ENERTOT.DAT"
    if (spoil != "none") {
        print " ICONC ENERGIES (EV)" > out
        print " STABILIZATION   REPULSION   ONE-ELECTRON   TOTAL" > out
        print " -------------------------------------------------" > out
        printf "%-20s%14.6f%14.6f%14.6f%16.8f\n", " TOTAL ENERGY (EV)", e - 12.5, 12.5, e * 1.1, e > out
    }
    printf "%.8f\n", e >> "fake_energies.txt"
    print " ICONC test engine"
    print " ENERGY LEVELS (eV)"
    split("-15.2 -12.7 -11.3 -8.4 -6.1", level, " ")
    for (i = 1; i <= 5; i++) printf "%5d%14.5f%10.4f\n", i, level[i], (i <= 3 ? 2.0 : 0.0)
    printf " SUM OF ONE-ELECTRON ENERGIES = %14.5f\n", e * 1.1
    print ""
    print "ATOM      NET CHG."
    for (i = 1; i <= n; i++) printf "%-10s%10.4f\n", label[i], (i == 1 ? 0.6 : -0.6 / (n - 1))
    print ""
}'
