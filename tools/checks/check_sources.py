#!/usr/bin/env python3
"""Checks that the device build (Android.bp) and the host build (CMake) compile the same sources.

Every file in the srcs of the implementation library in the root Android.bp must exist, and
every product source the host build globs (the PRODUCT_SRCS patterns of CMakeLists.txt) must be
listed there. Exit 1 on any difference, naming the file and where it is missing.
"""

import glob
import pathlib
import re
import sys

REPO = pathlib.Path(__file__).resolve().parents[2]
BP = REPO / "Android.bp"
CMAKE = REPO / "CMakeLists.txt"
MODULE = "vendor.zorv.zorvprovider.zorvprovider@2.4-impl"
CMAKE_VAR = "PRODUCT_SRCS"


def bp_module_block(text, name):
    """The text between the braces of the module whose name property is `name`."""
    for m in re.finditer(r"\b\w+\s*\{", text):
        depth, i = 1, m.end()
        while depth and i < len(text):
            depth += {"{": 1, "}": -1}.get(text[i], 0)
            i += 1
        block = text[m.end():i - 1]
        if re.search(r'^\s*name\s*:\s*"' + re.escape(name) + r'"', block, re.M):
            return block
    raise ValueError(f"Android.bp: no module named {name}")


def bp_srcs(block):
    m = re.search(r"^\s*srcs\s*:\s*\[(.*?)\]", block, re.S | re.M)
    if not m:
        raise ValueError(f"Android.bp: module {MODULE} has no srcs list")
    return re.findall(r'"([^"]+)"', m.group(1))


def cmake_patterns(text):
    m = re.search(r"file\s*\(\s*GLOB\s+" + CMAKE_VAR + r"\b([^)]*)\)", text)
    if not m:
        raise ValueError(f"CMakeLists.txt: no file(GLOB {CMAKE_VAR} ...)")
    return [w for w in m.group(1).split() if w != "CONFIGURE_DEPENDS"]


def main():
    try:
        bp_text = re.sub(r"//[^\n]*", "", BP.read_text())
        listed = bp_srcs(bp_module_block(bp_text, MODULE))
        patterns = cmake_patterns(CMAKE.read_text())
    except (OSError, ValueError) as e:
        print(f"FAIL: {e}")
        return 1

    globbed = sorted({str(pathlib.Path(p).relative_to(REPO))
                      for pat in patterns for p in glob.glob(str(REPO / pat))})
    problems = []
    for src in listed:
        if not (REPO / src).is_file():
            problems.append(f"{src} is listed in the srcs of {MODULE} in Android.bp "
                            "but does not exist; remove it from Android.bp or add the file")
    for src in globbed:
        if src not in listed:
            problems.append(f"{src} is compiled by the host build ({CMAKE_VAR} in CMakeLists.txt) "
                            f"but missing from the srcs of {MODULE} in Android.bp; add it there")
    for p in problems:
        print(f"FAIL: {p}")
    if problems:
        return 1
    print(f"sources: OK ({len(listed)} files in Android.bp match {' '.join(patterns)})")
    return 0


if __name__ == "__main__":
    sys.exit(main())
