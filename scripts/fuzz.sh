#!/usr/bin/env bash
# Builds the libFuzzer targets with clang, ASan and UBSan, and runs each from its seed corpus.
#   scripts/fuzz.sh ci     20 s per target (what .ci/run does; seven targets)
#   scripts/fuzz.sh long   10 min per target (make fuzz)
# New inputs go to fuzz-corpus/ (ignored by git); a crash leaves its input in build-fuzz/ and
# fails the run: keep it as a regression input in fuzz/corpus/<target>/ once fixed.
set -euo pipefail
cd "$(dirname "$0")/.."
mode=${1:-ci}
case $mode in
  ci) seconds=20 ;;
  long) seconds=600 ;;
  *) echo "usage: $0 ci|long" >&2; exit 2 ;;
esac
bash scripts/install-deps.sh
CC=clang CXX=clang++ cmake -S . -B build-fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DIRC_BUILD_FUZZ=ON -DIRC_BUILD_TESTS=OFF -DIRC_BUILD_BENCH=OFF \
  -DIRC_SANITIZE=address,undefined >/dev/null
targets=(json key_event serve_line ac_frame decode flipper_ir lircd_conf)
cmake --build build-fuzz -j 2 --target "${targets[@]/#/fuzz_}"
for target in "${targets[@]}"; do
  mkdir -p "fuzz-corpus/$target"
  echo "fuzz_$target: $seconds s"
  (cd build-fuzz && ASAN_OPTIONS=detect_leaks=1 ./bin/fuzz_$target -max_total_time="$seconds" \
     -timeout=10 -rss_limit_mb=2048 -max_len=8192 -print_final_stats=1 \
     "../fuzz-corpus/$target" "../fuzz/corpus/$target" 2>&1 | tail -n 12)
done
echo "fuzzing: no finding"
