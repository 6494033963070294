#!/bin/bash
# "make package" makes a Debian package that lintian finds no error in, with every file the desktop
# and the shell look for, and manual pages that render without a warning.
# Usage: package.sh BUILD_DIR
set -u
build=$1
work=$(mktemp -d); trap 'rm -rf "$work"' EXIT
fail=0
check() { if ! eval "$1"; then echo "FAIL: $2"; fail=1; fi; }

cpack --config "$build/CPackConfig.cmake" -B "$work" >"$work/cpack.log" 2>&1 ||
    { cat "$work/cpack.log"; exit 1; }
deb=$(ls "$work"/corvella_*.deb)
lintian --fail-on error "$deb" >"$work/lintian.log" 2>&1
lintian_status=$?
grep -v 'root privileges' "$work/lintian.log"
check '[ $lintian_status = 0 ]' "lintian reports errors"

dpkg-deb -x "$deb" "$work/root"
for path in usr/bin/corvella usr/bin/corvella-clean usr/libexec/corvella/corvella-login-helper \
    usr/share/applications/com.tovanex.Corvella6.desktop \
    usr/share/applications/com.tovanex.Corvella6.scripts.desktop \
    usr/share/metainfo/com.tovanex.Corvella6.metainfo.xml \
    usr/share/icons/hicolor/scalable/apps/com.tovanex.Corvella6.svg \
    usr/share/icons/hicolor/scalable/status/com.tovanex.Corvella6{,-running}-symbolic.svg \
    usr/share/icons/hicolor/{16x16,22x22,24x24,32x32,48x48,64x64,128x128,256x256}/apps/com.tovanex.Corvella6.png \
    usr/share/man/man1/corvella.1.gz usr/share/man/man1/corvella-clean.1.gz \
    usr/share/bash-completion/completions/corvella-clean usr/share/doc/corvella/copyright; do
    check '[ -s "$work/root/$path" ]' "the package has no /$path"
done
# Each bitmap icon is as large as the folder it is in says.
for png in "$work"/root/usr/share/icons/hicolor/*x*/apps/*.png; do
    size=$(basename "$(dirname "$(dirname "$png")")")
    check '[ "$(python3 -c "import struct,sys; d=open(sys.argv[1],\"rb\").read(24); print(\"%dx%d\" % struct.unpack(\">II\", d[16:24]))" "$png")" = "$size" ]' \
        "$png is not $size"
done
for page in "$work"/root/usr/share/man/man1/*.gz; do
    warnings=$(LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -l "$page" 2>&1 >/dev/null)
    check '[ -z "$warnings" ]' "$(basename "$page") renders with warnings: $warnings"
done
# The packaged programs run and say the package's version.
check '[ "$("$work/root/usr/bin/corvella-clean" --version)" = "corvella-clean $(dpkg-deb -f "$deb" Version | cut -d- -f1)" ]' \
    "the packaged corvella-clean does not say the package's version"
exit $fail
