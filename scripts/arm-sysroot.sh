#!/usr/bin/env bash
# Makes the armhf sysroot the cross build links against: Debian's armhf builds of the libraries
# the project uses, fetched with apt-get download and unpacked with dpkg -x (installing them
# through multiarch can fail on version skew between the armhf and amd64 indexes).
#
#   scripts/arm-sysroot.sh [--print]
#
# The sysroot lives outside the checkout, in ${IRC_ARM_SYSROOT:-$XDG_CACHE_HOME/ircontrol/
# armhf-sysroot}, and is reused while the resolved package list (names and versions) is unchanged.
# --print writes its path on stdout (messages go to stderr). The C and C++ runtime come from the cross toolchain, not from here.
set -euo pipefail

SYSROOT=${IRC_ARM_SYSROOT:-${XDG_CACHE_HOME:-$HOME/.cache}/ircontrol/armhf-sysroot}
# What the build asks pkg-config and CMake for; everything else is their dependency closure.
ROOTS=(libjson-glib-dev libgtest-dev libgmock-dev libbenchmark-dev libsoup-3.0-dev libmosquitto-dev)
# Not unpacked, nor followed further: the cross toolchain's own C/C++ runtime, and the UI half of
# sysprof (GTK 4, Mesa, LLVM), which libsoup's -dev package drags in for a header-only
# dependency (sysprof-capture-4).
SKIP='^(libc6|libc6-dev|libc-dev-bin|libgcc-s1|libgcc-12-dev|libstdc\+\+6|libstdc\+\+-12-dev|linux-libc-dev|libcrypt1|libcrypt-dev|libsysprof-ui-5|libgtk-4-dev|libadwaita-1-dev)$'
# Only libraries are unpacked: tools (compilers, pkg-config, python, perl, systemd) run natively.
KEEP='^(lib.*|zlib1g.*|googletest)$'

say() { echo "arm-sysroot: $*" >&2; }
PRINT=0; [ "${1:-}" = --print ] && PRINT=1

SUDO=""
[ "$(id -u)" -eq 0 ] || SUDO=sudo
if ! dpkg --print-foreign-architectures | grep -qx armhf; then
    say "adding the armhf architecture to dpkg"
    $SUDO dpkg --add-architecture armhf
fi
if ! apt-cache show libjson-glib-dev:armhf >/dev/null 2>&1; then
    say "apt-get update (armhf indexes)"
    # A mirror in mid-sync can fail one index; the package lookups below decide whether it matters.
    $SUDO apt-get -o DPkg::Lock::Timeout=600 update -qq || say "warning: apt-get update reported errors"
fi

# The resolver's choice for an empty armhf system: one alternative per dependency, exact versions.
empty=$(mktemp); trap 'rm -f "$empty"' EXIT
resolved=$(apt-get -s -qq -o Dir::State::status="$empty" -o APT::Architecture=armhf \
    -o APT::Architectures::=armhf -o Debug::NoLocking=1 \
    install --no-install-recommends "${ROOTS[@]}" | awk '$1 == "Inst" { gsub(/[()]/, "", $3); a = $NF; gsub(/[][)]/, "", a); print $2, $3 ":" a }')
[ -n "$resolved" ] || { echo "arm-sysroot: could not resolve ${ROOTS[*]} for armhf" >&2; exit 1; }

# Follow the dependencies from the roots through the resolved set, stopping at SKIP and at tools.
# shellcheck disable=SC2046
edges=$(apt-cache depends --no-recommends --no-suggests --no-conflicts --no-breaks \
    --no-replaces --no-enhances $(awk '{ print $1 ":armhf" }' <<<"$resolved") 2>/dev/null |
    awk '/^[^ ]/ { sub(/:.*/, ""); from = $0; next }
         { t = $NF; gsub(/[<>]/, "", t); sub(/:.*/, "", t); print from, t }')
wanted=$(awk -v roots="${ROOTS[*]}" -v skip="$SKIP" -v keep="$KEEP" '
    FNR == NR { version[$1] = $2; next }
    { deps[$1] = deps[$1] " " $2 }
    END {
        n = split(roots, queue, " ")
        for (i = 1; i <= n; i++) seen[queue[i]] = 1
        for (i = 1; i <= n; i++) {
            p = queue[i]
            if (!(p in version) || p ~ skip || p !~ keep) continue
            print p "=" version[p]  # version:architecture
            m = split(deps[p], d, " ")
            for (j = 1; j <= m; j++) if (!(d[j] in seen)) { seen[d[j]] = 1; queue[++n] = d[j] }
        }
    }' <(echo "$resolved") <(echo "$edges") | sort)

# One build of the sysroot at a time (parallel CI jobs share the cache).
mkdir -p "$(dirname "$SYSROOT")"
exec 9>"$SYSROOT.lock"
flock 9
if [ -f "$SYSROOT/.packages" ] && [ "$(cat "$SYSROOT/.packages")" = "$wanted" ]; then
    [ $PRINT = 1 ] && echo "$SYSROOT"
    exit 0
fi

say "building $SYSROOT from $(wc -l <<<"$wanted") armhf packages"
work=$(mktemp -d "$SYSROOT.new.XXXXXX")
trap 'rm -f "$empty"; rm -rf "$work"' EXIT
mkdir -p "$work/debs" "$work/root"
# shellcheck disable=SC2046
(cd "$work/debs" && apt-get download -qq $(sed -E 's/^([^=]*)=(.*):([^:]*)$/\1:\3=\2/' <<<"$wanted") 2>&1 |
    grep -v 'unsandboxed as root' >&2 || true)
[ "$(find "$work/debs" -name '*.deb' | wc -l)" -eq "$(wc -l <<<"$wanted")" ] ||
    { echo "arm-sysroot: apt-get download fetched fewer packages than asked for" >&2; exit 1; }
for deb in "$work"/debs/*.deb; do dpkg -x "$deb" "$work/root"; done

# Absolute links point into the build machine; make them relative so they stay inside the root.
find "$work/root" -type l -lname '/*' -print0 | while IFS= read -r -d '' link; do
    target=$(readlink "$link")
    ln -sfn "$(realpath -m --relative-to="$(dirname "$link")" "$work/root$target")" "$link"
done
echo "$wanted" >"$work/root/.packages"

rm -rf "$SYSROOT"
mv "$work/root" "$SYSROOT"
say "done: $(du -sh "$SYSROOT" | cut -f1)"
[ $PRINT = 1 ] && echo "$SYSROOT"
exit 0
