#!/usr/bin/env bash
# Checks the contract of `pellago check`: the findings of a sheet full of typical mistakes as JSON
# (compared with a file checked by hand), a clean sheet (status 0), a clip beyond the sheet's rows
# and a document cut short in the one-line form, the change listing, and statuses 1 (with the
# merge's own error line), 2 and 3.
# Usage: check_test.sh PATH_OF_PELLAGO SOURCE_DIR
set -u
pellago=$1
source_dir=$2
data="$source_dir/tests/check/data"
project="$source_dir/examples/project.xml"
source "$(dirname "$0")/common.sh"

# A dozen typical mistakes: status 4 and exactly the findings checked by hand.
run check --json "$data/check_mistakes.xlsx" "$project"
expect_status 4 "mistakes" ""
diff -u "$data/check_mistakes_findings.json" "$scratch/stdout" || fail "mistakes: findings differ"

# A clean sheet: status 0, and only the summary.
run check "$data/check_clean.xlsx" "$project"
expect_status 0 "clean sheet"
[[ $out == "0 findings; a merge would visit 6 clips (5 changed, 0 subclips made, 2 markers added); 0 sheet rows matched no clip" ]] ||
  fail "clean sheet says '$out'"
# Checked again against its own merge, it finds its markers there: notes only, status 0.
"$pellago" merge "$data/check_clean.xlsx" "$project" "$scratch/clean.xml" >/dev/null
run check "$data/check_clean.xlsx" "$scratch/clean.xml"
expect_status 0 "notes only"
[[ $out == *"note: the clip already has the marker"*"2 findings; "*"0 markers added"* ]] ||
  fail "notes only says '$out'"
rm "$scratch/clean.xml"

# Under the classic rules, a clip further down the document than the sheet has rows, one line per
# finding; the default rules log it in full.
run check "$data/check_short.xlsx" "$project"
expect_status 0 "short sheet, default rules"
run check --classic "$data/check_short.xlsx" "$project"
expect_status 4 "short sheet"
[[ $(sed -n 1p "$scratch/stdout") == 'row 2, clip "C001_C002_0611EF" (id C001_C002_0611EF): warning: clip "C001_C002_0611EF" stands at position 5 of the document (counting from 0), not below the sheet'"'"'s 2 data rows: row 2 only clears its In/Out and makes subclip copies; its duration, subclip, logging fields, markers and aux timecodes are not written (add 4 more data rows (blank rows count) to the sheet)' ]] ||
  fail "short sheet says '$out'"

# A document cut short: the check says so on a line of its own, about the document, when asked
# to recover it.
head -c 20000 "$project" >"$scratch/cut.xml"
run check --recover "$source_dir/examples/log_sheet.xlsx" "$scratch/cut.xml"
expect_status 4 "cut document"
[[ $(sed -n 1p "$scratch/stdout") == "document: warning: \"$scratch/cut.xml\" is not well-formed XML: line "*"; a merge reads only what could be recovered, so clips after line "*" may be missing (repair the document or export it again)" ]] ||
  fail "cut document says '$out'"
rm "$scratch/cut.xml"

# --changes lists the merge's changes after the findings; nothing is written anywhere.
cp "$project" "$scratch/project.xml"
run check --changes "$source_dir/examples/log_sheet.xlsx" "$scratch/project.xml"
expect_status 4 "changes"
grep -qxF 'row 2, clip "A001_C001_0611AB" (id A001_C001_0611AB): labels/label2: "" -> "Interview"' "$scratch/stdout" ||
  fail "changes lack the label2 of row 2"
grep -qxF 'row 3, clip "A001_C002_0611AB" (id A001_C002_0611AB clip01): made a copy of the clip for the row'"'"'s subclip' "$scratch/stdout" ||
  fail "changes lack the first subclip copy"
cmp -s "$project" "$scratch/project.xml" || fail "check changed its XML file"
[[ $(ls -A "$scratch" | sort | tr '\n' ' ') == "project.xml stderr stdout " ]] || fail "check wrote a file"

# A merge that would fail: status 1 and the merge's own line.
sed '/<duration>1500<\/duration>/d' "$project" >"$scratch/broken.xml"
run merge "$source_dir/examples/log_sheet.xlsx" "$scratch/broken.xml" "$scratch/out.xml"
merge_err=$err
run check "$source_dir/examples/log_sheet.xlsx" "$scratch/broken.xml"
expect_status 1 "check of a merge that fails" "pellago: clip *"
[[ $err == "$merge_err" ]] || fail "check says '$err', merge says '$merge_err'"
[[ $(tail -n 1 "$scratch/stdout") == "row 2, clip \"A001_C001_0611AB\" (id A001_C001_0611AB): error: ${merge_err#pellago: }" ]] ||
  fail "check lists the failure as '$(tail -n 1 "$scratch/stdout")'"

# A pipe whose reader has gone, and a file size limit: status 1 and one line, never a signal.
status=$(/usr/bin/python3 -c '
import os, subprocess, sys
read, write = os.pipe()
os.close(read)
print(subprocess.run(sys.argv[1:], stdout=write).returncode)
' "$pellago" check --changes --json "$data/check_mistakes.xlsx" "$project" 2>"$scratch/stderr")
err=$(cat "$scratch/stderr")
expect_status 1 "closed pipe" "pellago: cannot write standard output: Broken pipe"
(
  ulimit -f 1
  "$pellago" check --changes "$data/check_mistakes.xlsx" "$project" >"$scratch/big.txt" 2>"$scratch/stderr"
)
status=$? err=$(cat "$scratch/stderr")
expect_status 1 "file size limit" "pellago: cannot write standard output: File too large"
rm "$scratch/big.txt"

# Not a log sheet: status 3. Wrong usage: status 2.
run check --classic "$scratch/log.XLSX" "$project"
expect_status 3 "upper-case extension"
run check "$data/check_clean.xlsx"
expect_status 2 "one argument" "pellago: XML is required; see 'pellago check --help'"

finish check
