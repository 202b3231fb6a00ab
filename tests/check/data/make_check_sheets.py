#!/usr/bin/python3
"""Writes the log sheets that the check tests run against examples/project.xml.

check_mistakes.xlsx  a day's log with the mistakes people make: headers that are nearly right,
                     names with a blank or a typo, Good cells that mean yes, a colour not in the
                     table, a timecode typed with a letter O, times outside the clip, Out before In
check_clean.xlsx     the same day logged without a mistake
check_short.xlsx     two rows, the first naming the sixth clip: further down than the sheet has rows
check_second_look.xlsx  the example sheet's day logged again into the example's merged output, the
                     way loggers type: a Scene typed as a number, markers the clips already have,
                     the names of the clip the merge cut and of one of its subclips, In and Out on
                     a clip's only row, "TBD", a time typed into a cell that the spreadsheet made
                     a time of day, a three-field timecode, a marker before its clip's start

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
    ["A001_C002_0611AB", "", "", "y", "", "B-roll", "12", "2"],
    ["B001_C001_0611CD", "", "", "YES", "", "Interview", "14", "1", "",
     "11:00:00;00", "01:00:30;00", "Boom in shot", "Yellow"],
    ["B001_C002_0611CD", "", "01:01:20;00", "", "", "Interview", "14", "2", "starts on the slate"],
    ["C001_C001_0611EF", "", "", "", "Pier & lighthouse <dusk>", "Exterior", "20", "1"],
]

SHORT_HEADERS = ["Name", "Good", "Scene"]

SHORT_ROWS = [
    ["C001_C002_0611EF", "y", "21"],
    ["A001_C001_0611AB", "y", "12"],
]


SECOND_LOOK_HEADERS = [
    "Name", "Subclip Name", "In", "Out", "Scene", "Marker Timecode", "Marker Name",
    "Marker Timecode", "Marker Name",
]

# A time of day, as a spreadsheet stores 14:30:20 typed into a cell of the General format.
TIME_OF_DAY = datetime.time(14, 30, 20)

SECOND_LOOK_ROWS = [
    ["A001_C001_0611AB", "", "", "", 12, "10:00:05:00", "Slate"],
    ["A001_C002_0611AB", "", "", "", "12", "10:02:30:00", "Catch"],
    ["Rope throw", "", "", "", "12"],
    ["B001_C001_0611CD", "", "01:00:02;00", "01:00:58;00", "14", "TBD", "Boom"],
    ["B001_C002_0611CD", "", "", "", "14", "1:00:40", "Slate"],
    ["C001_C001_0611EF", "", "", "", "20", TIME_OF_DAY, "Lamp on", "14:29:00:00", "Early"],
    # The merged output holds more clips than the example: a seventh row keeps the subclip copy
    # that row 4 names within the sheet's row count.
    ["C001_C002_0611EF", "", "", "", "21"],
]


def write(name, headers, rows):
    workbook = xlsxwriter.Workbook(os.path.join(HERE, name))
    # A fixed date keeps the file the same from one run to the next.
    workbook.set_properties({"created": datetime.datetime(2024, 6, 11, 18, 0, 0)})
    sheet = workbook.add_worksheet("Log")
    sheet.write_row(0, 0, headers)
    time_format = workbook.add_format({"num_format": "hh:mm:ss"})
    for row_index, row in enumerate(rows, start=1):
        for column, value in enumerate(row):
            if isinstance(value, datetime.time):
                sheet.write_datetime(row_index, column, value, time_format)
            elif isinstance(value, (int, float)):
                sheet.write_number(row_index, column, value)
            elif value:
                sheet.write_string(row_index, column, value)
    workbook.close()


def main():
    write("check_mistakes.xlsx", MISTAKES_HEADERS, MISTAKES_ROWS)
    write("check_clean.xlsx", CLEAN_HEADERS, CLEAN_ROWS)
    write("check_short.xlsx", SHORT_HEADERS, SHORT_ROWS)
    write("check_second_look.xlsx", SECOND_LOOK_HEADERS, SECOND_LOOK_ROWS)


if __name__ == "__main__":
    main()
