#!/usr/bin/env python3
"""Checks that the device build (Android.bp) and the host build (CMake) compile the same sources.

For each device module below, every file the module names in Android.bp (srcs, init_rc,
vintf_fragments) must exist, and its srcs must equal the sources the host build globs for the
same module (the file(GLOB <var> ...) patterns of CMakeLists.txt). Exit 1 on any difference,
naming the file and where it is missing.
"""

import glob
import pathlib
import re
import sys

REPO = pathlib.Path(__file__).resolve().parents[2]
BP = REPO / "Android.bp"
CMAKE = REPO / "CMakeLists.txt"
# Device module name -> the CMake variable that globs the host build's sources of that module.
MODULES = {
    "vendor.zorv.zorvprovider.zorvprovider@2.4-impl": "PRODUCT_SRCS",
    "vendor.zorv.zorvprovider.zorvprovider@2.4-service": "SERVICE_SRCS",
}
FILE_LISTS = ("srcs", "init_rc", "vintf_fragments")


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


def bp_list(block, prop):
    """The strings of the list property `prop` of a module block; None if it is absent."""
    m = re.search(r"^\s*" + prop + r"\s*:\s*\[(.*?)\]", block, re.S | re.M)
    return re.findall(r'"([^"]+)"', m.group(1)) if m else None


def cmake_patterns(text, var):
    m = re.search(r"file\s*\(\s*GLOB\s+" + var + r"\b([^)]*)\)", text)
    if not m:
        raise ValueError(f"CMakeLists.txt: no file(GLOB {var} ...)")
    return [w for w in m.group(1).split() if w != "CONFIGURE_DEPENDS"]


def check_module(bp_text, cmake_text, module, var, problems):
    """Appends the module's differences to problems; returns its srcs count and patterns."""
    block = bp_module_block(bp_text, module)
    listed = bp_list(block, "srcs")
    if listed is None:
        raise ValueError(f"Android.bp: module {module} has no srcs list")
    patterns = cmake_patterns(cmake_text, var)
    for prop in FILE_LISTS:
        for f in bp_list(block, prop) or []:
            if not (REPO / f).is_file():
                problems.append(f"{f} is listed in the {prop} of {module} in Android.bp "
                                "but does not exist; remove it from Android.bp or add the file")
    globbed = sorted({str(pathlib.Path(p).relative_to(REPO))
                      for pat in patterns for p in glob.glob(str(REPO / pat))})
    for src in globbed:
        if src not in listed:
            problems.append(f"{src} is compiled by the host build ({var} in CMakeLists.txt) "
                            f"but missing from the srcs of {module} in Android.bp; add it there")
    for src in listed:
        if (REPO / src).is_file() and src not in globbed:
            problems.append(f"{src} is in the srcs of {module} in Android.bp but not compiled "
                            f"by the host build ({var} in CMakeLists.txt); add it there")
    return len(listed), patterns


def main():
    problems, summary = [], []
    try:
        bp_text = re.sub(r"//[^\n]*", "", BP.read_text())
        cmake_text = CMAKE.read_text()
        for module, var in MODULES.items():
            count, patterns = check_module(bp_text, cmake_text, module, var, problems)
            summary.append(f"{module}: {count} files match {' '.join(patterns)}")
    except (OSError, ValueError) as e:
        print(f"FAIL: {e}")
        return 1
    for p in problems:
        print(f"FAIL: {p}")
    if problems:
        return 1
    print("sources: OK (" + "; ".join(summary) + ")")
    return 0


if __name__ == "__main__":
    sys.exit(main())
