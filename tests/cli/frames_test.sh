#!/usr/bin/env bash
# Checks `pellago frames`: the printed count (one line) of every worked conversion, and exit
# status 2 with nothing on standard output for wrong usage, and the warnings for unusual input.
# Usage: frames_test.sh PATH_OF_PELLAGO
set -u
pellago=$1
source "$(dirname "$0")/common.sh"

# expect_frames EXPECTED TIMECODE RATE FORMAT
expect_frames() {
  local expected=$1
  shift
  local output status
  # The trailing "x" keeps the newline that command substitution would strip.
  output=$("$pellago" frames "$@"; status=$?; echo x; exit $status)
  status=$?
  if [[ $status -ne 0 || $output != "$expected"$'\n'x ]]; then
    fail "pellago frames $(printf '%q ' "$@")printed '${output%x}' (status $status), expected $expected"
  fi
}

# expect_usage_error ARGUMENT...
expect_usage_error() {
  local output status
  output=$("$pellago" frames "$@" 2>/dev/null)
  status=$?
  if [[ $status -ne 2 || -n $output ]]; then
    fail "pellago frames $(printf '%q ' "$@")printed '$output' (status $status), expected status 2"
  fi
}

# The conversions themselves are checked in tests/timecode; these reach them through the arguments:
# a whole and a fractional rate, DF, an empty timecode and a negative number after "--".
expect_frames 90000 01:00:00:00 25 NDF
expect_frames 107892 '01:00:00;00' 29.97 DF
expect_frames 0 '' 25 NDF
expect_frames -1495 -- -100.5 25 NDF

# Warnings on stderr for a text that is not a timecode or a format word that is not exactly DF;
# the count printed stays the merge's.
expect_warning() {
  local expected=$1 warning=$2
  shift 2
  local output err
  output=$("$pellago" frames "$@" 2>"$scratch/stderr")
  err=$(cat "$scratch/stderr")
  [[ $output == "$expected" ]] || fail "pellago frames $* printed '$output', expected $expected"
  [[ $err == "pellago: warning: "*"$warning"* ]] || fail "pellago frames $* warned '$err'"
}
expect_warning 0 '"TBD" is not a timecode' TBD 25 NDF
expect_warning 93079 '"1:2:3:4:5" is not a timecode' 1:2:3:4:5 25 NDF
expect_warning 108000 '"df" is not DF, which is compared exactly' '01:00:00;00' 29.97 df
[[ -z $("$pellago" frames '01:00:00;00' 29.97 DF 2>&1 >/dev/null) ]] || fail "a timecode with DF warned"

expect_usage_error 01:00:00:00 25
expect_usage_error 01:00:00:00 fast NDF
expect_usage_error 01:00:00:00 25 NDF extra
expect_usage_error 01:00:00:00 nan NDF
expect_usage_error 01:00:00:00 inf NDF

finish frames
