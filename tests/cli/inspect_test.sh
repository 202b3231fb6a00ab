#!/usr/bin/env bash
# Checks `pellago inspect`: the whole JSON printed for a log sheet with marker groups and for a
# sheet of every kind of cell (the fields' texts as the merge writes them), status 1 and one line
# for a header row with a gap, and status 3 with nothing printed for a file that is not a log
# sheet. That .xls and .xlsx read alike is checked in tests/workbook.
# Usage: inspect_test.sh PATH_OF_PELLAGO
set -u
pellago=$1
data=$(dirname "$0")/data
source "$(dirname "$0")/common.sh"

# expect_json SHEET EXPECTED_JSON_FILE
expect_json() {
  run inspect "$1"
  if [[ $status -ne 0 || $out != "$(cat "$2")" ]]; then
    fail "$1 (status $status) printed:"
    diff "$scratch/stdout" "$2" | cut -c 1-200
  fi
}
expect_json "$data/inspect_markers.xls" "$data/inspect_markers.json"
typed=$(dirname "$0")/../workbook/data
expect_json "$typed/typed_cells.xlsx" "$data/inspect_typed_cells.json"
expect_json "$typed/typed_headers.xlsx" "$data/inspect_typed_headers.json"

sheet=$data/inspect_gap_in_headers.xls
run inspect "$sheet"
expect_status 0 "gap in headers"
[[ $(tr -d ' \n' <<<"$out") == *'"fields":{"Name":"C001","Scene":"12"}'* ]] ||
  fail "gap in headers read '$out'"

two=$(dirname "$0")/../workbook/data/two_sheets.xls
run inspect --sheet Notes "$two"
[[ $status -eq 0 && $(tr -d ' \n' <<<"$out") == *'"headers":["Shootday1"]'* ]] ||
  fail "inspect --sheet Notes printed '$out' (status $status)"
run inspect --sheet Day2 "$two"
expect_status 1 "inspect --sheet Day2"

run inspect log.csv
[[ $status -eq 3 && -z $out ]] || fail "inspect log.csv printed '$out' (status $status), expected status 3"

finish inspect
