# Functions of a script that runs the plug-in in the bench host, live, and tells the host what to send by and by. The
# script sources this file with `set -eu`; $programs is the folder of orva-host.exe, Orva.dll and
# receiver/TRK718API.DLL, $top the project's. One host at a time.
# shellcheck shell=sh

host=
journal=

fail() { echo "$(basename "$0"): $*" >&2; exit 1; }

# start_host FOLDER ARGUMENTS...: leaves journal.jsonl and host.log in FOLDER. The environment says which sound devices
# and which recording.
start_host() {
    host_folder=$1
    shift
    journal="$host_folder/journal.jsonl"
    mkdir -p "$host_folder"
    rm -f "$journal" "$host_folder/commands"
    mkfifo "$host_folder/commands"
    exec 3<>"$host_folder/commands"
    "$top/cmake/run-wine" "$programs/orva-host.exe" "$programs/Orva.dll" --log "$journal" "$@" \
        <"$host_folder/commands" >"$host_folder/host.log" 2>&1 3>&- &
    host=$!
}

# tell_host LINE...: commands of a script for the bench host.
tell_host() { printf '%s\n' "$@" >&3; }

close_host() {
    tell_host close
    wait "$host" || fail "the host failed; see $host_folder/host.log and $journal"
    host=
    end_host
}

# At the end of the script, however it ends. A host that still runs ends with its input.
end_host() {
    exec 3>&-
    if [ -n "$host" ]; then
        wait "$host" || true
        host=
    fi
    rm -f "${host_folder:-}/commands"
}

# await SECONDS WHAT COMMAND...: until the command succeeds, at most so long. Fails if the host ends meanwhile.
await() {
    deadline=$(($(date +%s) + $1)) what=$2
    shift 2
    until "$@"; do
        [ "$(date +%s)" -le "$deadline" ] || fail "waited in vain for $what"
        { [ -z "$host" ] || kill -0 "$host" 2>/dev/null; } || fail "the host ended early; see $host_folder"
        sleep 0.1
    done
}

# journal_has TEXT [COUNT]: that many lines with the text, at least one.
journal_has() { [ "$(grep -c -e "$1" "$journal" 2>/dev/null || true)" -ge "${2:-1}" ] 2>/dev/null; }
