#!/usr/bin/env bash
# bench/run.sh BUILD_DIR: whole-scan comparisons on generated trees (what `make bench` runs).
#
# Makes the trees if they are missing (build/bench/mktree, outside the repository), then times
# the scan program, gdu, du and the baseline walk on the 1,000,000-entry tree with a warm
# cache, and again with a cold one where /proc/sys/vm/drop_caches is writable. Each figure is
# the median of measured runs after warm-ups; wall time is taken around the whole process and
# peak memory is GNU time's maximum resident set size. The Markdown report goes to stdout and
# to bench/out/latest.md, with the command that made each figure.
#
# Environment: TARNWICK_BENCH_DIR (trees; default /var/tmp/tarnwick-bench),
# TARNWICK_BENCH_WARMUPS (default 2), TARNWICK_BENCH_RUNS (default 3),
# TARNWICK_BENCH_COLD (0 skips the cold-cache runs).
set -euo pipefail

if [ $# -ne 1 ] || [ ! -d "$1" ]; then
    echo "usage: bench/run.sh BUILD_DIR   (the CMake build folder, e.g. build)" >&2
    exit 2
fi
build=${1%/}
bin=$build/bench
bench_dir=${TARNWICK_BENCH_DIR:-/var/tmp/tarnwick-bench}
warmups=${TARNWICK_BENCH_WARMUPS:-2}
runs=${TARNWICK_BENCH_RUNS:-3}
cold=${TARNWICK_BENCH_COLD:-1}
here=$(cd "$(dirname "$0")" && pwd)
out_dir=$here/out
report=$out_dir/latest.md
tree_1m=$bench_dir/tree-1m
tree_200k=$bench_dir/tree-200k

say() { echo "bench: $*" >&2; }

for tool in mktree baseline; do
    if [ ! -x "$bin/$tool" ]; then
        say "$bin/$tool is missing; build first (make build)"
        exit 1
    fi
done
mkdir -p "$out_dir" "$bench_dir"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

have_time=0
[ -x /usr/bin/time ] && have_time=1
have_scan=0
[ -x "$bin/scan" ] && have_scan=1
have_gdu=0
command -v gdu >/dev/null && have_gdu=1

# ---- helpers ----------------------------------------------------------------------------

# A number field of a one-line JSON object: json_field NAME FILE
json_field() {
    { grep -o "\"$1\": *[0-9.eE+-]*" "$2" 2>/dev/null || true; } | head -n1 | sed 's/.*: *//'
}

# The middle value (the lower middle for an even count) of the arguments.
median() {
    printf '%s\n' "$@" | sort -g | awk '{ v[NR] = $1 } END { if (NR) print v[int((NR + 1) / 2)] }'
}

grouped() { # 1234567 -> 1,234,567
    printf '%s' "$1" | sed ':a;s/\B[0-9]\{3\}\>/,&/;ta'
}

plural() { [ "$1" = 1 ] && echo "1 $2" || echo "$1 ${2}s"; }

megabytes() { awk -v b="$1" 'BEGIN { printf "%.1f MB", b / 1e6 }'; }

drop_caches() {
    sync
    echo 3 > /proc/sys/vm/drop_caches
}

# One timed run: its wall seconds go to $work/seconds, its peak RSS in bytes (or nothing) to
# $work/rss, its standard output to $work/stdout. Returns the program's exit status.
timed_run() {
    local start end status=0
    start=$EPOCHREALTIME
    if [ $have_time = 1 ]; then
        /usr/bin/time -f '%U %M' -o "$work/time" "$@" >"$work/stdout" 2>"$work/stderr" || status=$?
    else
        "$@" >"$work/stdout" 2>"$work/stderr" || status=$?
    fi
    end=$EPOCHREALTIME
    awk -v a="$start" -v b="$end" 'BEGIN { printf "%.3f\n", b - a }' >"$work/seconds"
    local rss="" user=""
    if [ $have_time = 1 ] && [ -s "$work/time" ]; then
        rss=$(tail -n1 "$work/time" | awk '$2 ~ /^[0-9]+$/ { print $2 }')
        user=$(tail -n1 "$work/time" | awk '$1 ~ /^[0-9.]+$/ { print $1 }')
        [ -n "$rss" ] && rss=$((rss * 1024))
    fi
    printf '%s\n' "$user" >"$work/user"
    if [ -z "$rss" ]; then
        rss=$(json_field peak_rss_bytes "$work/stdout")
    fi
    printf '%s\n' "$rss" >"$work/rss"
    return $status
}

# measure MODE ENTRIES LABEL COMMAND...: MODE is warm (warm-ups, then measured runs) or cold
# (caches dropped before every measured run). Appends a table row to $work/rows and the totals
# the program printed to $work/totals.
measure() {
    local mode=$1 entries=$2 label=$3
    shift 3
    local shown="$*" seconds=() rss=() users=() status=0 i
    say "$mode: $label"
    if [ "$mode" = warm ]; then
        for ((i = 0; i < warmups; i++)); do
            timed_run "$@" || { status=$?; break; }
        done
    fi
    if [ $status = 0 ]; then
        for ((i = 0; i < runs; i++)); do
            [ "$mode" = cold ] && drop_caches
            timed_run "$@" || { status=$?; break; }
            seconds+=("$(cat "$work/seconds")")
            rss+=("$(cat "$work/rss")")
            users+=("$(cat "$work/user")")
        done
    fi
    if [ $status != 0 ]; then
        say "$label failed with status $status: $(head -c 300 "$work/stderr")"
        echo "| $label | \`$shown\` | failed (exit $status) | | | | | |" >>"$work/rows"
        return 0
    fi
    local s r rate rss_text="n/a" per_entry="n/a" user_ns="n/a" u
    s=$(median "${seconds[@]}")
    u=$(median $(printf '%s\n' "${users[@]}" | grep -E '^[0-9.]+$' || true))
    [ -n "$u" ] && user_ns=$(awk -v u="$u" -v n="$entries" 'BEGIN { printf "%.0f", u * 1e9 / n }')
    rate=$(awk -v n="$entries" -v s="$s" 'BEGIN { if (s > 0) printf "%d", n / s; else print 0 }')
    r=$(median $(printf '%s\n' "${rss[@]}" | grep -E '^[0-9]+$' || true))
    if [ -n "$r" ]; then
        rss_text=$(megabytes "$r")
        per_entry=$(awk -v b="$r" -v n="$entries" 'BEGIN { printf "%.0f", b / n }')
    fi
    echo "| $label | \`$shown\` | $s | $(grouped "$rate") | $user_ns | $rss_text | $per_entry | ${seconds[*]} |" >>"$work/rows"

    [ "$mode" = warm ] || return 0
    local items allocated logical workers
    items=$(json_field items "$work/stdout")
    allocated=$(json_field allocated "$work/stdout")
    logical=$(json_field logical "$work/stdout")
    workers=$(json_field peak_workers "$work/stdout")
    case "$label" in
    du*) allocated=$(awk 'NR == 1 { print $1 }' "$work/stdout") ;;
    gdu*) allocated=$(awk 'NR == 1 { print $1 }' "$work/stdout") ;;
    esac
    echo "| $label, $tree_name | ${items:-n/a} | ${allocated:-n/a} | ${logical:-n/a} | ${workers:--} |" >>"$work/totals"
}

table_head() {
    echo "| Program | Command | Median s | Entries/s | User ns/entry | Peak RSS | RSS bytes/entry | Measured runs (s) |"
    echo "|---|---|---:|---:|---:|---:|---:|---|"
}

# Every comparison on one tree, warm or cold.
compare() {
    local mode=$1 tree=$2 entries=$3 full=$4
    tree_name=$(basename "$tree")
    if [ $have_scan = 1 ]; then
        measure "$mode" "$entries" "scan, adaptive" "$bin/scan" "$tree" --workers adaptive
        if [ "$full" = full ]; then
            for n in 1 2 4 8; do
                measure "$mode" "$entries" "scan, $(plural $n worker)" "$bin/scan" "$tree" --workers $n
            done
        fi
    else
        echo "| scan | \`$bin/scan\` | not built yet | | | | | |" >>"$work/rows"
    fi
    if [ $have_gdu = 1 ]; then
        measure "$mode" "$entries" "gdu" gdu -n -p -s --no-prefix "$tree"
    else
        echo "| gdu | | not installed (apt-get install gdu) | | | | | |" >>"$work/rows"
    fi
    measure "$mode" "$entries" "du" du -s -B1 "$tree"
    local threads="1 2 4 8"
    [ "$full" = full ] || threads=$(nproc)
    for n in $threads; do
        measure "$mode" "$entries" "baseline, $(plural $n thread)" "$bin/baseline" "$tree" --threads $n
    done
}

section() { # section TITLE: flushes the rows gathered so far under a heading
    {
        echo
        echo "## $1"
        echo
        table_head
        cat "$work/rows"
    } >>"$work/report"
    : >"$work/rows"
}

# ---- the trees --------------------------------------------------------------------------

say "making the trees in $bench_dir if they are missing"
"$bin/mktree" "$tree_200k" --entries 200000 >&2
"$bin/mktree" "$tree_1m" --entries 1000000 >&2
entries_of() { sed -n 's/^entries //p' "$1/.mktree-complete"; }
entries_1m=$(entries_of "$tree_1m")
entries_200k=$(entries_of "$tree_200k")
version=$(sed -n 's/^tarnwick mktree version //p' "$tree_1m/.mktree-complete")

: >"$work/rows"
: >"$work/totals"
{
    echo "# Scan benchmarks, $(date -u '+%Y-%m-%d %H:%M UTC')"
    echo
    echo "- Machine: $(nproc) cores ($(sed -n 's/^model name[[:space:]]*: //p' /proc/cpuinfo | head -n1)), $(awk '/MemTotal/ { printf "%.1f GB", $2 * 1024 / 1e9 }' /proc/meminfo) memory, Linux $(uname -r); trees on $(df -T "$bench_dir" | awk 'NR == 2 { print $2 " (" $1 ")" }'); load average at start $(cut -d' ' -f1-3 /proc/loadavg)."
    echo "- Trees: \`$bin/mktree $tree_1m --entries 1000000\` ($(grouped "$entries_1m") entries) and \`$bin/mktree $tree_200k --entries 200000\` ($(grouped "$entries_200k") entries), generator version $version."
    echo "- Each figure: the median wall time of $runs measured runs (warm: after $(plural "$warmups" warm-up); cold: caches dropped before each run), timed around the whole process. Peak RSS: GNU time's maximum resident set size (the scan program's own peak_rss_bytes where GNU time is missing). Entries/s and bytes/entry use the tree's entry count below the root."
    [ $have_time = 1 ] || echo "- GNU time is not installed (apt-get install time): peak memory only for the scan program."
} >"$work/report"

# ---- warm cache -------------------------------------------------------------------------

compare warm "$tree_1m" "$entries_1m" full
section "Warm cache, $(grouped "$entries_1m") entries"
compare warm "$tree_200k" "$entries_200k" short
section "Warm cache, $(grouped "$entries_200k") entries"

# ---- cold cache -------------------------------------------------------------------------

if [ "$cold" = 0 ]; then
    printf '\n## Cold cache\n\nSkipped (TARNWICK_BENCH_COLD=0).\n' >>"$work/report"
elif ! (drop_caches) 2>/dev/null; then
    say "cold-cache runs skipped: /proc/sys/vm/drop_caches is not writable here (needs root)"
    printf '\n## Cold cache\n\nSkipped: /proc/sys/vm/drop_caches is not writable here (needs root).\n' >>"$work/report"
else
    compare cold "$tree_1m" "$entries_1m" full
    section "Cold cache (echo 3 > /proc/sys/vm/drop_caches before each run), $(grouped "$entries_1m") entries"
fi

{
    echo
    echo "## Totals each program printed (last warm run)"
    echo
    echo "scan and baseline count every entry below the root, hard links wherever they stand; du and gdu print allocated bytes with the root folder included and hard links counted once."
    echo
    echo "| Program | items | allocated | logical | peak workers |"
    echo "|---|---:|---:|---:|---:|"
    cat "$work/totals"
} >>"$work/report"

# ---- other benchmark programs -----------------------------------------------------------

for program in "$bin"/*; do
    name=$(basename "$program")
    case "$name" in mktree | baseline | scan) continue ;; esac
    [ -f "$program" ] && [ -x "$program" ] || continue
    say "running $name"
    status=0
    timeout 900 "$program" >"$work/other" 2>&1 || status=$?
    {
        echo
        echo "## $name"
        echo
        echo "\`$program\` (exit status $status)"
        echo
        echo '```'
        cat "$work/other"
        echo '```'
    } >>"$work/report"
done

say "command line against the running app"
{
    echo
    echo "## Command line (bench/cli.sh)"
    echo
    echo "\`bash bench/cli.sh $build $tree_1m\`"
    echo
    bash "$here/cli.sh" "$build" "$tree_1m" 2>&1 || echo "(bench/cli.sh failed)"
} >>"$work/report"

printf '\nLoad average at the end: %s.\n' "$(cut -d' ' -f1-3 /proc/loadavg)" >>"$work/report"
cp "$work/report" "$report"
cat "$report"
say "report written to $report"
