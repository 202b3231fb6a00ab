#!/usr/bin/env bash
# Checks the contract of `pellago merge`: exit statuses 0, 1, 2 and 3; the merged bytes; nothing
# written on failure; the output may be the input; a linked output replaces the file the links end
# at and keeps its permissions; outputs that are not regular files are refused; - is standard
# output; recovered documents; a read-only folder and a file size limit leave the old output and no
# temporary file behind.
# Usage: merge_test.sh PATH_OF_PELLAGO SOURCE_DIR
set -u
pellago=$1
source_dir=$2
source "$(dirname "$0")/common.sh"

cp "$source_dir/examples/log_sheet.xlsx" "$source_dir/examples/project.xml" "$scratch/"
merged="$source_dir/tests/merge/data/merge_example_logged.xml"
sheet="$scratch/log_sheet.xlsx"
project="$scratch/project.xml"
# A clip without a <duration>: the merge fails at its row.
sed '/<duration>1500<\/duration>/d' "$project" >"$scratch/broken.xml"
broken="$scratch/broken.xml"

# expect_same FILE EXPECTED_FILE WHAT
expect_same() {
  cmp -s "$1" "$2" || fail "$3: $1 differs from $2"
}

# expect_only_output FOLDER: the folder holds out.xml, the earlier output, and no temporary file.
expect_only_output() {
  [[ $(ls -A "$1") == out.xml && $(cat "$1/out.xml") == "earlier output" ]] ||
    fail "$1 holds '$(ls -A "$1")'"
}

# A merge: status 0, the merged bytes (here and below under the classic rules, whose output is
# the data file's), a one-line summary, no progress bar off a terminal.
run merge --classic "$sheet" "$project" "$scratch/out.xml"
expect_status 0 "merge" ""
expect_same "$scratch/out.xml" "$merged" "merge"
summary="visited 6 clips, changed 5; A001_C002_0611AB became 3 subclips: \"Boat arrives\", \"Rope throw\", \"Wide harbour\"; added 6 markers; 1 sheet row matched no clip; wrote $scratch/out.xml; run 'pellago check' to see why"
[[ $out == "$summary" ]] || fail "summary reads '$out'"
run merge "$sheet" "$project" "$scratch/out.xml"
[[ $out == "visited 6 clips, changed 5; A001_C002_0611AB gave 3 subclips: "* ]] ||
  fail "summary under the default rules reads '$out'"

# Not a log sheet: status 3, one line naming the extensions, nothing written; an upper-case
# extension is told apart.
run merge "$scratch/log.csv" "$project" "$scratch/not_written.xml"
expect_status 3 "not a log sheet" "pellago: $scratch/log.csv is not a log sheet: *.xls or .xlsx"
run merge --classic "$scratch/log.XLSX" "$project" "$scratch/not_written.xml"
expect_status 3 "upper-case extension" "*compared in lower case*rename it to $scratch/log.xlsx"
run merge "$scratch/log.XLSX" "$project" "$scratch/not_written.xml"
expect_status 1 "upper-case extension, read" "pellago: cannot read \"$scratch/log.XLSX\": No such file or directory"

# A mistyped command names the commands there are.
run mrege "$sheet" "$project" "$scratch/not_written.xml"
expect_status 2 "mistyped command" 'pellago: "mrege" is not a command; the commands are merge, inspect, check, frames and export (did you mean merge?)*'

# A failing merge: status 1, one line naming the clip and row; no output.
run merge "$sheet" "$broken" "$scratch/not_written.xml"
expect_status 1 "clip without a duration" 'pellago: clip "A001_C001_0611AB" (id A001_C001_0611AB, sheet row 2): no <duration> element'
[[ ! -e $scratch/not_written.xml ]] || fail "a file was written for a failure or a sheet that is not a log sheet"

# The output may be the input file itself.
cp "$project" "$scratch/in_place.xml"
run merge --classic "$sheet" "$scratch/in_place.xml" "$scratch/in_place.xml"
expect_status 0 "output is the input"
expect_same "$scratch/in_place.xml" "$merged" "output is the input"

# A linked output: the file at the end of the chain is replaced and keeps its permission bits; the
# links stay links.
mkdir -p "$scratch/links/xml"
echo "earlier output" >"$scratch/links/xml/target.xml"
chmod 600 "$scratch/links/xml/target.xml"
ln -s xml/target.xml "$scratch/links/latest.xml"
ln -s links/latest.xml "$scratch/linked.xml"
run merge --classic "$sheet" "$project" "$scratch/linked.xml"
expect_status 0 "linked output"
[[ -L $scratch/linked.xml && -L $scratch/links/latest.xml ]] || fail "a link was replaced by a file"
expect_same "$scratch/links/xml/target.xml" "$merged" "linked output"
[[ $(stat -c %a "$scratch/links/xml/target.xml") == 600 && $(ls -A "$scratch/links/xml") == target.xml ]] ||
  fail "linked output left $(ls -l "$scratch/links/xml")"

# Output targets: an existing target that is not a regular file (a FIFO, directly or through a
# link) or that is the sheet itself is refused with one line and left as it was; - is stdout.
mkfifo "$scratch/fifo"
ln -s fifo "$scratch/fifo_link.xml"
cp "$sheet" "$scratch/sheet_copy.xlsx"
ln -s sheet_copy.xlsx "$scratch/sheet_link.xml"
for target in fifo fifo_link.xml sheet_link.xml; do
  run merge "$scratch/sheet_copy.xlsx" "$project" "$scratch/$target"
  expect_status 1 "output $target" "pellago: cannot write \"$scratch/$target\"*"
done
[[ -p $scratch/fifo ]] || fail "the FIFO was replaced"
# /dev/stdout on a pipe: a link the kernel resolves to the pipe itself.
"$pellago" merge "$sheet" "$project" /dev/stdout 2>"$scratch/stderr" | cat >/dev/null
status=${PIPESTATUS[0]} err=$(cat "$scratch/stderr")
expect_status 1 "output /dev/stdout on a pipe" 'pellago: cannot write "/dev/stdout": it exists and is not a regular file'
expect_same "$scratch/sheet_copy.xlsx" "$sheet" "the sheet as output"
run merge --classic "$sheet" "$project" -
expect_status 0 "standard output" "visited 6 clips*wrote standard output; run 'pellago check' to see why"
expect_same "$scratch/stdout" "$merged" "standard output"
"$pellago" merge "$sheet" "$project" - 2>/dev/null | head -c 1 >/dev/null
status=${PIPESTATUS[0]}
[[ $status -eq 1 || $status -eq 0 ]] || fail "a closed standard output ended the merge with status $status"

# Damaged documents: a truncated export or a NUL byte halfway is refused, naming the line, and
# nothing is written (--classic --strict too); --recover, or --classic, merges what was read, with
# one warning line naming the file, line, column and error count, and a note in the summary;
# nothing else from the parser reaches stderr.
head -c 2000 "$project" >"$scratch/truncated.xml"
{
  head -c 3000 "$project"
  printf '\0'
  tail -c +3001 "$project"
} >"$scratch/nul.xml"
for xml in truncated nul; do
  run merge --recover "$sheet" "$scratch/$xml.xml" "$scratch/recovered.xml"
  expect_status 0 "$xml document" "pellago: warning: $scratch/$xml.xml is not well-formed XML: line *, column * error*"
  [[ $out == *"; clips after line "*" of $scratch/$xml.xml may be missing; run 'pellago check' to see why" ]] || fail "$xml summary '$out'"
  for flags in "" "--classic --strict"; do
    run merge $flags "$sheet" "$scratch/$xml.xml" "$scratch/refused.xml"
    expect_status 1 "$xml document, refused" "pellago: \"$scratch/$xml.xml\" is not well-formed XML: line *--recover"
    [[ ! -e $scratch/refused.xml ]] || fail "a file was written for the $xml document"
  done
done

# A read-only folder, and a file size limit (a full disk) that makes the write fail: status 1, the
# old output as it was, no temporary file. Root writes into any folder, so as root the first runs
# as an unprivileged user.
mkdir "$scratch/read_only" "$scratch/small"
echo "earlier output" | tee "$scratch/read_only/out.xml" >"$scratch/small/out.xml"
chmod 755 "$scratch" "$scratch/read_only"
chmod 644 "$scratch/read_only/out.xml" "$sheet" "$project"
chmod 555 "$scratch/read_only"
[[ $(id -u) -ne 0 ]] || wrap="setpriv --reuid=nobody --regid=nogroup --clear-groups --"
run merge -q "$sheet" "$project" "$scratch/read_only/out.xml"
expect_status 1 "read-only folder"
expect_only_output "$scratch/read_only"
wrap="prlimit --fsize=8192 --"
run merge "$sheet" "$project" "$scratch/small/out.xml"
expect_status 1 "file size limit"
[[ $err == *"File too large"* ]] || fail "file size limit says '$err'"
expect_only_output "$scratch/small"

finish merge
