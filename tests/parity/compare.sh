#!/usr/bin/env bash
# Runs every parity scenario of a Linux build natively and of a Windows 64-bit build under
# Wine, each in a scratch directory of its own, and compares the outputs line by line. A
# line that differs fails unless known_differences.txt lists its scenario and label.
#   tests/parity/compare.sh LINUX_BUILD WIN64_BUILD
# Prints each difference, marked "known" or "NEW", and exits 1 when there is a new one.
set -uo pipefail
here=$(cd "$(dirname "$0")" && pwd)
linux=$(cd "$1" && pwd)
windows=$(cd "$2" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# "scenario | label" of every reviewed difference.
known=$(sed -E -n 's/^([a-z_]+) \| ([^|]*[^ |]) +\|.*/\1 | \2/p' "$here/known_differences.txt")

runScenario() { # side, program, runner...
    local dir=$scratch/$1
    rm -rf "$dir" && mkdir -p "$dir/config"
    (cd "$dir" && export XDG_CONFIG_HOME=$dir/config OVO_PARITY_TAG=parity$$ OVO_PARITY_NAME=Value OVO_PARITY_EMPTY= &&
        "${@:3}" "$2")
}

new=0
for program in "$linux"/bin/parity_*; do
    [ -x "$program" ] || { echo "no parity scenarios in $linux/bin"; exit 1; }
    scenario=${program##*/parity_}
    runScenario linux "$program" >"$scratch/$scenario.linux" 2>&1
    linuxStatus=$?
    runScenario windows "$windows/bin/parity_$scenario.exe" "$windows/run-under-wine.sh" >"$scratch/$scenario.out"
    windowsStatus=$?
    tr -d '\r' <"$scratch/$scenario.out" >"$scratch/$scenario.windows"
    if [ $linuxStatus -ne 0 ] || [ $windowsStatus -ne 0 ]; then
        echo "NEW   $scenario ended with $linuxStatus on Linux, $windowsStatus on Windows"
        new=$((new + 1))
    fi
    while IFS=$'\t' read -r mine theirs; do
        label=${mine:-$theirs}
        label=${label%%: *}
        if grep -qxF "$scenario | $label" <<<"$known"; then mark=known; else mark=NEW; new=$((new + 1)); fi
        printf '%-5s %s\n      linux:   %s\n      windows: %s\n' "$mark" "$scenario | $label" "$mine" "$theirs"
    done < <(paste "$scratch/$scenario.linux" "$scratch/$scenario.windows" | awk -F'\t' '$1 != $2')
done
"$windows/run-under-wine.sh" reg delete 'HKCU\Software\ovo-parity' /f >/dev/null 2>&1
echo "parity: $new new difference(s)"
[ "$new" -eq 0 ]
