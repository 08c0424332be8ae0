#!/bin/sh
# Runs the plug-in in the bench host, between a receiver library that plays a recording of one call in real time and a
# loudspeaker that is recorded. Leaves heard.wav, journal.jsonl and receiver.log in FOLDER, and if asked a photograph
# of the screen during the call.
# Usage, inside run-with-sound: hear.sh PROGRAMS RECORDING FOLDER [PHOTOGRAPH]
# PROGRAMS is the folder of orva-host.exe, Orva.dll and receiver/TRK718API.DLL.
set -eu
programs=$1 recording=$2 folder=$3 photograph=${4:-}
top=$(CDPATH='' cd -- "$(dirname -- "$0")/../.." && pwd)
heard="$folder/heard.wav" journal="$folder/journal.jsonl" commands="$folder/commands"
recorder= host=

finish() {
    exec 3>&-
    for process in $recorder $host; do
        kill "$process" 2>/dev/null || true
        wait "$process" 2>/dev/null || true
    done
    rm -f "$commands"
}
fail() { echo "hear.sh: $*" >&2; exit 1; }

# await SECONDS WHAT COMMAND...: until the command succeeds.
await() {
    tenths=$(($1 * 10)) what=$2
    shift 2
    until "$@"; do
        tenths=$((tenths - 1))
        [ "$tenths" -gt 0 ] || fail "waited in vain for $what"
        { [ -z "$host" ] || kill -0 "$host" 2>/dev/null; } || fail "the host ended early; see $journal"
        sleep 0.1
    done
}
records() { [ "$(stat -c %s "$heard" 2>/dev/null || echo 0)" -gt 100 ]; }
tells() { grep -q "$1" "$journal" 2>/dev/null; }

mkdir -p "$folder"
rm -f "$heard" "$journal" "$folder/receiver.log" "$commands"
mkfifo "$commands"
exec 3<>"$commands"
trap finish EXIT
trap 'exit 1' HUP INT TERM

# Short latency: otherwise the sink works two seconds ahead, and what is played meanwhile is not recorded. It has done so
# already: the recording begins when those are over.
parec --latency-msec=20 --device=speech.monitor --rate=16000 --channels=1 --format=s16le --file-format=wav "$heard" &
recorder=$!
await 20 "the recording to begin" records

PULSE_SINK=speech ORVA_RECEIVER_RECORDING=$recording ORVA_RECEIVER_LOG="$folder/receiver.log" \
    "$top/cmake/run-wine" "$programs/orva-host.exe" "$programs/Orva.dll" --device K7USB \
    --libraries "$programs/receiver" --log "$journal" <"$commands" >"$folder/host.log" 2>&1 &
host=$!
# Digital only: before the call there is silence, not the noise of an empty channel, and the output has three blocks in
# hand when the speech begins. Volume 1, at which speech is not clipped.
printf '2304 19\n3584 1\n' >&3
await 60 "the call" tells '"type":5,'
if [ -n "$photograph" ]; then
    sleep 1
    import -window root -trim "$photograph"
fi
await 120 "the end of the call" tells '"type":129,'
sleep 1 # for what is still on its way to the loudspeaker
echo close >&3
wait "$host" || fail "the host failed; see $folder/host.log and $journal"
host=
kill "$recorder"
wait "$recorder" || true
recorder=
