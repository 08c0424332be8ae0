# Prints a table of a scan: what was tuned to, what was asked for, what was answered and when. First file: the script,
# whose remarks behind `tune` say what is on the channel. Second file: the bench host's journal.
function field(name,    text) {
    if (!match($0, "\"" name "\":-?[0-9.]+"))
        return ""
    text = substr($0, RSTART, RLENGTH)
    sub(/.*:/, "", text)
    return text
}
function abs(number) { return number < 0 ? -number : number }
BEGIN { printf "%-11s %-24s %-9s %-6s %-8s %s\n", "channel", "on the air", "asked for", "answer", "found", "after" }
FNR == NR {
    if ($1 == "tune" && match($0, /# .*/))
        onAir[$2] = substr($0, RSTART + 2)
    next
}
/"from":"host"/ && /"name":"SquelchSetup"/ { asked = kinds[field("param")] }
/"from":"host"/ && /"name":"Frequency"/ { channel = field("param"); tuned = field("seconds") }
/"from":"plugin"/ && /"name":"SquelchResult"/ {
    if (asked == "tone")
        found = field("ctcss") == 0 ? "-" : field("ctcss") / 1000 " Hz"
    else if (asked == "code")
        found = field("dcs") == 0 ? "-" : sprintf("%s%03o", field("dcs") < 0 ? "-" : "", abs(field("dcs")))
    else
        found = field(asked)
    printf "%-11.4f %-24s %-9s %-6s %-8s %.2f s\n", channel / 1e6, onAir[channel], asked, \
           field("param") == 0 ? "no" : "yes", found, field("seconds") - tuned
    ++answers
}
BEGIN { kinds[2] = "noise"; kinds[4] = "tone"; kinds[256] = "voice"; kinds[512] = "code" }
END { exit answers == 10 ? 0 : 1 }
