#!/usr/bin/env bash
# installed_test.sh -- the Debian package as a user meets it, unpacked into a scratch root: its
# programs, man pages, desktop entry, file types and completion, against the build tree.
#   tests/packaging/installed_test.sh DEB BUILD_DIR
set -euo pipefail
DEB="$1" BUILD="$2"
ROOT="$(cd "$(dirname "$0")/../.." && pwd)"
SCRATCH="$(mktemp -d)"
trap 'rm -rf "$SCRATCH"' EXIT
dpkg -x "$DEB" "$SCRATCH/root"
USR="$SCRATCH/root/usr"
failures=0
check() {  # check WHAT COMMAND...: runs COMMAND, says ok or FAIL
  local what="$1"
  shift
  if "$@"; then echo "ok    $what"; else echo "FAIL  $what"; failures=$((failures + 1)); fi
}
same() { [ "$1" = "$2" ] || { printf '  got:      %s\n  expected: %s\n' "$1" "$2"; return 1; }; }

# Both programs print the package's version; the window needs no display for it.
version="$(dpkg-deb -f "$DEB" Version)"
nodisplay=(env -u DISPLAY -u WAYLAND_DISPLAY QT_QPA_PLATFORM=xcb)
check "trelvane-cli --version" same "$("$USR/bin/trelvane-cli" --version)" "trelvane-cli (Trelvane) $version"
check "trelvane --version, no display" same "$("${nodisplay[@]}" "$USR/bin/trelvane" --version)" \
  "trelvane (Trelvane) $version"
check "trelvane --help, no display" same "$("${nodisplay[@]}" "$USR/bin/trelvane" --help | head -n 1)" \
  "Usage: trelvane [OPTION]... [LONG [SHORT]]"

# The installed comparison writes the build tree's bytes, the SVG drawn without a display.
compare() {  # compare PROGRAM OUTDIR
  mkdir -p "$2"
  "$1" compare "$ROOT/examples/HUMHBB.fa" "$ROOT/examples/V00508.fa" --seed 1 --quiet \
    --report "$2/report.txt" --rows "$2/rows.txt" --result "$2/result.txt" --svg "$2/profile.svg" \
    --bigwig "$2/profile.bw"
}
compare "$USR/bin/trelvane-cli" "$SCRATCH/installed"
compare "$BUILD/src/cli/trelvane-cli" "$SCRATCH/built"
# profile.bw: libBigWig, which the program opens only to write one, found where installed.
for f in report.txt rows.txt result.txt profile.svg profile.bw; do
  check "compare --seed 1: $f as from the build tree" cmp "$SCRATCH/installed/$f" "$SCRATCH/built/$f"
done
check "the result file's first line" same "$(head -n 1 "$SCRATCH/installed/result.txt")" "Trelvane comparison"

# The man pages render without a warning, each with its name line.
manual() {  # manual PAGE NAMELINE
  local text
  text="$(MANWIDTH=80 man --warnings -l "$USR/share/man/man1/$1.1.gz" 2>"$SCRATCH/man-warnings")" || return 1
  [ ! -s "$SCRATCH/man-warnings" ] || { cat "$SCRATCH/man-warnings"; return 1; }
  grep -qF -- "$2" <<<"$text" || { echo "  no '$2' in $1(1)"; return 1; }
}
check "man trelvane" manual trelvane "trelvane - draw identity profiles of two DNA sequences in a window"
check "man trelvane-cli" manual trelvane-cli "trelvane-cli - identity profiles of two DNA sequences, without a window"
check "man trelvane-cli: the options of compare" manual trelvane-cli "--kernel NAME"

# The desktop entry, its program and its icon.
desktop="$USR/share/applications/trelvane.desktop"
check "desktop-file-validate" desktop-file-validate "$desktop"
check "the entry starts the installed window with the files" grep -qx 'Exec=trelvane %F' "$desktop"
check "the entry's icon" test -s "$USR/share/icons/hicolor/scalable/apps/trelvane.svg"

# The file types build into a MIME database: result files by their first line, FASTA by name.
cp -r "$USR/share/mime" "$SCRATCH/mime"
update-mime-database "$SCRATCH/mime" 2>/dev/null
check "MIME magic of a result file" grep -aqF "Trelvane comparison" "$SCRATCH/mime/magic"
check "MIME glob of a FASTA file" grep -qx '50:chemical/seq-na-fasta:\*\.fa' "$SCRATCH/mime/globs2"

# Completion offers the commands, and every option that a command's --help names.
completes() {  # completes EXPECTED WORD...: the words typed, the last one being completed
  local got
  got="$(bash -c 'source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _trelvane_cli
                  printf "%s\n" "${COMPREPLY[@]}" | sort' - "$USR/share/bash-completion/completions/trelvane-cli" "$@")"
  same "$got" "$EXPECTED"
}
EXPECTED=compare check "completion: co" completes trelvane-cli co
EXPECTED=$'avx2\navx2-i16\navx2-u8\navx512\navx512-i16\navx512-u8' check "completion: --kernel av" completes trelvane-cli compare --kernel av
for command in compare redraw stack batch check-update; do
  EXPECTED="$("$USR/bin/trelvane-cli" "$command" --help | grep -o -- '--[a-z0-9][a-z0-9-]*' | sort -u)"
  check "completion: the options of $command" completes "$USR/bin/trelvane-cli" "$command" x --
done

if ((failures)); then
  echo "installed_test: $failures failed" >&2
  exit 1
fi
