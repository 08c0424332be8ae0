#!/bin/sh
# Runs the plug-in as its users do, in a host, with real devices, on signals from the test transmitter; then lets a test
# program judge what was recorded and written down.
#   receiver  a call at 64000 Hz from the receiver library, in real time; the loudspeaker is recorded
#   wave-in   a call, a control channel and FM at 48000 Hz, played to the device that the wave input records
#   control, fm  those at 64000 Hz from the receiver library, as fast as they are processed
# Usage, inside run-with-sound: live-reception.sh PROGRAMS TEST-PROGRAM
set -eu
programs=$1 test_program=$2
top=$(CDPATH='' cd -- "$(dirname -- "$0")/../.." && pwd)
. "$top/tools/orva-heard/bench-host.sh"

header_bytes=46 # of a recording

folder=$(mktemp -d /tmp/orva-live.XXXXXX)
finish() {
    end_host
    rm -rf "$folder"
}
trap finish EXIT
trap 'exit 1' HUP INT TERM

# run PROGRAM ARGUMENTS...: in the folder of the recordings.
run() {
    program=$1
    shift
    (cd "$folder" && "$top/cmake/run-wine" "$programs/$program.exe" "$@")
}

# transmit NAME RATE ARGUMENTS...
transmit() {
    name=$1 rate=$2
    shift 2
    run orva-signal --output "$name.$rate.if.wav" --rate "$rate" "$@" >>"$folder/signals.log"
}

# A machine that is too busy for a moment breaks the sound of any program: then the call is played once more.
hear_receiver() {
    for attempt in 1 2 3; do
        "$top/tools/orva-heard/hear.sh" "$programs" "$folder/call.64000.if.wav" "$folder/receiver" || return 1
        if run orva-heard receiver/journal.jsonl --speech speech.wav --recording receiver/heard.wav; then
            return 0
        fi
        echo "attempt $attempt was not heard well; $(uptime)"
    done
}

hear_wave_input() {
    PULSE_SOURCE=antenna.monitor start_host "$folder/wave-in" --device bench --serial LIVE0001
    tell_host '2304 0 2 19'
    await 60 "the wave input" journal_has '"code":4353,'
    for signal in call control fm; do
        paplay --device=antenna "$folder/$signal.48000.if.wav"
    done
    await 60 "FM audio" journal_has '"code":4362,' 20
    close_host
}

# receive NAME WHAT COMMAND...: until the command succeeds.
receive() {
    name=$1
    shift
    ORVA_RECEIVER_RECORDING="$folder/$name.64000.if.wav" ORVA_RECEIVER_SPEED=0 ORVA_RECEIVER_PATIENCE=30 \
        start_host "$folder/$name" --device K7USB --serial LIVE0002 --libraries "$programs/receiver"
    tell_host '2304 0 2 19'
    await 60 "$@"
    close_host
}

# journal_has_records COUNT: of trunking.
journal_has_records() { [ "$(grep -o '"type":' "$journal" 2>/dev/null | wc -l)" -ge "$1" ]; }

transmit call 64000 --voice sentence --seconds 8 --snr 20 --talkgroup 1234 --source 56789
transmit call 48000 --voice sentence --seconds 2 --snr 20 --talkgroup 1234 --source 56789
for rate in 48000 64000; do
    transmit control $rate --control 1.5 --snr 30
    transmit fm $rate --fm 2.5 --fm-audio 1kHz
done
run orva-decode call.64000.if.wav --output speech.wav >>"$folder/signals.log"
run orva-decode control.64000.if.wav --events control.64000.jsonl >>"$folder/signals.log"
# As the wave input gets them, one behind the other: the call lets frequency control settle.
for signal in call control fm; do
    tail -c +$((header_bytes + 1)) "$folder/$signal.48000.if.wav"
done | run orva-decode --rate 48000 --events wave-in.48000.jsonl >>"$folder/signals.log"

# What the other instances play goes to a loudspeaker of its own.
pactl load-module module-null-sink sink_name=other rate=16000 channels=1 >/dev/null
hear_receiver >"$folder/receiver.txt" 2>&1 &
receiver=$!
export PULSE_SINK=other
hear_wave_input
receive control "the last record" journal_has_records "$(grep -c '"event":"record"' "$folder/control.64000.jsonl")"
receive fm "FM audio" journal_has '"code":4362,' 30
wait "$receiver" || { cat "$folder/receiver.txt"; fail "the receiver's run failed"; }
cat "$folder/receiver.txt"
ORVA_LIVE_FOLDER="$folder" "$top/cmake/run-wine" "$test_program" --gtest_brief=1
