#!/bin/sh
# A stand-in for the map programs and for orbview. As a map program it keeps
# copies of the plot files it was given (seen.kew, seen.graph), writes a map
# and names it in pppmap.atl; as orbview it does nothing.
case $(basename "$0") in
    orbview) ;;
    *)
        cp pppmap.KEW seen.kew
        cp graph.dat seen.graph
        echo "map of $(basename "$0")" > fake_map.cube
        printf 'fake_map.cube\nmap of %s\n' "$(basename "$0")" > pppmap.atl ;;
esac
exit 0
