#!/usr/bin/python3
"""Runs every example of docs/log-sheets.md, in order, in a scratch folder:

- a fenced block after <!-- file: NAME --> is written to NAME;
- a table after <!-- sheet: NAME --> is written to the workbook NAME with libxlsxwriter's Python
  twin (every cell text, or, when the comment says "General", as a spreadsheet types it: digits
  alone a number, h:mm:ss a time of day);
- each "$ pellago ..." line of a console block runs, and what it prints (standard output and
  error) must be the lines below it;
- a fenced block after <!-- output: NAME --> must be the content of NAME at that point.

Trailing blanks are ignored on every line. Usage: log_sheets_guide_test.py PATH_OF_PELLAGO SOURCE_DIR
"""
import datetime
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

import xlsxwriter

PELLAGO, SOURCE_DIR = sys.argv[1], sys.argv[2]
GUIDE = os.path.join(SOURCE_DIR, "docs", "log-sheets.md")
COMMENT = re.compile(r"<!-- (file|sheet|output): ([^;> ]+)(.*?) -->")
TIME_OF_DAY = re.compile(r"(\d{1,2}):(\d\d):(\d\d)")


def lines_of(text):
    return [line.rstrip() for line in text.rstrip("\n").split("\n")]


def next_line(lines, start, prefix):
    return next(i for i in range(start, len(lines)) if lines[i].startswith(prefix))


def fenced_block(lines, start):
    """The lines of the fenced block opening at or after `start`, and the index after it."""
    start = next_line(lines, start, "```")
    end = next_line(lines, start + 1, "```")
    return [line.rstrip() for line in lines[start + 1:end]], end + 1


def table(lines, start):
    """The rows of the table starting at or after `start`, without its rule, and the index after."""
    start = end = next_line(lines, start, "|")
    while end < len(lines) and lines[end].startswith("|"):
        end += 1
    rows = [[cell.strip() for cell in line.strip().strip("|").split("|")] for line in lines[start:end]]
    return [row for row in rows if not all(set(cell) <= {"-"} for cell in row)], end


def write_sheet(path, rows, as_typed):
    workbook = xlsxwriter.Workbook(path)
    sheet = workbook.add_worksheet("Log")
    time_format = workbook.add_format({"num_format": "hh:mm:ss"})
    for r, row in enumerate(rows):
        for c, value in enumerate(row):
            time = TIME_OF_DAY.fullmatch(value)
            if not value:
                continue
            if as_typed and r > 0 and value.isdigit():
                sheet.write_number(r, c, int(value))
            elif as_typed and r > 0 and time:
                hours, minutes, seconds = (int(field) for field in time.groups())
                sheet.write_datetime(r, c, datetime.time(hours, minutes, seconds), time_format)
            else:
                sheet.write_string(r, c, value)
    workbook.close()


def run_console(block, folder):
    """Failures of the commands of one console block."""
    failures = []
    commands = [i for i, line in enumerate(block) if line.startswith("$ ")]
    for n, i in enumerate(commands):
        expected = block[i + 1:commands[n + 1] if n + 1 < len(commands) else len(block)]
        words = shlex.split(block[i][2:])
        if words[0] != "pellago":
            failures.append(f"not a pellago command: {block[i]}")
            continue
        result = subprocess.run([PELLAGO] + words[1:], cwd=folder, stdin=subprocess.DEVNULL,
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                                check=False)
        shown = lines_of(result.stdout) if result.stdout else []
        if shown != expected:
            failures.append(f"{block[i]}\n  printed:  {shown}\n  guide:    {expected}")
    return failures


def main():
    lines = pathlib.Path(GUIDE).read_text(encoding="utf-8").split("\n")
    failures = []
    examples = 0
    with tempfile.TemporaryDirectory() as folder:
        i = 0
        while i < len(lines):
            comment = COMMENT.fullmatch(lines[i].strip())
            if comment:
                kind, name, rest = comment.groups()
                path = os.path.join(folder, name)
                if kind == "sheet":
                    rows, i = table(lines, i + 1)
                    write_sheet(path, rows, "General" in rest)
                else:
                    block, i = fenced_block(lines, i + 1)
                    if kind == "file":
                        pathlib.Path(path).write_text("\n".join(block) + "\n", encoding="utf-8")
                    else:
                        examples += 1
                        if lines_of(pathlib.Path(path).read_text(encoding="utf-8")) != block:
                            failures.append(f"{name} differs from the guide's text of it")
                continue
            if lines[i].startswith("```console"):
                block, i = fenced_block(lines, i)
                examples += sum(line.startswith("$ ") for line in block)
                failures += run_console(block, folder)
                continue
            i += 1
    if examples < 10:
        failures.append(f"only {examples} examples found in {GUIDE}")
    for failure in failures:
        print(f"FAIL: {failure}")
    print(f"{examples} examples run, {len(failures)} failed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
