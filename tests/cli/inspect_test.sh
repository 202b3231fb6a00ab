#!/usr/bin/env bash
# Checks `pellago inspect`: the whole JSON printed for a log sheet with marker groups and for a
# sheet of every kind of cell (the same from .xls and .xlsx), the error for a header row with a
# gap, and status 3 for a file that is not a log sheet.
# Usage: inspect_test.sh PATH_OF_PELLAGO
set -u
pellago=$1
data=$(dirname "$0")/data
source "$(dirname "$0")/common.sh"

output=$("$pellago" inspect "$data/inspect_markers.xls")
status=$?
if [[ $status -ne 0 || $output != "$(cat "$data/inspect_markers.json")" ]]; then
  fail "inspect_markers.xls (status $status) printed:"
  diff <(echo "$output") "$data/inspect_markers.json"
fi

# The same sheets saved as .xls and as .xlsx print the same JSON.
typed=$(dirname "$0")/../workbook/data
for sheet in typed_cells typed_headers; do
  for extension in xls xlsx; do
    output=$("$pellago" inspect "$typed/$sheet.$extension")
    status=$?
    if [[ $status -ne 0 || $output != "$(cat "$data/inspect_$sheet.json")" ]]; then
      fail "$sheet.$extension (status $status) printed:"
      diff <(echo "$output") "$data/inspect_$sheet.json" | cut -c 1-200
    fi
  done
done

sheet=$data/inspect_gap_in_headers.xls
expected="pellago: $sheet: column B (2) has no header text: every column in use needs a text header"
output=$("$pellago" inspect "$sheet" 2>&1 >/dev/null)
status=$?
if [[ $status -ne 1 || $output != "$expected" ]]; then
  fail "inspect_gap_in_headers.xls printed '$output' (status $status), expected status 1 and '$expected'"
fi

for sheet in log.XLS log.xls.bak log.csv log; do
  output=$("$pellago" inspect "$sheet" 2>/dev/null)
  status=$?
  if [[ $status -ne 3 || -n $output ]]; then
    fail "inspect $sheet printed '$output' (status $status), expected status 3 and nothing"
  fi
done

finish inspect
