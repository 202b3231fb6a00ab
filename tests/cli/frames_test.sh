#!/usr/bin/env bash
# Checks `pellago frames`: the count printed on one line, the arguments reaching the conversion (a
# fractional rate with DF, a negative number after "--"), the warnings for unusual input, and status
# 2 with nothing on standard output for wrong usage. The conversions are checked in tests/timecode.
# Usage: frames_test.sh PATH_OF_PELLAGO
set -u
pellago=$1
source "$(dirname "$0")/common.sh"

# expect_frames COUNT WARNED ARGUMENT...: COUNT and a newline on stdout; stderr empty, or a warning
# about WARNED.
expect_frames() {
  local count=$1 warned=$2
  shift 2
  run frames "$@"
  [[ $status -eq 0 && $(cat "$scratch/stdout" && echo x) == "$count"$'\n'x ]] ||
    fail "frames $* printed '$out' (status $status), expected $count"
  if [[ -z $warned ]]; then
    [[ -z $err ]] || fail "frames $* warned '$err'"
  else
    [[ $err == "pellago: warning: \"$warned\" is not "* ]] || fail "frames $* warned '$err'"
  fi
}
expect_frames 107892 '' '01:00:00;00' 29.97 DF
expect_frames -1495 -100.5 -- -100.5 25 NDF
expect_frames 108000 df '01:00:00;00' 29.97 df

# Split at blanks: each word is an argument.
for usage in "25" "fast NDF" "25 NDF extra" "nan NDF" "inf NDF"; do
  run frames 01:00:00:00 $usage
  [[ $status -eq 2 && -z $out ]] || fail "frames 01:00:00:00 $usage printed '$out' (status $status)"
done

finish frames
