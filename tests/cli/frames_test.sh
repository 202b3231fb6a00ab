#!/usr/bin/env bash
# Checks `pellago frames`: the count alone on standard output and a warning on standard error, a
# negative number after "--", and status 2 with nothing on standard output for wrong usage. The
# guide's examples (docs_log_sheets) show more conversions; all are checked in tests/timecode.
# Usage: frames_test.sh PATH_OF_PELLAGO
set -u
pellago=$1
source "$(dirname "$0")/common.sh"

run frames -- -100.5 25 NDF
expect_status 0 "frames -- -100.5 25 NDF" 'pellago: warning: "-100.5" is not *'
[[ $(cat "$scratch/stdout" && echo x) == -1495$'\n'x ]] || fail "frames -- -100.5 25 NDF printed '$out'"

# Split at blanks: each word is an argument.
for usage in "25" "fast NDF" "25 NDF extra" "nan NDF" "inf NDF"; do
  run frames 01:00:00:00 $usage
  [[ $status -eq 2 && -z $out ]] || fail "frames 01:00:00:00 $usage printed '$out' (status $status)"
done

finish frames
