#!/usr/bin/env bash
# bench/cli.sh BUILD_DIR TREE: the command line as whole processes against a running app that
# has TREE scanned: median times of `summary --json` and `find --min-size 1M`, and 200 tool
# processes at once, every one of which must get a correct answer.
set -euo pipefail
exe="$(cd "$1" && pwd)/tarnwick"
tree="$2"
home=$(mktemp -d /tmp/tarnwick-cli-bench-XXXXXX)
export XDG_DATA_HOME="$home/data" XDG_CONFIG_HOME="$home/config" DISPLAY= WAYLAND_DISPLAY=
cleanup() {
    for pid in $(pgrep -f -- "$exe --background" || true); do
        if tr '\0' '\n' <"/proc/$pid/environ" 2>/dev/null | grep -qx "XDG_DATA_HOME=$home/data"; then kill "$pid"; fi
    done
    rm -rf "$home"
}
trap cleanup EXIT

median_ms() { # command... : prints the median wall time in ms of 21 runs
    local times=()
    for _ in $(seq 21); do
        local start end
        start=$(date +%s%N)
        "$@" >/dev/null
        end=$(date +%s%N)
        times+=($(((end - start) / 1000)))
    done
    printf '%s\n' "${times[@]}" | sort -n | awk '{a[NR]=$1} END {printf "%.2f", a[int((NR+1)/2)]/1000}'
}

"$exe" scan "$tree" >/dev/null
"$exe" wait --timeout 600 >/dev/null
items=$("$exe" status --json | grep -o '"item_count": [0-9]*' | grep -o '[0-9]*')
echo "app running with $tree scanned ($items items)"
echo
echo "| Command (whole process) | Median of 21 |"
echo "|---|---:|"
echo "| \`tarnwick summary TREE --json\` | $(median_ms "$exe" summary "$tree" --json) ms |"
echo "| \`tarnwick find TREE --min-size 1M\` | $(median_ms "$exe" find "$tree" --min-size 1M) ms |"
echo "| \`tarnwick status --json\` | $(median_ms "$exe" status --json) ms |"

answers="$home/answers"
mkdir -p "$answers"
start=$(date +%s%N)
for i in $(seq 200); do
    "$exe" summary "$tree" --json >"$answers/$i" 2>&1 &
done
wait
end=$(date +%s%N)
good=$(grep -l "\"size_bytes\"" "$answers"/* | wc -l)
echo
echo "200 \`tarnwick summary TREE --json\` processes at once: $good of 200 answered correctly, in $(((end - start) / 1000000)) ms all together."
