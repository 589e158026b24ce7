#!/usr/bin/env python3
"""Checks that every #include follows the layer diagram of docs/ARCHITECTURE.md.

The diagram is the ```layers block there: one line a layer,
    name: the files and folders it owns | the layers it may include
A file belongs to the layer owning the longest path that prefixes it; an include resolves to a file
of the tree (a public header <scrivlet/x.h>, a quoted path from src/ or from the including folder).
A file may include its own layer and the layers listed; anything else is an upward or sideways
include, printed with its file and line, and the check fails. Includes that resolve to no file of
the tree (system and third-party headers, generated headers) are not checked.
"""
import os
import re
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
SOURCES = ("src", "include", "qt", "tools")
INCLUDE_DIRS = ("include", "src", "qt/include", "qt/quick/include", "qt", "tools/scrivlet")


def read_diagram():
    text = open(os.path.join(ROOT, "docs", "ARCHITECTURE.md"), encoding="utf-8").read()
    block = re.search(r"```layers\n(.*?)```", text, re.S)
    if not block:
        sys.exit("docs/ARCHITECTURE.md has no ```layers block")
    owners, allowed = {}, {}
    for line in block.group(1).splitlines():
        line = line.split("#", 1)[0].strip()
        if not line:
            continue
        name, rest = (part.strip() for part in line.split(":", 1))
        paths, _, deps = rest.partition("|")
        for path in paths.split():
            owners[path.rstrip("/")] = name
        allowed[name] = set(deps.split()) | {name}
    for name, deps in allowed.items():
        unknown = deps - set(allowed)
        if unknown:
            sys.exit(f"layer {name} may include unknown layers: {' '.join(sorted(unknown))}")
    return owners, allowed


def owner_of(path, owners):
    best = None
    for prefix, name in owners.items():
        if path == prefix or path.startswith(prefix + "/"):
            if best is None or len(prefix) > len(best[0]):
                best = (prefix, name)
    return best[1] if best else None


def resolve(include, including_file):
    candidates = [os.path.join(os.path.dirname(including_file), include)]
    candidates += [os.path.join(d, include) for d in INCLUDE_DIRS]
    for candidate in candidates:
        candidate = os.path.normpath(candidate)
        if os.path.isfile(os.path.join(ROOT, candidate)):
            return candidate
    return None


def main():
    owners, allowed = read_diagram()
    failures, files = [], 0
    for top in SOURCES:
        for folder, _, names in os.walk(os.path.join(ROOT, top)):
            for name in names:
                if not name.endswith((".h", ".cpp")):
                    continue
                path = os.path.relpath(os.path.join(folder, name), ROOT)
                layer = owner_of(path, owners)
                if layer is None:
                    failures.append(f"{path}: in no layer of the diagram")
                    continue
                files += 1
                for number, line in enumerate(open(os.path.join(ROOT, path), encoding="utf-8"), 1):
                    match = re.match(r'\s*#\s*include\s*[<"]([^>"]+)[>"]', line)
                    target = match and resolve(match.group(1), path)
                    if not target:
                        continue
                    target_layer = owner_of(target, owners)
                    if target_layer not in allowed[layer]:
                        failures.append(f"{path}:{number}: {layer} includes {target} of {target_layer}")
    for failure in failures:
        print(failure)
    print(f"layers: {files} files, {len(failures)} includes against the diagram")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
