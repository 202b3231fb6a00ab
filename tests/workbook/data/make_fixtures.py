#!/usr/bin/python3
"""Writes the committed workbook fixtures of tests/workbook/data.

The .xls files come from xlwt (Debian's python3-xlwt); typed_*.xlsx come from XlsxWriter (Debian's
python3-xlsxwriter), holding the same cells as typed_*.xls; the other .xlsx files are written with zipfile
from the XML below, to hold what a spreadsheet writer library does not produce on request (cells
and rows without references, inline strings, phonetic runs, the 1904 date system, relocated
parts) and the damaged and hostile packages. Run it with Debian's /usr/bin/python3, from anywhere;
it rewrites every fixture.
"""

import datetime
import os
import re
import struct
import zipfile

import xlsxwriter
import xlwt

HERE = os.path.dirname(os.path.abspath(__file__))
STAMP = (2024, 1, 1, 0, 0, 0)

CONTENT_TYPES = """<?xml version="1.0" encoding="UTF-8" standalone="yes"?>
<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">
<Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml"/>
<Default Extension="xml" ContentType="application/xml"/>
</Types>"""

REL_NS = "http://schemas.openxmlformats.org/officeDocument/2006/relationships"
MAIN_NS = "http://schemas.openxmlformats.org/spreadsheetml/2006/main"


def rels(*entries):
    body = "".join(
        f'<Relationship Id="{id}" Type="{REL_NS}/{kind}" Target="{target}"/>'
        for id, kind, target in entries)
    return ('<?xml version="1.0" encoding="UTF-8" standalone="yes"?>\n'
            '<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">'
            f"{body}</Relationships>")


def workbook(sheets, date1904=False):
    pr = '<workbookPr date1904="1"/>' if date1904 else "<workbookPr/>"
    body = "".join(f'<sheet name="{name}" sheetId="{n + 1}" r:id="{id}"/>'
                   for n, (name, id) in enumerate(sheets))
    return (f'<?xml version="1.0" encoding="UTF-8" standalone="yes"?>\n'
            f'<workbook xmlns="{MAIN_NS}" xmlns:r="{REL_NS}">{pr}<sheets>{body}</sheets></workbook>')


def worksheet(sheet_data):
    return (f'<?xml version="1.0" encoding="UTF-8" standalone="yes"?>\n'
            f'<worksheet xmlns="{MAIN_NS}"><sheetData>{sheet_data}</sheetData></worksheet>')


def load(*name):
    with open(os.path.join(HERE, *name), "rb") as handle:
        return handle.read()


def save(name, data):
    with open(os.path.join(HERE, name), "wb") as handle:
        handle.write(data)


def write_zip(name, parts):
    with zipfile.ZipFile(os.path.join(HERE, name), "w", zipfile.ZIP_DEFLATED) as package:
        for part_name, text in parts.items():
            info = zipfile.ZipInfo(part_name, STAMP)
            info.compress_type = zipfile.ZIP_DEFLATED
            package.writestr(info, text.encode("utf-8") if isinstance(text, str) else text)


def simple_package(sheet_xml, shared_strings=None):
    """A one-sheet package in the usual layout."""
    entries = [("rId1", "worksheet", "worksheets/sheet1.xml")]
    parts = {
        "[Content_Types].xml": CONTENT_TYPES,
        "_rels/.rels": rels(("rId1", "officeDocument", "xl/workbook.xml")),
        "xl/workbook.xml": workbook([("Log", "rId1")]),
        "xl/worksheets/sheet1.xml": sheet_xml,
    }
    if shared_strings is not None:
        entries.append(("rId2", "sharedStrings", "sharedStrings.xml"))
        parts["xl/sharedStrings.xml"] = shared_strings
    parts["xl/_rels/workbook.xml.rels"] = rels(*entries)
    return parts


# The first sheet of workbook.xml is part sheet3.xml, named by an absolute target; the 1904 date
# system; rows and cells without references; inline and rich-text strings with phonetic runs;
# booleans, errors, formula strings, ISO dates (one of them no date); a style-only cell and a
# style-only row.
HANDMADE_SHARED = f"""<?xml version="1.0" encoding="UTF-8" standalone="yes"?>
<sst xmlns="{MAIN_NS}" count="5" uniqueCount="5">
<si><t>Name</t></si>
<si><r><rPr><b/></rPr><t>Ka</t></r><r><t>nji</t></r><rPh sb="0" eb="2"><t>カンジ</t></rPh><phoneticPr fontId="1"/></si>
<si><t xml:space="preserve">  two  spaces </t></si>
<si><t>line_x000D_
break</t></si>
<si><t>_x005F_x0041_ &amp; &lt;tag&gt;</t></si>
</sst>"""

HANDMADE_STYLES = f"""<?xml version="1.0" encoding="UTF-8" standalone="yes"?>
<styleSheet xmlns="{MAIN_NS}">
<numFmts count="2"><numFmt numFmtId="164" formatCode="yyyy\\-mm\\-dd"/><numFmt numFmtId="165" formatCode="0.0 &quot;days&quot;"/></numFmts>
<cellStyleXfs count="1"><xf numFmtId="22"/></cellStyleXfs>
<cellXfs count="5"><xf numFmtId="0"/><xf numFmtId="164" applyNumberFormat="1"/><xf numFmtId="165"/><xf numFmtId="20"><alignment horizontal="left"/></xf><xf numFmtId="22"/></cellXfs>
</styleSheet>"""

HANDMADE_SHEET = worksheet(
    "<row>"
    '<c t="s"><v>0</v></c>'
    '<c t="inlineStr"><is><t>Scene</t></is></c>'
    '<c t="inlineStr"><is><r><t>Ri</t></r><r><rPr><i/></rPr><t>ch</t></r>'
    "<rPh sb=\"0\" eb=\"1\"><t>リッチ</t></rPh></is></c>"
    '<c t="s"><v>1</v></c>'
    "</row>"
    "<row>"
    '<c s="1"><v>43889</v></c>'
    '<c s="3"><v>0.5</v></c>'
    '<c s="4"><v>43889.75</v></c>'
    '<c s="2"><v>2.5</v></c>'
    '<c t="b"><v>1</v></c>'
    '<c t="b"><v>0</v></c>'
    '<c t="e"><v>#N/A</v></c>'
    '<c t="str"><f>A1&amp;"!"</f><v>Name!</v></c>'
    "</row>"
    '<row r="4"><c r="B4" s="1"/><c t="s"><v>2</v></c><c><v>-7</v></c>'
    '<c t="s"><v>3</v></c><c t="s"><v>4</v></c><c t="inlineStr"><is><t/></is></c>'
    '<c t="d"><v>2024-03-01T12:30:15Z</v></c><c t="d"><v>2024-13-01</v></c></row>'
    '<row r="6"><c r="A6" s="1"/><c r="J6" s="2"/></row>')

HANDMADE = {
    "[Content_Types].xml": CONTENT_TYPES,
    "_rels/.rels": rels(("rId1", "officeDocument", "xl/workbook.xml")),
    "xl/workbook.xml": workbook([("Notes", "rId3"), ("Second", "rId1")], date1904=True),
    "xl/_rels/workbook.xml.rels": rels(
        ("rId1", "worksheet", "worksheets/sheet1.xml"),
        ("rId2", "sharedStrings", "sharedStrings.xml"),
        ("rId3", "worksheet", "/xl/worksheets/sheet3.xml"),
        ("rId4", "styles", "styles.xml")),
    "xl/sharedStrings.xml": HANDMADE_SHARED,
    "xl/styles.xml": HANDMADE_STYLES,
    "xl/worksheets/sheet1.xml": worksheet('<row r="1"><c r="A1"><v>99</v></c></row>'),
    "xl/worksheets/sheet3.xml": HANDMADE_SHEET,
}

# The main part is found through _rels/.rels, away from xl/; the sheet target climbs with "..".
RELOCATED = {
    "[Content_Types].xml": CONTENT_TYPES,
    "_rels/.rels": rels(("rId1", "officeDocument", "book/main.xml")),
    "book/main.xml": workbook([("Log", "rId7")]),
    "book/_rels/main.xml.rels": rels(("rId7", "worksheet", "../sheets/./log.xml")),
    "sheets/log.xml": worksheet(
        '<row r="2"><c r="C2" t="inlineStr"><is><t>moved</t></is></c></row>'),
}

BILLION_LAUGHS = """<?xml version="1.0"?>
<!DOCTYPE worksheet [
<!ENTITY a "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa">
<!ENTITY b "&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;">
<!ENTITY c "&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;">
<!ENTITY d "&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;">
<!ENTITY e "&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;">
]>
<worksheet xmlns="%s"><sheetData><row r="1"><c r="A1" t="inlineStr"><is><t>&e;</t></is></c></row></sheetData></worksheet>""" % MAIN_NS


def write_xlsx_fixtures():
    write_zip("handmade.xlsx", HANDMADE)
    write_zip("relocated.xlsx", RELOCATED)

    whole = load("handmade.xlsx")
    save("truncated.xlsx", whole[: len(whole) // 2])
    save("not_a_zip.xlsx", b"Name,Scene\nC001,12\n")

    write_zip("no_workbook.xlsx", {"[Content_Types].xml": CONTENT_TYPES})
    missing = simple_package(worksheet(""))
    del missing["xl/worksheets/sheet1.xml"]
    write_zip("missing_sheet.xlsx", missing)
    write_zip("malformed_sheet.xlsx", simple_package(
        worksheet('<row r="1"><c r="A1"><v>1</v></row>')))
    write_zip("doctype.xlsx", simple_package(BILLION_LAUGHS))
    write_zip("out_of_order.xlsx", simple_package(worksheet(
        '<row r="1"><c r="A1"><v>1</v></c><c r="C1"><v>3</v></c><c r="B1"><v>2</v></c></row>')))
    # Rows 1 and 2 are sound, so are the first rows the reader reads ahead; row 23 goes back a
    # column.
    write_zip("late_out_of_order.xlsx", simple_package(worksheet(
        '<row r="1"><c r="A1" t="inlineStr"><is><t>Name</t></is></c></row>'
        '<row r="2"><c r="A2" t="inlineStr"><is><t>A001</t></is></c></row>'
        '<row r="23"><c r="B23"><v>2</v></c><c r="A23"><v>1</v></c></row>')))
    write_zip("bad_shared_index.xlsx", simple_package(
        worksheet('<row r="1"><c r="A1" t="s"><v>0</v></c><c r="B1" t="s"><v>5</v></c></row>'),
        f'<sst xmlns="{MAIN_NS}"><si><t>only</t></si></sst>'))
    # 4 MiB of empty elements inside <sheetData> packs to a few KiB: read with a lowered cap.
    write_zip("bomb.xlsx", simple_package(worksheet("<x/>" * (1 << 20))))
    # One shared string of 60 MiB that five cells refer to: 300 MiB of cell text from 60 KiB.
    write_zip("shared_bomb.xlsx", simple_package(
        worksheet("".join(f'<row r="{r}"><c r="A{r}" t="s"><v>0</v></c></row>'
                          for r in range(1, 6))),
        f'<sst xmlns="{MAIN_NS}"><si><t>{"A" * (60 << 20)}</t></si></sst>'))
    # handmade.xlsx with a wrong checksum for the worksheet: its data fails the CRC check.
    with zipfile.ZipFile(os.path.join(HERE, "handmade.xlsx")) as package:
        crc = package.getinfo("xl/worksheets/sheet3.xml").CRC
    good, bad = crc.to_bytes(4, "little"), (crc ^ 0xFFFFFFFF).to_bytes(4, "little")
    assert whole.count(good) == 2  # the local header and the central directory entry
    save("damaged_data.xlsx", whole.replace(good, bad))


def xls_style(value):
    """The style arguments of xlwt's write for a value: its format if it is a date or time."""
    return [xlwt.easyxf(num_format_str=XLS_FORMATS[type(value)])] if type(value) in XLS_FORMATS else []


def write_xls_fixtures():
    grey = xlwt.easyxf("pattern: pattern solid, fore_colour gray25")

    book = xlwt.Workbook(encoding="utf-8")
    log = book.add_sheet("Log")
    for column, header in enumerate(["Name", "Scene", "Take", "Date", "Time", "Stamp", "Note"]):
        log.write(0, column, header)
    for column, value in enumerate(["C001", 12, 3.25, datetime.date(2024, 3, 1), datetime.time(12, 30),
                                    datetime.datetime(2024, 3, 1, 12, 30, 15), "  spaced  "]):
        log.write(1, column, value, *xls_style(value))
    for column in range(7):
        log.write(2, column, None, grey)  # a styled blank row
    log.write(3, 0, "Café – 東京")
    log.write(3, 1, -40000.5)
    log.write(5, 9, None, grey)  # style only, past the cells in use
    book.add_sheet("Other").write(0, 0, "ignored")
    book.save(os.path.join(HERE, "cells.xls"))

    book = xlwt.Workbook(encoding="utf-8")
    book.add_sheet("Empty")
    book.add_sheet("Data").write(0, 0, "not first")
    book.save(os.path.join(HERE, "empty_first.xls"))

    whole = load("cells.xls")
    save("truncated.xls", whole[:700])
    # The workbook globals' PASSWORD record (0x0013, 2 bytes) turned into a FILEPASS record
    # (0x002F): the mark of an encrypted workbook, with its size unchanged.
    password = whole.index(b"\x13\x00\x02\x00\x00\x00")
    save("encrypted.xls", whole[:password] + b"\x2f\x00" + whole[password + 2:])
    # The first sheet's FOOTER record (0x0015) claiming 65,535 bytes where it holds 5, more than
    # the rest of the workbook stream.
    footer = whole.index(b"\x15\x00\x05\x00", 0x600)
    save("bad_record_length.xls", whole[:footer + 2] + b"\xff\xff" + whole[footer + 4:])
    # A compound file header claiming 16,777,216 sectors of its master sector table: a reader that
    # sizes its tables from the header alone allocates gigabytes for this 5 KiB file.
    huge = bytearray(whole)
    huge[0x44:0x4C] = struct.pack("<II", 0, 1 << 24)
    save("huge_sector_table.xls", huge)
    # One byte of the compound file's directory changed: the workbook stream's entry is damaged.
    gap = bytearray(load("..", "..", "cli", "data", "inspect_gap_in_headers.xls"))
    gap[5185] = 0xDE
    save("damaged_directory.xls", gap)


# The same logical sheets, written as .xls and as .xlsx: every kind of cell, and a header row of
# cells that are not text. The long text fills a cell to its limit of 32,767 characters, in UTF-16
# (so that it spans several records of an .xls).
TYPED_HEADERS = ["Name", "Yes", "No", "Day", "Leap", "Last", "Stamp", "Clock", "Long", "Count"]
LONG_TEXT = ("Take 東京 " * 4096)[:32767]
TYPED_ROW = ["C001", True, False, datetime.date(2011, 5, 6), datetime.date(2100, 3, 1),
             datetime.date(9999, 12, 31), datetime.datetime(2024, 3, 1, 12, 30, 15),
             datetime.time(12, 30, 15), LONG_TEXT, 12]
NOT_TEXT_HEADERS = ["Name", True, datetime.date(2011, 5, 6), datetime.datetime(2024, 3, 1, 12, 30, 15),
                    datetime.time(12, 30, 15), 12]

XLS_FORMATS = {datetime.date: "YYYY-MM-DD", datetime.datetime: "YYYY-MM-DD hh:mm:ss",
               datetime.time: "hh:mm:ss"}


def write_typed_fixtures():
    for name, rows in [("typed_cells", [TYPED_HEADERS, TYPED_ROW]),
                       ("typed_headers", [NOT_TEXT_HEADERS])]:
        xls = xlwt.Workbook(encoding="utf-8")
        xlsx = xlsxwriter.Workbook(os.path.join(HERE, name + ".xlsx"))
        xlsx.set_properties({"created": datetime.datetime(2024, 1, 1)})
        formats = {kind: xlsx.add_format({"num_format": code}) for kind, code in XLS_FORMATS.items()}
        xls_sheet, xlsx_sheet = xls.add_sheet("Log"), xlsx.add_worksheet("Log")
        for r, row in enumerate(rows):
            for c, value in enumerate(row):
                xls_sheet.write(r, c, value, *xls_style(value))
                if type(value) in formats:
                    xlsx_sheet.write_datetime(r, c, value, formats[type(value)])
                else:
                    xlsx_sheet.write(r, c, value)
        xls.save(os.path.join(HERE, name + ".xls"))
        xlsx.close()


# Numbers and dates under number formats, each beside the text a spreadsheet program shows for it,
# written as .xls and as .xlsx: column A the value, column B the text shown.
SHOWN = [
    (12, "General", "12"), (12.5, "General", "12.5"), (1 / 3, "General", "0.333333333"),
    (123456789012, "General", "1.23457E+11"), (1234.5, "0.00", "1234.50"),
    (1234567, "#,##0", "1,234,567"), (1234.567, "#,##0.00", "1,234.57"), (0.125, "0%", "13%"),
    (0.5, "0.00%", "50.00%"), (-1234.5, "#,##0.00;(#,##0.00)", "(1,234.50)"), (-3, "0", "-3"),
    (7, "000", "007"), (3, '"Take "0', "Take 3"), (12345.678, "0.00E+00", "1.23E+04"),
    (1.5, "# ?/?", "1 1/2"), (0, '0;-0;"none"', "none"), (1234, "0.0,", "1.2"),
    (9.99, "[$€-407]#,##0.00", "€9.99"), (42, "[Red]0_)", "42 "),
    (datetime.date(2026, 3, 4), "d-mmm", "4-Mar"), (datetime.date(2026, 3, 4), "mm/dd/yy", "03/04/26"),
    (datetime.date(2026, 3, 4), "dddd d mmmm yyyy", "Wednesday 4 March 2026"),
    (datetime.date(2026, 3, 4), "m/d/yyyy", "3/4/2026"),
    (datetime.time(14, 5, 9), "h:mm AM/PM", "2:05 PM"), (datetime.time(14, 5, 9), "hh:mm:ss", "14:05:09"),
    (datetime.time(0, 5, 9), "mm:ss", "05:09"),
    (datetime.datetime(2026, 3, 4, 14, 5, 9), "yyyy-mm-dd hh:mm", "2026-03-04 14:05"),
]


def write_shown_fixtures():
    xls = xlwt.Workbook(encoding="utf-8")
    xlsx = xlsxwriter.Workbook(os.path.join(HERE, "shown.xlsx"))
    xlsx.set_properties({"created": datetime.datetime(2024, 1, 1)})
    xls_sheet, xlsx_sheet = xls.add_sheet("Log"), xlsx.add_worksheet("Log")
    for r, (value, code, shown) in enumerate(SHOWN):
        xls_sheet.write(r, 0, value, xlwt.easyxf(num_format_str=code))
        xls_sheet.write(r, 1, shown)
        xlsx_format = xlsx.add_format({"num_format": code})
        if isinstance(value, (datetime.date, datetime.time)):
            xlsx_sheet.write_datetime(r, 0, value, xlsx_format)
        else:
            xlsx_sheet.write_number(r, 0, value, xlsx_format)
        xlsx_sheet.write_string(r, 1, shown)
    xls.save(os.path.join(HERE, "shown.xls"))
    xlsx.close()


def write_two_sheets_fixture():
    """Notes on the first worksheet, the log on the second, a chart sheet's place taken by nothing
    (xlwt writes none)."""
    book = xlwt.Workbook(encoding="utf-8")
    notes = book.add_sheet("Notes")
    notes.write(0, 0, "Shoot day 1")
    notes.write(1, 0, "Camera A only")
    log = book.add_sheet("Log")
    log.write(0, 0, "Day 1")
    log.write(2, 0, "Clip Name")
    log.write(2, 1, "Scene")
    log.write(3, 0, "A001_C001")
    log.write(3, 1, 12)
    book.save(os.path.join(HERE, "two_sheets.xls"))


def write_formula_fixture():
    """Formula cells with each kind of cached result. xlwt caches every formula's result as empty
    text, so the results are patched in: a number under a date format, true, an error, empty text,
    and text, for which the NUMBER record after the formula becomes the STRING record that holds
    it (same length, so the compound file stays as it was)."""
    book = xlwt.Workbook(encoding="utf-8")
    sheet = book.add_sheet("Log")
    for column in range(6):
        sheet.write(0, column, f"Formula {column + 1}")
    sheet.write(1, 0, xlwt.Formula("40000+669"), xlwt.easyxf(num_format_str="YYYY-MM-DD"))
    for column in range(1, 5):
        sheet.write(1, column, xlwt.Formula("1+1"))
    sheet.write(1, 5, 0.1234567891)
    book.save(os.path.join(HERE, "formulas.xls"))

    data = bytearray(load("formulas.xls"))
    results = [struct.pack("<d", 40669.0), bytes.fromhex("010001000000ffff"),
               bytes.fromhex("020007000000ffff"), bytes.fromhex("030000000000ffff"),
               bytes.fromhex("000000000000ffff")]
    for column, result in enumerate(results):
        # FORMULA, its length (any), row 1, the column.
        found = [m.start() for m in re.finditer(rb"\x06\x00..\x01\x00" + bytes([column, 0]), data,
                                                re.S)]
        assert len(found) == 1
        data[found[0] + 10:found[0] + 18] = result
    number = data.index(b"\x03\x02\x0e\x00\x01\x00\x05\x00")
    data[number:number + 18] = b"\x07\x02\x0e\x00\x0b\x00\x00Cached text"
    save("formulas.xls", data)


def write_renamed_fixtures():
    save("xls_renamed.xlsx", load("cells.xls"))
    save("xlsx_renamed.xls", load("handmade.xlsx"))


if __name__ == "__main__":
    write_xlsx_fixtures()
    write_xls_fixtures()
    write_typed_fixtures()
    write_shown_fixtures()
    write_two_sheets_fixture()
    write_formula_fixture()
    write_renamed_fixtures()
