#!/usr/bin/env bash
# The manual page and the completions as the shells and man read them: no roff warnings,
# every command that `tarnwick help` lists is documented and completes, and option values
# complete from their choices, or with folders.
set -euo pipefail
exe=$1 docs=$2
fail() { echo "generated-docs: $*" >&2; exit 1; }

# The command names of the help's listing: its indented "name  summary" lines.
mapfile -t commands < <("$exe" help | sed -n '/^How it runs/,/^Typical tasks/p' | sed -n 's/^  \([a-z-]\+\)  .*/\1/p')
[ ${#commands[@]} -ge 10 ] || fail "found only ${#commands[@]} commands in the help"

warnings=$(LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 -Z "$docs/tarnwick.1" 2>&1 >/dev/null)
[ -z "$warnings" ] || fail "man reports: $warnings"
page=$(LC_ALL=C.UTF-8 MANWIDTH=200 man -E UTF-8 -l "$docs/tarnwick.1" 2>/dev/null)
for name in "${commands[@]}"; do
  grep -qE "^   $name( |\$)" <<<"$page" || fail "the manual has no section for $name"
done

# bash, through the bash-completion package's helpers as an interactive shell loads them.
bash_complete() {
  bash -c '
    source /usr/share/bash-completion/bash_completion
    source "$1"; shift
    COMP_WORDS=("$@"); COMP_CWORD=$(( $# - 1 )); COMP_LINE="$*"; COMP_POINT=${#COMP_LINE}
    _tarnwick tarnwick "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD-1]}"
    printf "%s\n" "${COMPREPLY[@]}"' bash "$docs/tarnwick.bash" "$@"
}
first=$(bash_complete tarnwick "")
for name in "${commands[@]}"; do
  grep -qx "$name" <<<"$first" || fail "bash does not complete the command $name"
done
[ "$(bash_complete tarnwick changes --period we)" = week ] || fail "bash does not complete --period we to week"
grep -qx -- --min-size <<<"$(bash_complete tarnwick find --)" || fail "bash does not offer find's --min-size"
grep -qx -- --json <<<"$(bash_complete tarnwick find --)" || fail "bash does not offer --json"
[ "$(bash_complete tarnwick help resc)" = rescan ] || fail "bash does not complete help's command"

# fish runs its own completion engine on a command line.
fish_complete() { fish -c "source '$docs/tarnwick.fish'; complete -C '$1'" | cut -f1; }
fish_first=$(fish_complete "tarnwick ")
for name in "${commands[@]}"; do
  grep -qx "$name" <<<"$fish_first" || fail "fish does not complete the command $name"
done
grep -qx week <<<"$(fish_complete 'tarnwick changes --period ')" || fail "fish does not offer week for --period"
grep -qx -- --min-size <<<"$(fish_complete 'tarnwick find --')" || fail "fish does not offer find's --min-size"

# A folder's option completes folders, not files.
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir "$scratch/prom-dir" && touch "$scratch/prom-file"
[ "$(cd "$scratch" && bash_complete tarnwick metrics --write pro)" = prom-dir ] || fail "bash does not complete --write with folders only"
[ "$(cd "$scratch" && fish_complete 'tarnwick metrics --write prom')" = prom-dir/ ] || fail "fish does not complete --write with folders only"

# zsh's completion system needs a terminal to run; the function must at least parse.
zsh -n "$docs/_tarnwick" || fail "zsh cannot parse _tarnwick"
echo "generated-docs: ok"
