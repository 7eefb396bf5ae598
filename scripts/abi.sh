#!/usr/bin/env bash
# The exported interface of libovosystem.so (its C++ classes and functions and its C
# interface, with the types of the public headers) against the baseline kept in
# abi/libovosystem.abi:
#   scripts/abi.sh check [LIBRARY]      fails on an incompatible change (a removed or changed
#                                       function, a type whose size or layout changed) unless
#                                       the SONAME's major number changed with it; additions
#                                       pass, and are listed; the standard library's template
#                                       code that the build exports is no interface
#                                       (abi/suppressions.txt)
#   scripts/abi.sh baseline [LIBRARY]   records the library as the new baseline: run it for
#                                       each release, and after an intended break with the
#                                       new major number
# LIBRARY is a build with debug information, by default build/linux/src/libovosystem.so
# (configured as the test command's linux suite and built first).
set -uo pipefail
source "$(dirname "$0")/lib/debian.sh"
action=${1:-}
baseline=$ovoRoot/abi/libovosystem.abi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

library=${2:-}
if [ -z "$library" ]; then
    build=$ovoRoot/build/linux
    [ -f "$build/build.ninja" ] ||
        cmake -S "$ovoRoot" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DOVO_BUILD_BENCHMARKS=ON >/dev/null ||
        exit 1
    cmake --build "$build" --target ovosystem >/dev/null || exit 1
    library=$build/src/libovosystem.so
fi
generated=$(dirname "$(realpath "$library")")/../include # ovo/version.h of that build

# The ABI of a library as text, its source paths relative to the tree (paths differ between
# checkouts; the interface does not).
describe() {
    abidw --headers-dir "$ovoRoot/include" --headers-dir "$generated" --drop-private-types --exported-interfaces-only \
        --no-corpus-path --no-comp-dir-path --no-show-locs --no-parameter-names --type-id-style hash "$1" |
        sed "s|path='$ovoRoot/|path='|"
}
soname() { sed -n "s/^<abi-corpus .*soname='\([^']*\)'.*/\1/p" "$1"; }

case $action in
baseline)
    describe "$library" >"$baseline" || exit 1
    echo "baseline of $(soname "$baseline") recorded in abi/libovosystem.abi"
    ;;
check)
    describe "$library" >"$work/current.abi" || exit 1
    abidiff --no-show-locs --suppressions "$ovoRoot/abi/suppressions.txt" "$baseline" "$work/current.abi" >"$work/report"
    status=$?
    cat "$work/report"
    # abidiff's status is a bit set: 1 an error, 2 a usage error, 4 a change, 8 an
    # incompatible one. It counts a changed type as a change only, so any change of an
    # existing function or variable counts here as incompatible too.
    if [ $((status & 3)) -ne 0 ]; then
        echo "abidiff failed ($status)"
        exit 1
    fi
    broken=$(grep -E '^(Functions|Variables|Function symbols|Variable symbols) changes summary' "$work/report" |
        grep -E '[1-9][0-9]* (Removed|Changed)')
    if [ -z "$broken" ] && [ $((status & 8)) -eq 0 ]; then
        echo "ABI of $(soname "$work/current.abi"): compatible with the baseline"
        exit 0
    fi
    if [ "$(soname "$work/current.abi")" != "$(soname "$baseline")" ]; then
        echo "ABI: incompatible, with a new SONAME $(soname "$work/current.abi") (baseline $(soname "$baseline"));" \
            "record the new baseline with scripts/abi.sh baseline"
        exit 0
    fi
    echo "ABI: incompatible with the baseline, and the SONAME is still $(soname "$baseline"): raise the major version"
    exit 1
    ;;
*)
    echo "usage: scripts/abi.sh check|baseline [LIBRARY]"
    exit 2
    ;;
esac
