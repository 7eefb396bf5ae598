#!/usr/bin/env bash
# Runs a Windows test program under Wine with a serial relay beside it: socat holds a fresh
# pseudo-terminal for each TCP connection and links it into the Wine prefix as COM40, where
# Wine resolves the port at every open. The program finds both through its environment.
#   serial_relay.sh WINE_RUNNER PROGRAM [ARGUMENTS...]
set -u
eval "$(grep '^export WINEPREFIX' "$1")"
export OVO_SERIAL_PORT=COM40 OVO_SERIAL_RELAY_PORT=$((20000 + $$ % 20000))
mkdir -p "$WINEPREFIX/dosdevices"
socat -t0.05 "tcp-listen:$OVO_SERIAL_RELAY_PORT,bind=127.0.0.1,reuseaddr,fork" \
    "pty,raw,echo=0,link=$WINEPREFIX/dosdevices/com40,unlink-close=0" 2>/dev/null &
relay=$!
for _ in $(seq 50); do (: <"/dev/tcp/127.0.0.1/$OVO_SERIAL_RELAY_PORT") 2>/dev/null && break; sleep 0.1; done
"$@"
status=$?
kill "$relay"
rm -f "$WINEPREFIX/dosdevices/com40"
exit $status
