# What the project's scripts share on Debian: installing missing packages, and the PC/SC
# service with the virtual reader driver (and the virtual card) on loopback.
# Source it; it defines functions only.

ovoRoot=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
ovoVirtualReader="Virtual PCD 00 00"

ovoSudo() { if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi; }
# As a prefix of a command run in the background, so that $! is that command's own pid.
ovoAsRoot=()
[ "$(id -u)" -eq 0 ] || ovoAsRoot=(sudo)

# Installs the packages named that are not installed yet (apt-get update first).
ovoInstallMissing() {
    local missing=()
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    echo "installing ${missing[*]}" >&2
    ovoSudo apt-get update -q >&2 &&
        DEBIAN_FRONTEND=noninteractive ovoSudo apt-get install -y -q "${missing[@]}" >&2
}

ovoVirtualReaderListed() { timeout 5 pcsc_scan -r 2>/dev/null | grep -q "$ovoVirtualReader"; }

# Starts pcscd unless it shows the virtual reader already; ovoPcscdPid is the process
# started, if any. $1: its log file.
ovoPcscdPid=
ovoStartPcscd() {
    ovoVirtualReaderListed && return 0
    "${ovoAsRoot[@]}" pcscd -f -a >"$1" 2>&1 &
    ovoPcscdPid=$!
    for _ in $(seq 20); do
        ovoVirtualReaderListed && return 0
        sleep 0.5
    done
    return 1
}

# Ends a process started in the background by this shell; $1: its pid (may be empty).
ovoStop() {
    [ -n "$1" ] || return 0
    kill "$1" 2>/dev/null
    wait "$1" 2>/dev/null
}

ovoStopPcscd() { ovoStop "$ovoPcscdPid"; ovoPcscdPid=; }

# The virtual ISO 7816 card in the virtual reader, with the two workarounds Debian 12's
# vicc needs (its module path, and a Crypto module over pycryptodome's Cryptodome).
# $1: its log file; $2: a command that succeeds once the card is in the reader.
ovoViccPid=
ovoStartVirtualCard() {
    PYTHONPATH="$ovoRoot/scripts/vicc_shim:/usr/lib/python3/site-packages/virtualsmartcard" \
        /usr/bin/python3 /usr/bin/vicc -t iso7816 >"$1" 2>&1 &
    ovoViccPid=$!
    for _ in $(seq 30); do
        "$2" && return 0
        sleep 0.5
    done
    return 1
}

ovoStopVirtualCard() { ovoStop "$ovoViccPid"; ovoViccPid=; }
