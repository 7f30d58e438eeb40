#!/usr/bin/env bash
# The JSON tests and the end-to-end tests (plugin loaded with dlopen, used, unloaded) under
# valgrind memcheck: any error, or memory definitely or indirectly lost, fails the run.
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD=${1:-build}
[ -x "$BUILD/tests/test_common" ] || make build BUILD="$BUILD"

export G_SLICE=always-malloc G_DEBUG=gc-friendly
out=$(mktemp)
trap 'rm -f "$out"' EXIT
# Fair scheduling so busy host threads cannot starve the plugin's worker; a failing test's own
# output is shown, not only valgrind's.
run() {
  echo "valgrind: $*"
  if ! valgrind --quiet --error-exitcode=1 --fair-sched=yes --leak-check=full \
      --errors-for-leak-kinds=definite,indirect --show-leak-kinds=definite,indirect \
      "$@" >"$out"; then
    cat "$out"
    exit 1
  fi
}
run "$BUILD/tests/test_common"
run "$BUILD/tests/test_ircontrol_core"
# One plugin lifecycle per process, as ctest runs them.
for test in $("$BUILD/tests/e2e/test_e2e" --gtest_list_tests | awk '/^[^ ]/{suite=$1} /^  /{print suite $1}'); do
  run "$BUILD/tests/e2e/test_e2e" --gtest_filter="$test"
done
echo "valgrind: clean"
