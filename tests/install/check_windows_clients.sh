#!/usr/bin/env bash
# C clients without a C++ run-time, beside the unpacked ZIP's DLLs on its clean Wine prefix.
#   mingw: examples/device_client.c by the MinGW-w64 C compiler: two processes on a channel,
#          a request over a COM port that Wine maps to a pseudo-terminal, their daily log
#   msvc:  msvc_client.c for the MSVC ABI by clang and lld-link with the ZIP's ovosystem.lib
#   check_windows_clients.sh mingw|msvc UNPACKED_ZIP WORK_DIR C_COMPILER OBJDUMP WINE WINESERVER
set -euo pipefail
mode=$1 root=$2 work=$3 cc=$4 objdump=$5 wine=$6 wineserver=$7
here=$(cd "$(dirname "$0")" && pwd)
export WINEPREFIX=$work/wineprefix WINEDEBUG=-all
unset WINEPATH
run=$work/$mode
rm -rf "$run"
mkdir -p "$run"
socatPid=
trap '[ -z "$socatPid" ] || kill $socatPid; "$wineserver" -k 2>/dev/null || true' EXIT

# The DLLs a program imports, in one line.
imports() { "$objdump" -p "$1" | sed -n 's/^\s*DLL Name: //p' | tr 'A-Z' 'a-z' | sort | xargs; }
# program WORDS...: its standard output, run in its directory (through a file: Wine's
# helpers would hold a pipe open).
program() {
    local out=$run/$1.${2:-}.out
    (cd "$run" && "$wine" "$root/bin/$1.exe" "${@:2}" >"$out" 2>/dev/null) && tr -d '\r' <"$out"
}
expect() { # WHAT EXPECTED ACTUAL
    [ "$2" = "$3" ] || { printf 'FAILED %s\n  expected: %s\n  got:      %s\n' "$1" "$2" "$3"; exit 1; }
    echo "$1: $3"
}

if [ "$mode" = msvc ]; then
    for tool in clang lld-link llvm-dlltool; do
        command -v $tool >/dev/null || { echo "skipped: the MSVC-ABI client needs $tool"; exit 77; }
    done
    printf 'LIBRARY kernel32.dll\nEXPORTS\n    ExitProcess\n    GetStdHandle\n    WriteFile\n' >"$run/kernel32.def"
    llvm-dlltool -m i386:x86-64 -d "$run/kernel32.def" -l "$run/kernel32.lib"
    clang --target=x86_64-pc-windows-msvc -std=c89 -pedantic-errors -Wall -Wextra -Werror -ffreestanding \
        -nostdlibinc -fno-builtin -O1 -I"$root/include" -c "$here/msvc_client.c" -o "$run/msvc_client.obj"
    lld-link /nologo /entry:start /subsystem:console /nodefaultlib /out:"$root/bin/msvc_client.exe" \
        "$run/msvc_client.obj" "$root/lib/ovosystem.lib" "$run/kernel32.lib"
    expect "imports" "kernel32.dll ovosystem.dll" "$(imports "$root/bin/msvc_client.exe")"
    expect "run" "library $(sed -n 's/^Version: //p' "$root"/lib/pkgconfig/ovosystem.pc), channel: ok, log: ok, \
failure: can't open 'COM99'. error = 2" "$(program msvc_client)"
    expect "log" "[msvc            ] from the MSVC client" "$(cut -c14- "$run"/*-msvc-client.log)"
    exit 0
fi

"$cc" -std=c89 -pedantic-errors -Wall -Wextra -Werror -I"$root/include" "$here/../../examples/device_client.c" \
    -L"$root/lib" -lovosystem -o "$root/bin/device_client.exe"
expect "imports" "kernel32.dll msvcrt.dll ovosystem.dll" "$(imports "$root/bin/device_client.exe")"

program device_client answer wine-c-client >/dev/null &
answerer=$!
expect "ask" "answer: time to answer" "$(program device_client ask wine-c-client)"
wait $answerer
expect "answer" "question: what time is it?" "$(tr -d '\r' <"$run/device_client.answer.out")"

# A pseudo-terminal pair: Wine opens one end as COM7, this script plays the device on the other.
socat -d -d pty,raw,echo=0 pty,raw,echo=0 2>"$run/socat" &
socatPid=$!
for _ in $(seq 50); do [ "$(grep -c 'PTY is' "$run/socat")" -eq 2 ] && break; sleep 0.1; done
mapfile -t ptys < <(sed -n 's/.*PTY is //p' "$run/socat")
"$wine" reg add 'HKLM\Software\Wine\Ports' /v COM7 /d "${ptys[0]}" /f >/dev/null 2>&1
"$wineserver" -k 2>/dev/null || true # the mapping holds from the next server on
(timeout 30 head -c 3 "${ptys[1]}" >"$run/request" && printf '\006' >"${ptys[1]}") &
expect "serial" "answer of 1 bytes: 06" "$(program device_client serial 'device=COM7;baud=9600')"
expect "what the device got" "02 41 03" "$(od -An -tx1 "$run/request" | xargs | tr 'a-f' 'A-F')"

log=("$run"/*-device-client.log)
expect "log: the runs" "3" "$(grep -c '\] the C client starts$' "${log[@]}")"
expect "log: the traffic" "1 1" "$(grep -c '\] question 77 68 61 74 ' "${log[@]}") $(grep -c '\] send -> \[ 3 \]: $' "${log[@]}")"
