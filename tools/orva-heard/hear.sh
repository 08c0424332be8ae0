#!/bin/sh
# Runs the plug-in in the bench host, between a receiver library that plays a recording of one call in real time and a
# loudspeaker that is recorded. Leaves heard.wav, journal.jsonl and receiver.log in FOLDER, and if asked a photograph
# of the screen during the call.
# Usage, inside run-with-sound: hear.sh PROGRAMS RECORDING FOLDER [PHOTOGRAPH]
# PROGRAMS is the folder of orva-host.exe, Orva.dll and receiver/TRK718API.DLL.
set -eu
programs=$1 recording=$2 folder=$3 photograph=${4:-}
top=$(CDPATH='' cd -- "$(dirname -- "$0")/../.." && pwd)
. "$top/tools/orva-heard/bench-host.sh"
heard="$folder/heard.wav"
recorder=

finish() {
    end_host
    [ -z "$recorder" ] || kill "$recorder" 2>/dev/null || true
}
records() { [ "$(stat -c %s "$heard" 2>/dev/null || echo 0)" -gt 100 ]; }

trap finish EXIT
trap 'exit 1' HUP INT TERM
mkdir -p "$folder"
rm -f "$heard" "$folder/receiver.log"

# Short latency: otherwise the sink works two seconds ahead, and what is played meanwhile is not recorded. It has done so
# already: the recording begins when those are over.
parec --latency-msec=20 --device=speech.monitor --rate=16000 --channels=1 --format=s16le --file-format=wav "$heard" &
recorder=$!
await 20 "the recording to begin" records

export PULSE_SINK=speech ORVA_RECEIVER_RECORDING="$recording" ORVA_RECEIVER_LOG="$folder/receiver.log"
start_host "$folder" --device K7USB --serial HEARD001 --libraries "$programs/receiver"
# Digital only: before the call there is silence, not the noise of an empty channel, and the output has three blocks in
# hand when the speech begins. Volume 1, at which speech is hardly clipped.
tell_host '2304 19' '3584 1'
await 60 "the call" journal_has '"type":5,'
if [ -n "$photograph" ]; then
    sleep 1
    import -window root -trim "$photograph"
fi
await 120 "the end of the call" journal_has '"type":129,'
sleep 1 # for what is still on its way to the loudspeaker
close_host
kill "$recorder"
wait "$recorder" || true
recorder=
