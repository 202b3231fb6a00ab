#!/usr/bin/python3
"""Writes examples/log_sheet.xlsx, the log sheet that goes with examples/project.xml.

Run with Debian's python3 (python3-xlsxwriter): /usr/bin/python3 examples/make_log_sheet.py
"""
import datetime
import os

import xlsxwriter

HEADERS = [
    "Name", "Subclip Name", "In", "Out", "Good", "Label", "Label 2", "Description", "Scene",
    "Shot/Take", "Log Note", "Angle", "Comment 1", "Aux TC 1", "Aux TC 2",
    "Marker Timecode", "Marker Name", "Marker Comment", "Marker Color",
    "Marker Timecode", "Marker Name", "Marker Color",
]


def marker(timecode, name, color, comment=None):
    return {"Marker Timecode": timecode, "Marker Name": name, "Marker Color": color,
            "Marker Comment": comment}


# One row per clip, one per subclip when several rows name a clip. Empty cells are left empty.
ROWS = [
    {"Name": "A001_C001_0611AB", "Good": "Yes", "Label": "Good Take", "Label 2": "Interview",
     "Description": "Harbour master, wide", "Scene": "12", "Shot/Take": "1",
     "Log Note": "clean audio", "Comment 1": "use for the opening",
     "markers": [marker("10:00:05:00", "Slate", "Red"), marker("10:00:42:12", "Laugh", "green")]},
    {"Name": "A001_C002_0611AB", "Subclip Name": "Boat arrives", "In": "10:02:20:00",
     "Out": "10:02:45:00", "Good": "y", "Label 2": "B-roll", "Scene": "12", "Shot/Take": "2"},
    {"Name": "A001_C002_0611AB", "Subclip Name": "Rope throw", "In": "10:02:50:10",
     "Out": "10:03:05:00", "Good": "y", "Label 2": "B-roll", "Scene": "12", "Shot/Take": "2",
     "markers": [marker("10:02:58:00", "Catch", "orange")]},
    {"Name": "A001_C002_0611AB", "Subclip Name": "Wide harbour", "In": "10:03:30:00",
     "Out": "10:03:55:24", "Good": "no", "Label 2": "B-roll", "Scene": "12", "Shot/Take": "2"},
    {"Name": "B001_C001_0611CD", "In": "01:00:02;00", "Out": "01:00:58;00", "Good": "YES",
     "Label 2": "Interview", "Scene": "14", "Shot/Take": "1", "Angle": "2",
     "Aux TC 1": "11:00:00;00",
     "markers": [marker("01:00:30;00", "Boom in shot", "Yellow", "reshoot?")]},
    {"Name": "B001_C002_0611CD", "Out": "01:01:20;00", "Label 2": "Interview", "Scene": "14",
     "Shot/Take": "2", "Log Note": "In point dropped: starts on the slate"},
    {"Name": "C001_C001_0611EF", "Good": "y", "Label 2": "Exterior",
     "Description": "Pier & lighthouse <dusk>", "Scene": "20", "Shot/Take": "1",
     "Aux TC 2": "14:30:00:00",
     "markers": [marker("14:30:10:00", "Lamp on", "turquoise", "from the pier"),
                 marker("14:30:40:06", "Gull", "purple")]},
    {"Name": "A002_C001_0611AB", "Good": "y", "Label 2": "Interview", "Scene": "15",
     "Log Note": "card not ingested yet"},
]


def write_row(sheet, row_index, row):
    markers = row.get("markers", [])
    group = -1
    for column, header in enumerate(HEADERS):
        if header.startswith("Marker"):
            group += header == "Marker Timecode"
            value = markers[group].get(header) if group < len(markers) else None
        else:
            value = row.get(header)
        if value:
            sheet.write_string(row_index, column, value)


def main():
    path = os.path.join(os.path.dirname(os.path.abspath(__file__)), "log_sheet.xlsx")
    workbook = xlsxwriter.Workbook(path)
    # A fixed date keeps the file the same from one run to the next.
    workbook.set_properties({"created": datetime.datetime(2024, 6, 11, 18, 0, 0)})
    sheet = workbook.add_worksheet("Log")
    bold = workbook.add_format({"bold": True})
    sheet.write_row(0, 0, HEADERS, bold)
    for row_index, row in enumerate(ROWS, start=1):
        write_row(sheet, row_index, row)
    sheet.set_column(0, len(HEADERS) - 1, 16)
    workbook.close()


if __name__ == "__main__":
    main()
