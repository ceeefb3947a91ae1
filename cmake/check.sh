#!/usr/bin/env bash
# The checks of "./dev check", run on a tree whose preset debug is built. Each names what it found and
# what to do; all run, then the result tells how many found something.
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

jobs=$(nproc)
found=0
begin() { printf '\033[1m==\033[0m checking %s\n' "$1"; }
report() { # output of a check, empty when it found nothing; what to do
    [ -z "$1" ] && return
    printf '%s\n     %s\n' "$1" "$2" >&2
    found=$((found + 1))
}

mapfile -t sources < <(git ls-files '*.cpp')
mapfile -t headers < <(git ls-files '*.h')

begin "formatting"
report "$(clang-format --dry-run "${sources[@]}" "${headers[@]}" 2>&1 | grep -E 'warning' | cut -d: -f1 | sort | uniq -c)" \
    "Run clang-format -i on these files."

begin "static analysis of what the last 20 commits touch"
base=$(git rev-parse -q --verify HEAD~20 || git hash-object -t tree /dev/null)
report "$(git diff --name-only --diff-filter=d "$base" HEAD -- '*.cpp' |
    while read -r file; do grep -qF "\"$PWD/$file\"" build/debug/compile_commands.json && echo "$file"; done |
    xargs -r -P "$jobs" -n 1 clang-tidy --quiet -p build/debug 2>/dev/null)" \
    "Mend what clang-tidy names above."

begin "that each header stands alone"
flags=(-std=c++17 -fPIC -fsyntax-only -x c++
    '-DOCULINEX_BINARY_DIR=""' '-DOCULINEX_SOURCE_DIR=""' # the tests' own, from CMake
    -IArithmParamMgr -IOculinexQTStandAlone -Iplugins -Ihosts -Ihosts/oculinex-workbench -Itests
    -Ibuild/debug/ArithmParamMgr -Ibuild/debug/OculinexQTStandAlone
    -Ibuild/debug/OculinexQTStandAlone/OculinexQTStandAlone_autogen/include)
read -ra packages < <(pkg-config --cflags Qt5Widgets Qt5Test opencv4)
report "$(printf '%s\n' "${headers[@]}" |
    xargs -P "$jobs" -I{} sh -c 'out=$(g++ "$@" -I"$(dirname "{}")" "{}" 2>&1) || printf "%s\n" "{}: $out" | head -5' \
        sh "${flags[@]}" "${packages[@]}")" \
    "A header includes or declares all that it names."

# Every include of a project's header, as "includer included", both as paths in the tree.
includes() {
    git grep -nE '^#include "' -- '*.h' '*.cpp' | sed -E 's/^([^:]+):[0-9]+:#include "([^"]+)".*/\1 \2/' |
        while read -r file name; do
            for folder in "$(dirname "$file")" OculinexQTStandAlone ArithmParamMgr plugins hosts; do
                [ -f "$folder/$name" ] && { echo "$file $folder/$name"; break; }
            done
        done
}

begin "include cycles"
report "$(includes | tsort 2>&1 >/dev/null | grep -v 'input contains a loop')" \
    "These files include each other in a circle: declare forward in one of the headers."

begin "who includes whom"
# From the left to the right: a file includes only what stands in its own or a later layer.
report "$(includes | awk '
    function layer(path) {
        if (path ~ /^(hosts|tests|examples|bench|fuzz|soak|plugins)\//) return 0
        if (path ~ /^OculinexQTStandAlone\/OculinexQTStandAlone\.(h|cpp)$/) return 1
        if (path ~ /^OculinexQTStandAlone\/OculinexQTStandAloneInQt\./) return 2
        if (path ~ /^OculinexQTStandAlone\/taskMgr\/taskstatus\.h$/) return 9
        if (path ~ /^OculinexQTStandAlone\/taskMgr\//) return 3
        # The registration files are the one place where a registry knows what is built in.
        if (path ~ /^OculinexQTStandAlone\/(arithmMgr\/arithmregister|DataSource\/[a-z]+)\.cpp$/) return 4
        if (path ~ /^OculinexQTStandAlone\/(arithmMgr|DataSource)\/[a-z]+\.h$/) return 6
        if (path ~ /^OculinexQTStandAlone\/(arithmMgr)\//) return 4
        if (path ~ /^OculinexQTStandAlone\/(DataSource\/MemoryDiskCallBack|SaveFile|LoadFile)\//) return 5
        if (path ~ /^OculinexQTStandAlone\/(MemoryDisk|Drawing\/drawingexecute|Drawing\/dlg)/) return 6
        if (path ~ /^OculinexQTStandAlone\/(globalfunction|configtext|view)/) return 7
        if (path ~ /^OculinexQTStandAlone\/Drawing\//) return 8
        if (path ~ /^ArithmParamMgr\//) return 10
        return 9
    }
    layer($1) > layer($2) { print "   " $1 " includes " $2 }')" \
    "docs/architecture.md tells which part may know which."

begin "words"
report "$(git grep -nIiE '\bspec(ification)?(\.md)?\b|\bPart [0-9]+\.[0-9]|\bthe iss[u]e\b|\biss[u]e #?[0-9]|/wor[k]/|/home[/]' \
    -- . ':!cmake/check.sh' ':!*.svg' | grep -viE 'format spec|type spec|specifi(c|er)')" \
    "The project speaks of itself alone, and of no machine's paths."

begin "README"
report "$(grep -oE '\./dev [a-z]+' README.md docs/*.md plugins/*/*/README.md 2>/dev/null | sort -u | sed 's/.*\.\/dev //' |
    while read -r command; do ./dev help | grep -qE "^  $command\b" || echo "   ./dev $command is not a command"; done
    grep -oE '\]\([^)#:]+' README.md | cut -c3- | while read -r path; do
        [ -e "$path" ] || echo "   README.md links to $path, which does not exist"; done)" \
    "Mend the README or the command."

if [ "$found" -gt 0 ]; then
    echo "dev: $found checks found something" >&2
    exit 1
fi
echo "All checks passed."
