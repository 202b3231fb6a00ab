# What every CLI test script shares; sourced after setting pellago=PATH_OF_PELLAGO. Failures are
# counted, not fatal, so that one run lists them all; `finish` ends the script with the count.

failures=0

fail() {
  echo "FAIL: $*"
  failures=$((failures + 1))
}

scratch=$(mktemp -d)
# Some tests take the write permission away inside the scratch folder.
trap 'chmod -R u+w "$scratch"; rm -rf "$scratch"' EXIT

# run ARGUMENT...: runs pellago (after the words of $wrap, if set) with standard input closed to
# it; sets status, out and err.
run() {
  ${wrap-} "$pellago" "$@" >"$scratch/stdout" 2>"$scratch/stderr" </dev/null
  status=$?
  out=$(cat "$scratch/stdout")
  err=$(cat "$scratch/stderr")
}

# expect_status EXPECTED WHAT [ERR]: the status, and standard error one line matching the glob ERR.
expect_status() {
  [[ $status -eq $1 ]] || fail "$2: status $status, expected $1 (stderr: $err)"
  [[ $# -lt 3 || ($err == $3 && $err != *$'\n'*) ]] || fail "$2 says '$err'"
}

# finish WHAT: "all WHAT checks passed", or the number that failed and status 1.
finish() {
  if [[ $failures -ne 0 ]]; then
    echo "$failures $1 check(s) failed"
    exit 1
  fi
  echo "all $1 checks passed"
}
