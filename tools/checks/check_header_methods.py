#!/usr/bin/env python3
"""Checks that the host C++ interface headers declare each interface's methods in .hal order.

The host build uses hand-written headers in place of the generated ones, and the method order
is the virtual table (slot) order, so a header that drifts from its .hal breaks the binary
layout silently. For every interface .hal in interfaces/ and the listed platform stand-ins,
this compares the .hal's method names, in order, with the lines
    virtual ::android::hardware::Return<...> name(
of host/interfaces/include/<package path>/<version>/I<Name>.h. Exit 1 on any mismatch.
"""

import itertools
import pathlib
import re
import sys

REPO = pathlib.Path(__file__).resolve().parents[2]
INTERFACE_DIR = REPO / "interfaces"
HEADER_DIR = REPO / "host" / "interfaces" / "include"
# Platform interfaces ours derive from, whose host headers must keep the platform's order.
STAND_INS = [REPO / "host/interfaces/hal/android/hardware/camera/provider/2.4/ICameraProvider.hal"]

# The declaration may be wrapped after the return type, as clang-format does for long ones.
HEADER_METHOD = re.compile(r"^\s*virtual\s+::android::hardware::Return<[^;{]*?>\s+(\w+)\s*\(", re.M)


def strip_comments_and_annotations(text):
    text = re.sub(r"/\*.*?\*/", " ", text, flags=re.S)
    text = re.sub(r"//[^\n]*", " ", text)
    # Annotation arguments may hold braces, which would look like nested types.
    return re.sub(r"@[A-Za-z_]\w*(\s*\([^)]*\))?", " ", text)


def hal_package(text, path):
    m = re.search(r"\bpackage\s+([\w.]+)@(\d+)\.(\d+)\s*;", text)
    if not m:
        raise ValueError(f"{path}: no package statement")
    return m.group(1), f"{m.group(2)}.{m.group(3)}"


def hal_methods(text, path):
    """Method names of the interface in declaration order; nested type declarations are skipped."""
    m = re.search(r"\binterface\s+(\w+)[^{]*\{", text)
    if not m:
        raise ValueError(f"{path}: no interface declaration")
    name, i, depth = m.group(1), m.end(), 1
    statements, current = [], []
    while depth > 0:
        if i >= len(text):
            raise ValueError(f"{path}: unterminated interface {name}")
        c = text[i]
        if c == "{":
            depth += 1
        elif c == "}":
            depth -= 1
        if depth == 1 and c == ";":
            statements.append("".join(current))
            current = []
        elif depth >= 1 and not (depth == 1 and c == "}"):
            current.append(c)
        i += 1
    methods = []
    for st in statements:
        if "{" in st:  # nested struct/enum/union
            continue
        mm = re.match(r"\s*(?:oneway\s+)?(\w+)\s*\(", st)
        if mm:
            methods.append(mm.group(1))
        elif st.strip() and not re.match(r"\s*typedef\b", st):
            raise ValueError(f"{path}: cannot read statement {st.strip()!r}")
    return name, methods


def header_methods(path):
    return HEADER_METHOD.findall(path.read_text())


def check(hal):
    text = strip_comments_and_annotations(hal.read_text())
    package, version = hal_package(text, hal)
    name, expected = hal_methods(text, hal)
    header = HEADER_DIR.joinpath(*package.split("."), version, f"{name}.h")
    hal_rel, header_rel = hal.relative_to(REPO), header.relative_to(REPO)
    if not header.is_file():
        print(f"FAIL: {header_rel} is missing (declares {package}@{version}::{name} of {hal_rel})")
        return False
    actual = header_methods(header)
    if actual == expected:
        print(f"ok: {header_rel} ({len(actual)} methods)")
        return True
    print(f"FAIL: methods of {header_rel} differ from {hal_rel} (slot order matters):")
    width = max(len(n) for n in expected + actual + [".hal"]) + 2
    print(f"      slot  {'.hal':<{width}}header")
    for slot, (want, got) in enumerate(itertools.zip_longest(expected, actual, fillvalue="-")):
        mark = " " if want == got else "!"
        print(f"    {mark} {slot:<5} {want:<{width}}{got}")
    return False


def main():
    hals = sorted(INTERFACE_DIR.rglob("I*.hal")) + STAND_INS
    ok = True
    for hal in hals:
        try:
            ok &= check(hal)
        except (OSError, ValueError) as e:
            print(f"FAIL: {e}")
            ok = False
    return 0 if ok else 1


if __name__ == "__main__":
    sys.exit(main())
