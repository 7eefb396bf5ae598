#!/usr/bin/env bash
# ovo.exe of a Windows 64-bit build under Wine, in the build's own prefix: help and a
# usage mistake, a channel between two Windows processes (the watcher ended by Ctrl-C),
# text beyond the ANSI code page in words, file names and messages, serial send and
# receive over a pseudo-terminal that Wine maps to COM7, and a script.
#   wine_tool_check.sh BUILD_DIR
set -uo pipefail
export LC_ALL=C.UTF-8 # the words go to Wine as UTF-8
build=$(realpath "$1")
wine=$build/run-under-wine.sh
ovo=$build/bin/ovo.exe
work=$(mktemp -d)
checks=0
failures=0
start=$(date +%s.%N)
eval "$(grep '^export' "$wine")" # the prefix and search path, for the runs without the wrapper
loader=${OVO_WINE_LOADER:-/usr/lib/wine/wine64}
socatPid=
finish() {
    [ -z "$socatPid" ] || kill "$socatPid" 2>/dev/null
    rm -rf "$work"
}
trap finish EXIT

# check WHAT EXPECTED ACTUAL
check() {
    checks=$((checks + 1))
    if [ "$2" != "$3" ]; then
        failures=$((failures + 1))
        printf 'FAILED %s\n  expected: %q\n  got:      %q\n' "$1" "$2" "$3"
    fi
}
# ovo WORDS...: the tool's status, its standard output, then its standard error, without
# the carriage returns of Windows. Through files: Wine's helpers would hold a pipe open.
ovo() {
    "$loader" "$ovo" "$@" >"$work/out" 2>"$work/err"
    echo "$?"
    tr -d '\r' <"$work/out"
    tr -d '\r' <"$work/err"
}
# The wrapper starts a lasting Wine server (and boots the prefix the first time).
"$wine" "$ovo" --version >/dev/null

check "--help" "0 usage: ovo SUBCOMMAND [OPTIONS] [WORDS...]" "$(ovo --help | head -2 | tr '\n' ' ' | sed 's/ $//')"
check "a usage mistake" $'2\novo serial: --port needs device=NAME; see ovo serial --help' "$(ovo serial send 01)"
# Wine's Smart Card side is a stub: the service's code in the tool's one wording.
check "readers without the service" \
    $'1\novo readers: the Smart Card service failed inside; is it running? (SCard error 0x80100001)' "$(ovo readers)"

# One process watches the channel, a second sends to it; Ctrl-C (SIGINT, which Wine turns
# into CTRL_C_EVENT) ends the watch, which logs that it was interrupted, with status 0.
"$loader" "$ovo" channel wine-check --log-level=0 watch >"$work/watch" 2>"$work/watch.log" &
watcher=$!
sleep 1
check "channel send" $'0\nsent 6 bytes with identifier 7' "$(ovo channel wine-check send 7 '00 01 7F 80 FF 0A')"
# The same words send the same bytes as on Linux: UTF-8, whatever the ANSI code page holds.
check "channel send, text beyond the code page" $'0\nsent 9 bytes with identifier 8' \
    "$(ovo channel wine-check send 8 --text '日本€')"
sleep 0.5
kill -INT "$watcher"
for _ in $(seq 50); do kill -0 "$watcher" 2>/dev/null && sleep 0.1; done
kill -9 "$watcher" 2>/dev/null
wait "$watcher"
check "channel watch, ended by Ctrl-C" $'0\n00 01 7F 80 FF 0A\nE6 97 A5 E6 9C AC E2 82 AC\n1' \
    "$(echo $?; tr -d '\r' <"$work/watch"; grep -c "interrupted: the watch of 'wine-check' ends" "$work/watch.log")"

# A file name and a message in UTF-8, both ways through the tool.
printf 'AB' >"$work/日本€"
check "hexdump of a file named beyond the code page" \
    $'0\n00000000  41 42                                           | AB              ' "$(ovo hexdump "Z:$work/日本€")"
check "a message naming it" $'1\novo hexdump: cannot open \'Z:/nowhere/日本€\': No such file or directory' \
    "$(ovo hexdump 'Z:/nowhere/日本€')"

# A pseudo-terminal pair: Wine opens one end as COM7, this script plays the device on the other.
socat -d -d pty,raw,echo=0 pty,raw,echo=0 2>"$work/socat" &
socatPid=$!
for _ in $(seq 50); do [ "$(grep -c 'PTY is' "$work/socat")" -eq 2 ] && break; sleep 0.1; done
mapfile -t ptys < <(sed -n 's/.*PTY is //p' "$work/socat")
"$loader" reg add 'HKLM\Software\Wine\Ports' /v COM7 /d "${ptys[0]}" /f >/dev/null 2>&1
/usr/lib/wine/wineserver64 -k 2>/dev/null # the mapping holds from the next server on
"$wine" "$ovo" --version >/dev/null
port='--port=device=COM7;baud=115200'
timeout 20 head -c 4 "${ptys[1]}" >"$work/device" &
reader=$!
check "serial send" $'0\nsent 4 of 4 bytes' "$(ovo serial "$port" send '02 41 00 03')"
wait "$reader"
check "serial send, what the device got" "02 41 00 03" "$(od -An -tx1 "$work/device" | tr a-f A-F | sed 's/^ //')"
(sleep 1 && printf '\006\000\377' >"${ptys[1]}") &
check "serial recv" $'0\n06 00 FF' "$(ovo serial "$port" --timeout=10000 recv 3)"
check "serial recv, nothing comes" $'1\n(nothing)\novo serial: received 0 of 1 bytes' \
    "$(ovo serial --port "${port#--port=}" --timeout 200 recv 1)"
# The demo: its second process started by CreateProcess, its serial part against the device
# here that answers 02 41 03 with 06; Wine's PC/SC side has no reader.
(timeout 20 head -c 3 "${ptys[1]}" >/dev/null && printf '\006' >"${ptys[1]}") &
check "demo" $'1\ncard: not run, channel: ok, serial: ok' \
    "$(ovo demo "$port" "--log-dir=Z:$work" | grep -E '^[0-9]+$|^card: ')"

# A script: the comment is skipped, two lines run, the fourth fails, the fifth does not run.
printf 'AB' >"$work/bytes"
printf '# a comment\r\nhexdump Z:%s\r\nhexdump "Z:%s"\r\nserial %s recv 0\r\nhexdump Z:%s\r\n' \
    "$work/bytes" "$work/bytes" "$port" "$work/bytes" >"$work/script"
dump="00000000  41 42                                           | AB              "
check "script" "2
$dump
$dump
Z:$work/script:4: ovo serial: the count of recv is a number from 1 to 4294967295, not '0'" "$(ovo script "Z:$work/script")"

"$loader" reg delete 'HKLM\Software\Wine\Ports' /v COM7 /f >/dev/null 2>&1
printf 'ovo.exe under Wine: %d of %d checks passed in %.1f s\n' $((checks - failures)) "$checks" \
    "$(awk "BEGIN { print $(date +%s.%N) - $start }")"
[ "$failures" -eq 0 ]
