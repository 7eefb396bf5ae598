#!/usr/bin/env bash
# The Debian packages of a build (/usr prefix), checked without installing them: lintian
# finds no error, the four unpack into a scratch root, the -dev package holds the API
# reference, a client builds against that root through find_package and pkg-config, the
# packaged tool runs, and every example builds against the root as a client project and
# runs: the card exchange and the card monitor against the virtual card, the serial
# request against an echoing device on a pseudo-terminal, the C client and the packaged
# Python package's client with the card and between two processes; a mistake in an
# example's words gives its usage on standard error and status 2.
#   check_debian_packages.sh PACKAGE_DIR WORK_DIR
set -euo pipefail
source "$(dirname "$0")/../../scripts/lib/debian.sh"
packages=$(realpath "$1")
work=$(realpath -m "$2")
here=$ovoRoot/tests/install

lintian --fail-on error --suppress-tags initial-upload-closes-no-bugs "$packages"/*.deb
rm -rf "$work"
mkdir -p "$work/root"
debs=("$packages"/*.deb)
[ ${#debs[@]} -eq 4 ] || { echo "expected four packages, found ${debs[*]}"; exit 1; }
for deb in "${debs[@]}"; do dpkg-deb -x "$deb" "$work/root"; done
grep -q "Three tasks to start from" "$work/root/usr/share/doc/libovosystem-dev/html/index.html"

cmake -DPREFIX="$work/root/usr" -DWORK_DIR="$work" -DCLIENT_DIR="$here/client" -DCXX=g++ -DEXPECT_TOOL=1 \
    -P "$here/check_install.cmake"

libDir=$(dirname "$(find "$work/root" -name ovosystem.pc)")/..
export LD_LIBRARY_PATH=$libDir
launcher=() # the test command's compiler cache, where there is one
! command -v ccache >/dev/null || launcher=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
cmake -S "$ovoRoot/examples" -B "$work/examples" -DCMAKE_PREFIX_PATH="$work/root/usr" "${launcher[@]}" >"$work/examples.log"
cmake --build "$work/examples" --parallel "$(nproc)" >>"$work/examples.log"
bin=$work/examples
# expect PATTERN COMMAND...: runs the command, shows what it printed, and checks for a line.
expect() {
    local pattern=$1 out
    shift
    echo "\$ ${1##*/} ${*:2}"
    out=$("$@" 2>&1) || { echo "$out"; return 1; }
    echo "$out"
    grep -q -- "$pattern" <<<"$out"
}

for example in logging card_exchange card_monitor serial_request message_channel options; do
    status=0
    out=$("$bin/$example" one two three 2>"$work/usage.err") || status=$?
    [ "$status" -eq 2 ] && [ -z "$out" ] && grep -q "^usage: $example" "$work/usage.err" ||
        { echo "$example with words it does not take: status $status, output '$out'"; exit 1; }
done

mkdir -p "$work/logs"
expect "^done$" "$bin/logging" "$work/logs"
grep -q "the logging example's log" "$work/logs"/*-example.log

expect "^3 of 3 words taken: port 'ttyUSB0', timeout 500 ms, verbose yes$" \
    "$bin/options" -p=ttyUSB0 --timeout=500 -v

# The C client and the Python one, each asking the other through a channel; their logs go
# into the current directory.
cd "$work/logs"
round=0
export PYTHONPATH=$work/root/usr/lib/python3/dist-packages
python="/usr/bin/python3 $ovoRoot/examples/device_client.py"
for pair in "$bin/message_channel|$bin/message_channel" "$bin/device_client|$python" "$python|$bin/device_client"; do
    channel=ovo-example-$$-$((++round))
    ${pair#*|} answer "$channel" >"$work/answer.out" 2>/dev/null &
    answerer=$!
    expect "^answer: time to answer$" ${pair%|*} ask "$channel"
    wait "$answerer"
    grep -q "^question: what time is it?$" "$work/answer.out"
done

socat PTY,link="$work/device",rawer EXEC:cat &
device=$!
trap 'kill $device 2>/dev/null || true' EXIT
for _ in $(seq 50); do [ -e "$work/device" ] && break; sleep 0.1; done
expect "^answer of 8 bytes: 02 53 54 41 54 55 53 03$" \
    "$bin/serial_request" "device=$work/device;baud=9600;data=8;parity=none;stop=1"

ovoStartVirtualCard "$work/vicc.log" ovoVirtualReaderListed
# (|| true: under set -e a stopped process's status would become the script's)
trap 'kill $device 2>/dev/null; ovoStopVirtualCard || true' EXIT
for _ in $(seq 30); do "$bin/card_exchange" "$ovoVirtualReader" 2>/dev/null | grep -q "^status word" && break; sleep 0.5; done
expect "^status word 9000$" "$bin/card_exchange" "$ovoVirtualReader"
# What is there, then Enter (here the end of the input) ends the watch.
expect "^card inserted: $ovoVirtualReader 3B" bash -c "sleep 2 | '$bin/card_monitor'"
expect "^status word 9000$" "$bin/device_client" card
expect "^status word 9000$" $python card "$ovoVirtualReader"
grep -q '\] <- 90 00 $' "$work/logs"/*-device-client.log
echo "packages and examples: all checks passed"
