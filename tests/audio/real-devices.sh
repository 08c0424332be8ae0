#!/bin/sh
# Runs a Windows program with sound devices to play to and record from: a PulseAudio of its own, with one null
# sink whose monitor is the recording device. The exit status is 77 where there is no PulseAudio.
# Usage: real-devices.sh COMMAND [ARGUMENTS]
set -eu
command -v pulseaudio >/dev/null 2>&1 || { echo "no PulseAudio: nothing is tested" >&2; exit 77; }

folder=$(mktemp -d /tmp/orva-sound.XXXXXX)
socket="$folder/socket"
server=
finish() {
    [ -z "$server" ] || kill "$server" 2>/dev/null || true
    [ -z "$server" ] || wait "$server" 2>/dev/null || true
    rm -rf "$folder"
}
trap finish EXIT
trap 'exit 1' HUP INT TERM

HOME="$folder" XDG_RUNTIME_DIR="$folder" pulseaudio -n --daemonize=no --exit-idle-time=-1 --disallow-exit \
    --load="module-null-sink sink_name=orva rate=48000" \
    --load="module-native-protocol-unix auth-anonymous=1 socket=$socket" >"$folder/log" 2>&1 &
server=$!
waited=0
until [ -S "$socket" ]; do
    kill -0 "$server" 2>/dev/null && [ "$waited" -lt 100 ] || { cat "$folder/log" >&2; exit 1; }
    waited=$((waited + 1))
    sleep 0.1
done
PULSE_SERVER="unix:$socket" "$@"
