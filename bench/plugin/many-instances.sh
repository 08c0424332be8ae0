#!/usr/bin/env bash
# Runs many instances of the plug-in in one host at once, each decoding a 64000 Hz stream of its own, and tells at which
# speed they still keep up. Host, receivers, Wine's server and display: all on one core.
# Usage: bench/plugin/many-instances.sh [INSTANCES [SECONDS [SPEED...]]], after ./orva build. ORVA_WINE_PREFIX must not
# be in use otherwise.
set -euo pipefail

instances=${1:-16}
seconds=${2:-20}
shift $(($# < 2 ? $# : 2))
[ $# -gt 0 ] || set -- 1 2 3 4 5
top=$(CDPATH='' cd -- "$(dirname -- "$0")/../.." && pwd)
cd "$top"

if [ -z "${ORVA_ONE_CORE:-}" ]; then
    ORVA_ONE_CORE=1 exec taskset -c 0 "$0" "$instances" "$seconds" "$@"
fi

out="$top/build/many-instances"
mkdir -p "$out"
rm -f "$out/display"
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$out/display" 2>/dev/null &
display=$!
trap 'cmake/run-wine wineserver -k >/dev/null 2>&1 || true; kill "$display"' EXIT
until [ -s "$out/display" ]; do sleep 0.1; done
DISPLAY=":$(<"$out/display")"
export DISPLAY
cmake/run-wine wineserver -k >/dev/null 2>&1 || true # it would run on another core
cmake/run-wine wineserver -p300 >/dev/null 2>&1 </dev/null
cmake/run-wine wineboot --init >/dev/null 2>&1 </dev/null

build/native-release/bin/orva-signal --rate 64000 --output "$out/call.if.wav" --voice sentence --seconds 30 --warm-up \
    --snr 20 >/dev/null

export ORVA_RECEIVER_RECORDING="$out/call.if.wav" ORVA_RECEIVER_END=loop ORVA_RECEIVER_LOG="$out/receivers.txt"
# The host asks for the noise measure too, which runs while FM is heard.
printf '2817 2\nwait %s\n' "$seconds" >"$out/script.txt"
for speed in "$@"; do
    rm -f "$out/receivers.txt"
    export ORVA_RECEIVER_SPEED=$speed
    TIMEFORMAT='%U %S'
    cpu=$({ time cmake/run-wine build/win32-release/bin/orva-host.exe build/win32-release/bin/Orva.dll \
        --instances "$instances" --device K7USB --libraries build/win32-release/bin/receiver \
        --script "$out/script.txt" --log "$out/journal.jsonl" >"$out/host.txt" 2>&1 </dev/null; } 2>&1)
    awk -v speed="$speed" -v cpu="$cpu" -v rate=64000 -v pool=24000 '
        /^CodecStop/ {
            ++streams; delivered += $3; processed += $5; unread += $7
            if ($3 - $5 > pool) ++behind
        }
        END {
            split(cpu, times, " ")
            printf "%d instances at %g times real time: %.1f s of signal in all, %d fell behind, %.0f samples lost; ",
                streams, speed, processed / rate, behind, behind ? delivered - processed : unread
            printf "%.1f s of the core, %.0f times real time\n", times[1] + times[2],
                processed / rate / (times[1] + times[2])
        }' "$out/receivers.txt"
done
