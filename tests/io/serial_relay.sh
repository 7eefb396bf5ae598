#!/usr/bin/env bash
# Runs a Windows test program under Wine with a serial relay beside it: socat holds a
# pseudo-terminal, links it into the Wine prefix as COM40 (Wine resolves a port at each
# open) and passes its bytes to the one TCP connection it takes.
#   serial_relay.sh WINE_RUNNER PROGRAM [ARGUMENTS...]
set -u
eval "$(grep '^export WINEPREFIX' "$1")"
export OVO_SERIAL_PORT=COM40 OVO_SERIAL_RELAY_PORT=$((20000 + $$ % 20000))
mkdir -p "$WINEPREFIX/dosdevices"
socat "pty,raw,echo=0,link=$WINEPREFIX/dosdevices/com40" "tcp-listen:$OVO_SERIAL_RELAY_PORT,bind=127.0.0.1" &
relay=$!
for _ in $(seq 50); do ss -ltn | grep -q ":$OVO_SERIAL_RELAY_PORT " && break; sleep 0.1; done
"$@"
status=$?
kill "$relay" 2>/dev/null
exit $status
