#!/usr/bin/python3
"""Writes the .xls log sheets the Ruby module tests merge, with Debian's python3-xlwt.

Run from this folder: /usr/bin/python3 make_fixtures.py
"""

import xlwt


def write_sheet(path, rows):
    book = xlwt.Workbook(encoding="utf-8")
    sheet = book.add_sheet("Log")
    for r, row in enumerate(rows):
        for c, value in enumerate(row):
            if value is not None:
                sheet.write(r, c, value)
    book.save(path)


# Two logged clips: A001 is in project.xml, B002 is not. Scene is typed as a number.
write_sheet("log_sheet.xls", [
    ["Name", "Good", "Scene", "Log Note", "Marker Timecode", "Marker Name", "Marker Color"],
    ["A001", "Yes", 12, "Wide & steady <take 2>", "00:00:01:00", "Intro", "Blue"],
    ["B002", "no", 3, "Not in the project", None, None, None],
])

# Only a header row, with an empty cell and a number among the headers.
write_sheet("headers_only.xls", [["Name", None, 2.5]])
