#!/usr/bin/env bash
# Checks the HIDL interface packages with the platform's hidl-gen: they parse, their frozen
# hashes and generated Android.bp files match what is committed, and the package types keep
# the sizes the transport layout needs.
#
# Usage: tools/checks/check_interfaces.sh            check, exit 1 on any difference
#        tools/checks/check_interfaces.sh --update   rewrite current.txt files and Android.bp files
set -u

# Our interface root: package prefix and its directory. Everything below derives from these.
ROOT_PKG=vendor.zorv.zorvprovider
ROOT_DIR=interfaces

# Stand-ins for the platform packages ours import (their real roots are hardware/interfaces
# and system/libhidl/transport on a device).
PLATFORM_ROOTS=(
    android.hardware:host/interfaces/hal/android/hardware
    android.hidl:host/interfaces/hal/android/hidl
)

# Sizes the transport layout fixes for our types (struct name in ROOT_PKG.zorvprovider@2.4).
TYPES_PKG=${ROOT_PKG}.zorvprovider@2.4
EXPECTED_SIZES="Crop 16
SceneControl 40
TrackControl 64
CameraInfoEntry 16
CameraInfo 88"

cd "$(dirname "$0")/../.." || exit 2
command -v hidl-gen >/dev/null || { echo "hidl-gen not found (apt-get install hidl-gen)" >&2; exit 2; }

update=0
[ "${1:-}" = "--update" ] && update=1

ROOT_OPTS=(-R -r "${ROOT_PKG}:${ROOT_DIR}")
for r in "${PLATFORM_ROOTS[@]}"; do ROOT_OPTS+=(-r "$r"); done

TMP=$(mktemp -d)
trap 'rm -rf "$TMP"' EXIT
failed=0
fail() {
    echo "FAIL: $*" >&2
    failed=1
}
# Later steps cannot run while an earlier one fails (hidl-gen refuses the packages then).
stop_if_failed() {
    [ $failed = 0 ] || exit 1
}

# Lists the packages under a root directory: <root>/a/b/1.0/*.hal -> <prefix>.a.b@1.0.
packages_in() {
    local prefix=$1 dir=$2
    find "$dir" -name '*.hal' -printf '%h\n' | sort -u | while read -r d; do
        local rel=${d#"$dir"/}
        local ver=${rel##*/} path=${rel%/*}
        echo "${prefix}.${path//\//.}@${ver}"
    done
}

hidl() {
    hidl-gen -p . "${ROOT_OPTS[@]}" "$@"
}

# 1. Hashes. hidl-gen treats every package listed in a root's current.txt as frozen and refuses
# to parse a changed one, so hashes are compared first, with a message that says what to do.
for root in "${ROOT_PKG}:${ROOT_DIR}" "${PLATFORM_ROOTS[@]}"; do
    prefix=${root%%:*} dir=${root#*:}
    : >"$TMP/current.txt"
    for pkg in $(packages_in "$prefix" "$dir"); do
        hidl -L hash "$pkg" >>"$TMP/current.txt" || fail "hidl-gen -L hash $pkg"
    done
    if [ $update = 1 ]; then
        cp "$TMP/current.txt" "$dir/current.txt"
    elif ! diff -u "$dir/current.txt" "$TMP/current.txt" >"$TMP/diff"; then
        cat "$TMP/diff" >&2
        fail "$dir/current.txt does not match the .hal files under $dir." \
            "If the interface change is intended, run $0 --update and commit the result."
    fi
done

stop_if_failed

# 2. Every package parses and resolves its imports (also enforces the frozen hashes).
all_pkgs=$(packages_in "$ROOT_PKG" "$ROOT_DIR")
for root in "${PLATFORM_ROOTS[@]}"; do
    all_pkgs+=" $(packages_in "${root%%:*}" "${root#*:}")"
done
for pkg in $all_pkgs; do
    hidl -L check "$pkg" || fail "hidl-gen -L check $pkg"
done

stop_if_failed

# 3. Generated Android.bp files: hidl-gen writes OUT/<root dir>/<package dirs>/<ver>/Android.bp.
for pkg in $(packages_in "$ROOT_PKG" "$ROOT_DIR"); do
    hidl -o "$TMP/bp" -L androidbp "$pkg" || fail "hidl-gen -L androidbp $pkg"
done
(cd "$TMP/bp" && find . -name Android.bp | sort) >"$TMP/bp.list"
while read -r f; do
    f=${f#./}
    if [ $update = 1 ]; then
        cp "$TMP/bp/$f" "$f"
    elif ! diff -u "$f" "$TMP/bp/$f" >"$TMP/diff" 2>&1; then
        cat "$TMP/diff" >&2
        fail "$f differs from what hidl-gen -L androidbp generates." \
            "Run $0 --update and commit the result."
    fi
done <"$TMP/bp.list"

stop_if_failed

# 4. Type sizes, read from the static_asserts in the generated C++ header.
hidl -o "$TMP/h" -L c++-headers "$TYPES_PKG" || fail "hidl-gen -L c++-headers $TYPES_PKG"
types_h="$TMP/h/$(echo "${TYPES_PKG%@*}" | tr . /)/${TYPES_PKG#*@}/types.h"
while read -r name size; do
    ns="::$(echo "${TYPES_PKG%@*}" | sed 's/\./::/g')::V$(echo "${TYPES_PKG#*@}" | tr . _)"
    actual=$(sed -n "s/^static_assert(sizeof(${ns}::${name}) == \([0-9]*\).*/\1/p" "$types_h" 2>/dev/null)
    [ "$actual" = "$size" ] || fail "${TYPES_PKG}::${name} is ${actual:-missing} bytes, must be ${size}"
done <<<"$EXPECTED_SIZES"

if [ $failed = 0 ]; then
    [ $update = 1 ] && echo "interfaces: updated" || echo "interfaces: OK"
fi
exit $failed
