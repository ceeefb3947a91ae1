#!/usr/bin/env bash
# run.sh BUILD SOURCE COMPILER CMAKE LIBDIR: installs the build into an empty prefix and uses it from
# outside the tree: sonames, symbols, headers, the example host with CMake and with pkg-config.
set -euo pipefail
build=$1 source=$2 compiler=$3 cmake=$4 libdir=$5
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
fail() { echo "FAILED: $*" >&2; exit 1; }

"$cmake" --install "$build" --prefix "$prefix" >/dev/null
lib=$prefix/$libdir
task=$lib/libOculinexQTStandAlone.so.1 store=$lib/libArithmParamMgr.so.1
export PKG_CONFIG_PATH=$lib/pkgconfig

for file in "$task" "$store"; do
    readelf -d "$file" | grep -q "SONAME.*\[$(basename "$file")\]" || fail "$file has another soname"
    readelf -d "$file" | grep -q NODELETE || fail "$file can be unmapped under a running thread"
    nm -DC --defined-only "$file" | grep gszErrVerMsg >/dev/null || fail "$file does not export gszErrVerMsg"
done

# Nothing of the inside is exported; what a host uses, interface.cpp links.
helpers=$(nm -DC --defined-only "$task" |
    grep -E 'TextBuffer|PluginLoader|TaskRecord|guardedCall|lcTask|lcPlugin' || true)
[ -z "$helpers" ] || fail "internal names are exported: $helpers"

# Each installed header compiles by itself with what pkg-config tells, also where "signals" is no keyword.
read -ra flags < <(pkg-config --cflags OculinexQTStandAlone)
read -ra opencv < <(pkg-config --cflags opencv4)
find "$prefix/include" -name '*.h' | while read -r header; do
    "$compiler" -std=c++17 -fPIC -fsyntax-only -Wall -Wextra -DQT_NO_KEYWORDS -x c++ "${flags[@]}" "${opencv[@]}" \
        -include "$header" /dev/null ||
        fail "$header does not compile by itself"
done

# So do plug-ins, of each kind.
for plugin in probe_algorithm probe_source; do
    "$compiler" -std=c++17 -fPIC -shared "$source/tests/fixtures/$plugin.cpp" "${flags[@]}" -o "$prefix/$plugin.so" ||
        fail "$plugin does not compile with the installed headers"
done

# The plug-in of the guide, made to the letter: its files, then its commands, in an empty folder.
export CXX=$compiler CMAKE_GENERATOR=Ninja
guide=$prefix/guide
mkdir "$guide"
awk -v dir="$guide" '
    /^```/ { out = inside ? "" : $0 == "```sh" ? dir "/commands" : name ? dir "/" name : "/dev/null"
             inside = !inside; name = ""; next }
    inside { print > out; next }
    match($0, /`[A-Za-z.]+\.[a-z]+`[^`]*:$/) { name = substr($0, RSTART + 1); sub(/`.*/, "", name); next }
    /./ { name = "" }' "$source/docs/plugin-guide.md"
for file in "$source"/examples/plugin/algorithm/*; do
    diff "$file" "$guide/$(basename "$file")" || fail "the guide shows another $file than the tree has"
done
cp "$source/examples/pictures/rocket.jpg" "$guide/photo.jpg"
sed -i "s|/opt/oculinex|$prefix|g" "$guide/commands"
(cd "$guide" && bash -ex commands) >"$prefix/out" 2>&1 || fail "the guide's commands: $(cat "$prefix/out")"
for file in photo-1-OutputID.png photo-2-OutputID.png view0.png; do
    [ -s "$guide/$file" ] || fail "the guide's commands wrote no $file: $(cat "$prefix/out")"
done

# Installed hosts find the plug-ins that were installed after them.
for plugin in plain source; do
    { "$cmake" -S "$source/examples/plugin/$plugin" -B "$prefix/$plugin" -DCMAKE_PREFIX_PATH="$prefix" &&
        "$cmake" --build "$prefix/$plugin" && "$cmake" --install "$prefix/$plugin" --prefix "$prefix"; } \
        >"$prefix/out" 2>&1 || fail "examples/plugin/$plugin: $(cat "$prefix/out")"
done
"$prefix/bin/oculinex-run" --list >"$prefix/out"
for plugin in DataSource/Gradient.so baseArithm/Mean.so; do
    grep -q "  $plugin" "$prefix/out" || fail "$plugin is not found"
done

# The host's two ways of finding the library; the interface's types; names that the host has as well.
# Who names the libraries' folder needs to name no more.
read -ra libs < <(pkg-config --libs OculinexQTStandAlone)
libs=("-Wl,--as-needed,-rpath,$lib" "${libs[@]}")
"$compiler" -std=c++17 -fPIC "$source/examples/host/main.cpp" "${flags[@]}" "${libs[@]}" -o "$prefix/host-pkgconfig"
for program in interface capture; do
    "$compiler" -std=c++17 -fPIC "$source/tests/install/$program.cpp" "${flags[@]}" "${libs[@]}" \
        -o "$prefix/$program"
done
"$cmake" -G Ninja -S "$source/examples/host" -B "$prefix/host-cmake" -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_CXX_COMPILER="$compiler" >/dev/null
"$cmake" --build "$prefix/host-cmake" >/dev/null

# The example flows name their files from the top of the tree; what they save stays out of it.
mkdir -p "$prefix/tree/build"
ln -s "$source/examples" "$prefix/tree/"
cd "$prefix/tree"
"$prefix/interface" || fail "interface"
"$prefix/capture" "$source/examples/coins.tasks" || fail "capture"
# Hosts find plug-ins beside themselves; CMake has put them there.
cp -r "$lib/oculinex/." "$prefix/"
for host in "$prefix/host-pkgconfig" "$prefix/host-cmake/host"; do
    "$host" missing.tasks 2>/dev/null && fail "$host takes a missing file for good"
    "$host" examples/coins.tasks 2 >"$prefix/out" 2>&1 || fail "$host: $(cat "$prefix/out")"
    grep -q . "$prefix/out" || fail "$host printed nothing"
    grep -q '^error' "$prefix/out" && fail "$host: $(cat "$prefix/out")"
    [ -s build/demo/inspected-0.png ] || fail "$host saved no picture"
    rm -r build/demo
    "$host" "$source/tests/install/guide.tasks" 1 >"$prefix/out" 2>&1 || fail "$host: $(cat "$prefix/out")"
    grep -qx '[12] stripes, .*' "$prefix/out" || fail "$host with the guide's plug-ins: $(cat "$prefix/out")"
done
echo "installed, found by CMake and pkg-config, and run"
