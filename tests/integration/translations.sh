#!/bin/bash
# Every text of the sources is in the translations and translated into German, with the same
# placeholders; the programs speak the user's language and fall back to English.
# Usage: translations.sh SOURCE_DIR BIN_DIR LUPDATE
set -u
src=$1 bin=$2 lupdate=$3
work=$(mktemp -d); trap 'rm -rf "$work"' EXIT
fail=0
check() { if ! eval "$1"; then echo "FAIL: $2"; fail=1; fi; }

# The committed files are what lupdate makes of today's sources ("make translations" updates them).
cp "$src"/translations/*.ts "$work/"
"$lupdate" -silent -no-obsolete -locations none -target-language de_DE "$src/src" -ts "$work/corvella_de.ts"
"$lupdate" -silent -no-obsolete -locations none -pluralonly -target-language en "$src/src" -ts "$work/corvella_en.ts"
for ts in corvella_de.ts corvella_en.ts; do
    check 'cmp -s "$src/translations/$ts" "$work/$ts"' \
        "translations/$ts is not up to date with the sources; run \"make translations\" and translate: $(diff "$src/translations/$ts" "$work/$ts" | grep '^[<>] *<source>' | head -5)"
done

python3 - "$work/corvella_de.ts" "$work/corvella_en.ts" <<'PY' || fail=1
import re, sys, xml.etree.ElementTree as ET
status = 0
for path in sys.argv[1:]:
    for context in ET.parse(path).getroot():
        name = context.findtext('name')
        for message in context.iter('message'):
            source = message.findtext('source')
            translation = message.find('translation')
            forms = [f.text or '' for f in translation.findall('numerusform')] or [translation.text or '']
            where = f'{path.rsplit("/", 1)[-1]}: {name}: "{source[:60]}"'
            if translation.get('type') == 'unfinished' or not all(forms):
                print(f'FAIL: {where} is not translated'); status = 1
            wanted = sorted(re.findall(r'%(?:\d|n|@)', source))
            for form in forms:
                if sorted(re.findall(r'%(?:\d|n|@)', form)) != wanted:
                    print(f'FAIL: {where}: "{form[:60]}" has other placeholders'); status = 1
sys.exit(status)
PY

# The programs follow the locale; without one of ours they speak English.
export HOME=$work # nothing below reads or writes settings, but never the real ones
out=$(LANG=de_DE.UTF-8 LANGUAGE= LC_ALL= "$bin/corvella-clean" Netscape 2>&1)
check '[[ $out == *"unbekannter Browser „Netscape“"* ]]' "corvella-clean does not speak German: $out"
out=$(LANG=fr_FR.UTF-8 LANGUAGE= LC_ALL= "$bin/corvella-clean" Netscape 2>&1)
check '[[ $out == *"unknown browser \"Netscape\""* ]]' "corvella-clean does not fall back to English: $out"
out=$(LANG=de_DE.UTF-8 LANGUAGE= LC_ALL= QT_QPA_PLATFORM=offscreen "$bin/corvella" --help 2>/dev/null)
check '[[ $out == Aufruf:* ]]' "the agent does not speak German: $out"
exit $fail
