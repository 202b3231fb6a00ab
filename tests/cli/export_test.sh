#!/usr/bin/env bash
# Checks `pellago export`: the sheet of the example read back with openpyxl holds names and
# timecodes as text cells in text-formatted columns, under a bold frozen header; an existing sheet
# is refused without --force. That a sheet merges back without changes is checked in
# tests/merge (export_sheet_test).
# Usage: export_test.sh PATH_OF_PELLAGO SOURCE_DIR
set -u
pellago=$1
source_dir=$2
source "$(dirname "$0")/common.sh"

project="$source_dir/examples/project.xml"
sheet="$scratch/log_sheet.xlsx"

run export "$project" "$sheet"
expect_status 0 "export" ""
[[ $out == *'left out column "Label": clip A001_C001_0611AB has no <labels><label> element'* &&
  $out == *"wrote 6 rows for 6 clips to $sheet" ]] || fail "export says '$out'"

# Debian's python3, where python3-openpyxl is installed.
/usr/bin/python3 - "$sheet" <<'PYTHON' || fail "openpyxl found non-text cells"
import sys
import openpyxl

sheet = openpyxl.load_workbook(sys.argv[1]).worksheets[0]
headers = [cell.value for cell in sheet[1]]
assert sheet.freeze_panes == "A2", sheet.freeze_panes
assert all(cell.font.b for cell in sheet[1]), "header row not bold"
rows = range(2, sheet.max_row + 1)
names = [sheet.cell(row, headers.index("Name") + 1) for row in rows]
assert [cell.value for cell in names][:2] == ["A001_C001_0611AB", "A001_C002_0611AB"], names
timecodes = [sheet.cell(row, headers.index(header) + 1) for row in rows for header in ("In", "Out")]
assert [c.value for c in timecodes if c.value] == ["01:01:15;28", "01:01:27;28"], timecodes
for cell in names + [cell for cell in timecodes if cell.value is not None]:
    assert cell.data_type == "s" and isinstance(cell.value, str), (cell.coordinate, cell.value)
    assert cell.number_format == "@", (cell.coordinate, cell.number_format)
# Empty cells of the columns are formatted as text too, for what a logger types there.
assert sheet.column_dimensions["B"].number_format == "@", sheet.column_dimensions["B"].number_format
# Widths are set: a wide Name, narrow timecodes.
widths = [sheet.column_dimensions[letter].width for letter in "ABC"]
assert widths[0] > 20 and 10 < widths[1] < 20 and widths[1] == widths[2], widths
PYTHON

# An existing sheet: status 1 naming --force, the sheet unchanged; --force replaces it.
echo "earlier sheet" >"$scratch/existing.xlsx"
run export "$project" "$scratch/existing.xlsx"
expect_status 1 "existing sheet" "pellago: \"$scratch/existing.xlsx\" exists already; --force replaces it"
[[ $(cat "$scratch/existing.xlsx") == "earlier sheet" ]] || fail "the existing sheet changed"
run export --force "$project" "$scratch/existing.xlsx"
[[ $status -eq 0 && $(head -c 2 "$scratch/existing.xlsx") == PK ]] || fail "--force did not write the sheet"

[[ $(ls -A "$scratch" | grep -c '^\.') -eq 0 ]] || fail "a temporary file was left behind"
finish export
