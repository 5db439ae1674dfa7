#!/usr/bin/env bash
# Unpacks the .deb into a temporary root and runs what a user installs: the command line from
# usr/bin, a scan of a small tree in a private home, and the window's library from its
# installed place, loaded under the offscreen platform.
set -euo pipefail
deb=$1
version=$2

root=$(mktemp -d)
home=$root/private
stop_apps() {
  local pids=() p
  for p in /proc/[0-9]*; do
    { tr '\0' '\n' <"$p/environ"; } 2>/dev/null | grep -qx "HOME=$home/home" && pids+=("${p#/proc/}")
  done
  [ ${#pids[@]} -gt 0 ] && kill "${pids[@]}" 2>/dev/null
  for _ in $(seq 50); do
    kill -0 "${pids[@]}" 2>/dev/null || break
    sleep 0.1
  done
  return 0
}
trap 'stop_apps; rm -rf "$root"' EXIT
fail() { echo "installed-package: $*" >&2; exit 1; }

dpkg-deb -x "$deb" "$root"
exe=$root/usr/bin/tarnwick
[ -x "$exe" ] || fail "no usr/bin/tarnwick in $deb"
module=$(find "$root/usr/lib" -name libtarnwick-desktop.so)
[ -n "$module" ] || fail "no window library in $deb"

mkdir -p "$home/home" "$home/data" "$home/config" "$home/run"
chmod 700 "$home/run"
export HOME=$home/home XDG_DATA_HOME=$home/data XDG_CONFIG_HOME=$home/config XDG_CACHE_HOME=$home/cache XDG_RUNTIME_DIR=$home/run
unset DISPLAY WAYLAND_DISPLAY

"$exe" help | grep -q "^Usage: .*tarnwick COMMAND" || fail "help has no usage line"
[ "$("$exe" version)" = "Tarnwick $version" ] || fail "version is '$("$exe" version)', not $version"
[ "$("$exe" --version)" = "Tarnwick $version" ] || fail "--version differs from version"

# Three files of known sizes in two folders.
tree=$HOME/tree
mkdir -p "$tree/big" "$tree/small"
head -c 3000000 /dev/zero >"$tree/big/a.bin"
head -c 1000000 /dev/zero >"$tree/big/b.bin"
head -c 20000 /dev/zero >"$tree/small/c.txt"

# The tool starts the app for the scan; with a platform named, the app opens its window.
export QT_QPA_PLATFORM=offscreen
"$exe" scan "$tree" >/dev/null || fail "scan failed"
"$exe" wait --timeout 60 >/dev/null || fail "wait failed"
summary=$("$exe" summary "$tree" --json)
logical=$(printf '%s' "$summary" | python3 -c 'import json,sys; print(json.load(sys.stdin)["size_bytes"])' 2>/dev/null) \
  || fail "summary is not the JSON expected: $summary"
[ "$logical" -ge 4020000 ] || fail "summary size $logical is below the tree's 4,020,000 bytes"
printf '%s' "$summary" | grep -q '"big"' || fail "summary does not list the folder big: $summary"

app=
for p in /proc/[0-9]*; do
  { tr '\0' '\n' <"$p/environ"; } 2>/dev/null | grep -qx "HOME=$home/home" && app=${p#/proc/}
done
[ -n "$app" ] || fail "no app process left running"
grep -qF "$module" "/proc/$app/maps" || fail "the app did not load $module"
echo "installed-package: ok"
