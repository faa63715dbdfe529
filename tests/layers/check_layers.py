"""Fails when a file of src/ includes a layer above its own, or a layer beside it, or when
includes go round in a circle. A header and its .cpp are one unit: two units that each
include the other are a circle, even when no header includes itself.

Usage: check_layers.py <src folder>"""
import os
import re
import sys

# Each folder's level; a folder may include only folders of a lower level.
LEVELS = {"platform": 0, "common": 1, "jni": 2, "convert": 3, "config": 3, "manager": 4,
          "module": 5}
INCLUDE = re.compile(r'^\s*#\s*include\s+"(\w+)/([^"]+)"')


def units(src):
    """(unit, folder, file, line number, included unit) for every include of src/."""
    for folder in LEVELS:
        for directory, _, files in os.walk(os.path.join(src, folder)):
            for name in sorted(files):
                path = os.path.join(directory, name)
                unit = os.path.splitext(os.path.relpath(path, src))[0]
                with open(path, encoding="utf-8") as text:
                    for number, line in enumerate(text, 1):
                        found = INCLUDE.match(line)
                        if found and found.group(1) in LEVELS:
                            included = found.group(1) + "/" + os.path.splitext(found.group(2))[0]
                            yield unit, folder, path, number, found.group(1), included


def circle_from(graph, start):
    """A path of units from start back to start, or None."""
    stack, seen = [(start, [start])], set()
    while stack:
        unit, path = stack.pop()
        for included in sorted(graph.get(unit, ())):
            if included == start:
                return path + [start]
            if included not in seen:
                seen.add(included)
                stack.append((included, path + [included]))
    return None


def main(src):
    faults, graph = [], {}
    for unit, folder, path, number, target, included in units(src):
        if target != folder and LEVELS[target] >= LEVELS[folder]:
            where = "beside" if LEVELS[target] == LEVELS[folder] else "above"
            faults.append(f"{path}:{number}: {folder}/ includes {target}/, a layer {where} it")
        if included != unit and not unit.startswith("platform/"):
            graph.setdefault(unit, set()).add(included)
    reported = set()
    for unit in sorted(graph):
        circle = circle_from(graph, unit)
        if circle and not reported.intersection(circle):
            reported.update(circle)
            faults.append("include circle: " + " -> ".join(circle))
    for fault in faults:
        print(fault)
    print(f"{len(faults)} layering faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
