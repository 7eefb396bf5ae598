#!/usr/bin/env bash
# Runs parity scenarios of a Linux build natively, each in a scratch directory of its own,
# and compares the outputs line by line with the Windows side: a Windows 64-bit build's
# scenarios run under Wine, or the reviewed record of their output beside this script
# (windows/SCENARIO.txt), which a run under Wine refreshes. A line that differs fails
# unless known_differences.txt lists its scenario and label.
#   tests/parity/compare.sh LINUX_BUILD WIN64_BUILD              every scenario, under Wine
#   tests/parity/compare.sh LINUX_BUILD --recorded SCENARIO...   against the record (CTest)
# Prints each difference, marked "known" or "NEW", and exits 1 when there is a new one.
set -uo pipefail
here=$(cd "$(dirname "$0")" && pwd)
linux=$(cd "$1" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
if [ "$2" = --recorded ]; then
    windows=
    scenarios=("${@:3}")
else
    windows=$(cd "$2" && pwd)
    scenarios=()
    for program in "$linux"/bin/parity_*; do
        [ -x "$program" ] || { echo "no parity scenarios in $linux/bin"; exit 1; }
        scenarios+=("${program##*/parity_}")
    done
fi

# "scenario | label" of every reviewed difference.
known=$(sed -E -n 's/^([a-z_]+) \| ([^|]*[^ |]) +\|.*/\1 | \2/p' "$here/known_differences.txt")

# The tag that names the run's objects has one length, so that a name of the longest
# length prints alike in every run.
runScenario() { # side, program, runner...
    local dir=$scratch/$1
    rm -rf "$dir" && mkdir -p "$dir/config"
    (cd "$dir" && export XDG_CONFIG_HOME=$dir/config OVO_PARITY_TAG=parity$(printf %07d $$) OVO_PARITY_NAME=Value OVO_PARITY_EMPTY= &&
        "${@:3}" "$2")
}

# The Windows output of a scenario: the record, or a run under Wine that refreshes it.
windowsOutput() { # scenario
    local record=$here/windows/$1.txt
    if [ -z "$windows" ]; then
        cat "$record"
        return
    fi
    runScenario windows "$windows/bin/parity_$1.exe" "$windows/run-under-wine.sh" | tr -d '\r' >"$scratch/$1.wine"
    local status=${PIPESTATUS[0]}
    if [ "$status" -eq 0 ] && ! cmp -s "$scratch/$1.wine" "$record"; then
        cp "$scratch/$1.wine" "$record"
        echo "the record of $1 changed: review tests/parity/windows/$1.txt and commit it" >&2
    fi
    cat "$scratch/$1.wine"
    return "$status"
}

new=0
for scenario in "${scenarios[@]}"; do
    runScenario linux "$linux/bin/parity_$scenario" >"$scratch/$scenario.linux" 2>&1
    linuxStatus=$?
    windowsOutput "$scenario" >"$scratch/$scenario.windows"
    windowsStatus=$?
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
[ -z "$windows" ] || "$windows/run-under-wine.sh" reg delete 'HKCU\Software\ovo-parity' /f >/dev/null 2>&1
echo "parity: $new new difference(s)"
[ "$new" -eq 0 ]
