#!/bin/bash
# The desktop entries, the AppStream file and the application icon pass the desktop's own validators.
set -euo pipefail
resources="$1/resources"
status=0
for entry in "$resources"/*.desktop; do
    output=$(desktop-file-validate "$entry" 2>&1) || { echo "$output"; status=1; }
    echo "desktop-file-validate: $(basename "$entry") ${output:+($output)}"
done
appstreamcli validate --no-net --pedantic "$resources/com.tovanex.Corvella6.metainfo.xml" || status=1
icon="$resources/icons/hicolor/scalable/apps/com.tovanex.Corvella6.svg"
python3 -c 'import sys, xml.dom.minidom as m; d = m.parse(sys.argv[1]).documentElement; sys.exit(d.tagName != "svg")' \
    "$icon" || { echo "not an SVG: $icon"; status=1; }
exit $status
