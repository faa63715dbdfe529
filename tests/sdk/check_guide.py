#!/usr/bin/env python3
"""The integration guide against the code: every log text and result code in the guide's
tables must be the code's own, and every log text and export result the code has must be
in the guide. Prints each difference; exits 1 when there is one.

    check_guide.py <source folder>
"""
import glob
import os
import re
import sys

ROOT = sys.argv[1]
WSTR_RUN = re.compile(r'WSTR\(\s*"(?:[^"\\]|\\.)*"\s*\)(?:\s*WSTR\(\s*"(?:[^"\\]|\\.)*"\s*\))*'
                      r'|WSTR\(\s*(?:"(?:[^"\\]|\\.)*"\s*)+\)', re.S)
PIECE = re.compile(r'"((?:[^"\\]|\\.)*)"')
# Texts the component writes that are not lines of the log: registry names, class and
# product names, a label put inside other lines.
NOT_LOG_LINES = {"Lumetra Operations for Published Apps", "Invalid DateTime", "Zelmar Server URL",
                 "Verdant"}


def code_texts():
    texts = set()
    for path in glob.glob(os.path.join(ROOT, "src", "**", "*.[ch]*"), recursive=True):
        if "/platform/" in path:
            continue
        source = re.sub(r"//[^\n]*", "", open(path, encoding="utf-8").read())
        for run in WSTR_RUN.finditer(source):
            texts.add("".join(PIECE.findall(run.group(0))).encode().decode("unicode_escape"))
    return texts


def code_log_lines():
    return {t for t in code_texts()
            if re.match(r"[A-Z][A-Za-z]", t) and " " in t and t not in NOT_LOG_LINES
            and not t.startswith("Software\\")}


def guide_table(guide, heading):
    section = guide.split("\n## " + heading + "\n", 1)[1].split("\n## ", 1)[0]
    return [re.findall(r"`([^`]*)`", row)
            for row in section.splitlines() if row.startswith("| `")]


def header_values():
    values = {}
    headers = glob.glob(os.path.join(ROOT, "include", "tarnix", "posix", "*.h"))
    headers += glob.glob(os.path.join(ROOT, "src", "manager", "ResultCodes.h"))
    for path in headers:
        text = open(path, encoding="utf-8").read()
        for name, value in re.findall(r"#define\s+(\w+)\s+\(\(HRESULT\)(0x[0-9A-Fa-f]+)L?\)", text):
            values[name] = int(value, 16)
        for name, value in re.findall(r"(?:#define|constexpr\s+\w+)\s+(ERROR_\w+)\s*=?\s*(\d+)L?", text):
            values[name] = 0x80070000 | int(value)
        for name, value in re.findall(r"(k\w+) = static_cast<HRESULT>\((0x[0-9A-Fa-f]+)\)", text):
            values[name] = int(value, 16)
    values["S_OK"] = 0
    values["S_FALSE"] = 1
    return values


def main():
    guide = open(os.path.join(ROOT, "docs", "integration.md"), encoding="utf-8").read()
    problems = []
    in_guide = {row[0] for row in guide_table(guide, "Log lines")}
    in_code = code_log_lines()
    problems += ["in the guide, not in the code: " + t for t in sorted(in_guide - in_code)]
    problems += ["in the code, not in the guide: " + t for t in sorted(in_code - in_guide)]
    values = header_values()
    sources = " ".join(open(p, encoding="utf-8").read() for p in
                       glob.glob(os.path.join(ROOT, "src", "**", "*.[ch]*"), recursive=True))
    for row in guide_table(guide, "Result codes"):
        code, name = int(row[0], 16), row[1]
        symbol = re.sub(r"HRESULT_FROM_WIN32\((\w+)\)", r"\1", name)
        if values.get(symbol) != code:
            problems.append("%s is not %s" % (name, row[0]))
        if symbol not in sources and row[0].lower() not in sources.lower():
            problems.append("the component never gives %s (%s)" % (row[0], name))
    for problem in problems:
        print(problem)
    print("%d log lines, %d result codes checked" % (len(in_guide), len(guide_table(guide, "Result codes"))))
    return 1 if problems else 0


sys.exit(main())
