#!/usr/bin/env bash
# Installs the Debian packages the build and tests need, and only those that are missing.
# Runs apt-get as root; prints nothing when everything is already there.
set -euo pipefail

# package : probe (a command, a pkg-config module or a file that shows it is present)
needed=(
  "build-essential:cmd:g++"
  "cmake:cmd:cmake"
  "ninja-build:cmd:ninja"
  "pkg-config:cmd:pkg-config"
  "libjson-glib-dev:pc:json-glib-1.0"
  "libgtest-dev:file:/usr/include/gtest/gtest.h"
  "libgmock-dev:file:/usr/include/gmock/gmock.h"
  "libbenchmark-dev:file:/usr/include/benchmark/benchmark.h"
  "clang:cmd:clang++"
  "libclang-rt-dev:glob:/usr/lib/llvm-*/lib/clang/*/lib/linux/libclang_rt.fuzzer-x86_64.a"
  "valgrind:cmd:valgrind"
  "lirc:cmd:irsimreceive"
  "libsoup-3.0-dev:pc:libsoup-3.0"
  "chromium:file:/usr/bin/chromium"
  "chromium-driver:file:/usr/bin/chromedriver"
  "python3-selenium:file:/usr/lib/python3/dist-packages/selenium"
  "libmosquitto-dev:pc:libmosquitto"
  "mosquitto:file:/usr/sbin/mosquitto"
  "python3-paho-mqtt:file:/usr/lib/python3/dist-packages/paho/mqtt"
  "systemd:cmd:systemd-analyze"
)
# `install-deps.sh arm`: also the cross compiler and the emulator of the 32-bit ARM build.
if [ "${1:-}" = arm ]; then
  needed+=(
    "g++-arm-linux-gnueabihf:cmd:arm-linux-gnueabihf-g++"
    "qemu-user:cmd:qemu-arm"
  )
fi

missing=()
for entry in "${needed[@]}"; do
  pkg=${entry%%:*}; rest=${entry#*:}; kind=${rest%%:*}; probe=${rest#*:}
  case $kind in
    cmd)  command -v "$probe" >/dev/null 2>&1 && continue ;;
    pc)   command -v pkg-config >/dev/null 2>&1 && pkg-config --exists "$probe" && continue ;;
    file) [ -e "$probe" ] && continue ;;
    glob) compgen -G "$probe" >/dev/null && continue ;;
  esac
  dpkg -s "$pkg" >/dev/null 2>&1 && [ "$kind" != pc ] && [ "$kind" != cmd ] && continue
  missing+=("$pkg")
done

[ ${#missing[@]} -eq 0 ] && exit 0

echo "installing missing packages: ${missing[*]}"
SUDO=""
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null 2>&1 || { echo "need root to install: ${missing[*]}" >&2; exit 1; }
  SUDO=sudo
fi
export DEBIAN_FRONTEND=noninteractive
# With the armhf indexes added, one index of a mirror in mid-sync can fail the update; the install
# below is what decides.
$SUDO apt-get update -qq || echo "warning: apt-get update reported errors" >&2
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
