#!/usr/bin/python3
"""Writes the log sheets that the check tests run against examples/project.xml.

check_mistakes.xlsx  a day's log with the mistakes people make: headers that are nearly right,
                     names with a blank or a typo, Good cells that mean yes, a colour not in the
                     table, a timecode typed with a letter O, times outside the clip, Out before In
check_clean.xlsx     the same day logged without a mistake
check_short.xlsx     two rows, the first naming the sixth clip: further down than the sheet has rows

Run with Debian's python3 (python3-xlsxwriter): /usr/bin/python3 make_check_sheets.py
"""
import datetime
import os

import xlsxwriter

HERE = os.path.dirname(os.path.abspath(__file__))

MISTAKES_HEADERS = [
    "Name", "Subclip Name", "In", "Out", "Good", "description", "Label2", "Scene", "Shot / Take",
    "Log Note", "Aux TC1", "Marker Timecode", "Marker Name", "Marker Colour",
    "Marker Timecode", "Marker Name", "Marker Color", "Marker Timecode ",
]

MISTAKES_ROWS = [
    ["A001_C001_0611AB ", "", "", "", "y", "Harbour master, wide", "Interview", "12", "1",
     "clean audio"],
    ["A001_C002_0611AB", "Boat arrives", "10:02:20:00", "10:02:45:00", "x", "", "B-roll", "12",
     "2", "", "", "", "", "", "10:02:30:00", "Catch", "Grey"],
    ["A001_C002_0611AB", "Rope throw", "10:03:05:00", "10:02:50:10", "Yes ", "", "B-roll", "12",
     "2"],
    ["A001_C002_0611AB", "Harbour at night", "10:05:00:00", "10:06:00:00", "y", "", "B-roll",
     "12", "3"],
    ["B001_C001_0611CD", "", "01:00:02;00", "01:00:58;00", "true", "", "Interview", "14", "1",
     "", "11:00:00;00", "01:00:3O;00", "Boom in shot", "yellow"],
    ["B001_C002_0611CD", "", "", "01:01:20;00", "1", "", "Interview", "14", "2",
     "starts on the slate"],
    ["C001_C001_0611EF", "", "", "", "YES", "", "Exterior", "20", "1", "", "",
     "14:30:10:00", "Lamp on", "turquoise", "14:29:00:00", "Too early", "purple"],
    ["C001_C003_0611EF", "", "", "", "y", "", "Exterior", "20", "2"],
    [],
]

CLEAN_HEADERS = [
    "Name", "In", "Out", "Good", "Description", "Label 2", "Scene", "Shot/Take", "Log Note",
    "Aux TC 1", "Marker Timecode", "Marker Name", "Marker Color",
]

CLEAN_ROWS = [
    ["A001_C001_0611AB", "", "", "y", "Harbour master, wide", "Interview", "12", "1",
     "clean audio", "", "10:00:05:00", "Slate", "red"],
    ["A001_C002_0611AB", "10:02:20:00", "10:02:45:00", "y", "", "B-roll", "12", "2"],
    ["B001_C001_0611CD", "01:00:02;00", "01:00:58;00", "YES", "", "Interview", "14", "1", "",
     "11:00:00;00", "01:00:30;00", "Boom in shot", "Yellow"],
    ["B001_C002_0611CD", "", "01:01:20;00", "", "", "Interview", "14", "2", "starts on the slate"],
    ["C001_C001_0611EF", "", "", "", "Pier & lighthouse <dusk>", "Exterior", "20", "1"],
]

SHORT_HEADERS = ["Name", "Good", "Scene"]

SHORT_ROWS = [
    ["C001_C002_0611EF", "y", "21"],
    ["A001_C001_0611AB", "y", "12"],
]


def write(name, headers, rows):
    workbook = xlsxwriter.Workbook(os.path.join(HERE, name))
    # A fixed date keeps the file the same from one run to the next.
    workbook.set_properties({"created": datetime.datetime(2024, 6, 11, 18, 0, 0)})
    sheet = workbook.add_worksheet("Log")
    sheet.write_row(0, 0, headers)
    for row_index, row in enumerate(rows, start=1):
        for column, value in enumerate(row):
            if value:
                sheet.write_string(row_index, column, value)
    workbook.close()


def main():
    write("check_mistakes.xlsx", MISTAKES_HEADERS, MISTAKES_ROWS)
    write("check_clean.xlsx", CLEAN_HEADERS, CLEAN_ROWS)
    write("check_short.xlsx", SHORT_HEADERS, SHORT_ROWS)


if __name__ == "__main__":
    main()
