#!/usr/bin/python3
"""Writes the .xls log sheets that inspect_test.sh reads, with Debian's
python3-xlwt.

Run from this folder: /usr/bin/python3 make_inspect_fixtures.py
"""

import xlwt


def write_sheet(path, rows):
    book = xlwt.Workbook(encoding="utf-8")
    sheet = book.add_sheet("Log")
    for r, row in enumerate(rows):
        for c, value in enumerate(row):
            if value is not None:
                sheet.write(r, c, value)
    book.add_sheet("Notes").write(0, 0, "Not read")
    book.save(path)


HEADERS = ["Name", "Scene", "Marker Timecode", "Marker Name", "Marker Color",
           "Marker Timecode", "Marker Comment"]

# Two marker groups; then a blank row, a row whose first marker has no timecode, and a row
# whose Name is typed as a number.
write_sheet("inspect_markers.xls", [
    HEADERS,
    ["C001", 12, "01:00:10:00", "Intro", "Red", "01:00:20:00", "Check focus"],
    [],
    ["C002", "12A", None, "Intro", "Red", "01:00:20:00", "Check focus"],
    [101, 23.976, "01:00:10:00", "Intro", "Red", None, "Check focus"],
])

# A header row with an empty cell between two headed columns, and one data row.
write_sheet("inspect_gap_in_headers.xls", [
    ["Name", None, "Scene"],
    ["C001", "x", 12],
])
