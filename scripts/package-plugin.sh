#!/usr/bin/env bash
# Makes what the TV gets: the stripped plugin, in BUILD/package/. Prints its size and the
# libraries it needs, and fails unless it exports exactly CreatePlugin and DestroyPlugin and
# leaves every platform function it calls undefined (the host process provides them).
#
#   scripts/package-plugin.sh BUILD [TOOL_PREFIX]     e.g. build-arm arm-linux-gnueabihf-
set -euo pipefail

build=${1:?usage: package-plugin.sh BUILD [TOOL_PREFIX]}
prefix=${2:-}
plugin="$build/bin/libircontrol-plugin.so"
out="$build/package/libircontrol-plugin.so"
[ -f "$plugin" ] || { echo "package: no $plugin (build it first)" >&2; exit 1; }

mkdir -p "$build/package"
"${prefix}strip" --strip-unneeded -o "$out" "$plugin"

fail=0
exported=$("${prefix}nm" -D --defined-only "$out" | awk '{ print $3 }' | sort | tr '\n' ' ')
if [ "$exported" != "CreatePlugin DestroyPlugin " ]; then
    echo "package: exports must be exactly CreatePlugin and DestroyPlugin, found $(wc -w <<<"$exported"):" \
         "$(cut -d' ' -f1-5 <<<"$exported") ..." >&2
    fail=1
fi
# The platform's functions are the ones declared in platform/include/.
platform='^(vyrf_|irkt_irbl_|vconf_|system_info_|dlog_)'
undefined=$("${prefix}nm" -D --undefined-only "$out" | awk '{ print $2 }' | grep -E "$platform" || true)
defined=$("${prefix}nm" -D --defined-only "$out" | awk '{ print $3 }' | grep -E "$platform" || true)
if [ -z "$undefined" ] || [ -n "$defined" ]; then
    echo "package: platform functions must all stay undefined; defined: $(wc -w <<<"$defined")" \
         "($(head -3 <<<"$defined" | tr '\n' ' ')...), undefined: $(wc -w <<<"$undefined")" >&2
    fail=1
fi
needed=$("${prefix}readelf" -d "$out" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
if grep -q vyrsim <<<"$needed"; then
    echo "package: the plugin must not need the simulator" >&2
    fail=1
fi

[ $fail = 0 ] || exit 1
echo "$out: $(stat -c %s "$out") bytes ($("${prefix}readelf" -h "$out" | sed -n 's/ *Machine: *//p'))"
echo "NEEDED: $(tr '\n' ' ' <<<"$needed")"
echo "exports: $exported; platform functions left undefined: $(wc -w <<<"$undefined")"
