#!/bin/sh
# Corvella: removes Safari's cache where the agent itself does not reach it, keeping what the cache
# cleaner keeps (the "Extensions" folder of Safari's container caches).
# Runs without arguments, with HOME set to the user's real home folder; harmless where there is no Safari.
[ -n "$HOME" ] && [ -d "$HOME" ] || exit 0
caches="$HOME/Library/Containers/com.apple.Safari/Data/Library/Caches"
if [ -d "$caches/com.apple.Safari" ] && [ ! -L "$caches/com.apple.Safari" ]; then
    for entry in "$caches/com.apple.Safari"/* "$caches/com.apple.Safari"/.[!.]*; do
        [ -e "$entry" ] || [ -L "$entry" ] || continue
        [ "$(basename "$entry")" = Extensions ] && continue
        rm -rf -- "$entry"
    done
fi
for folder in "$caches/WebKit" "$HOME/Library/Caches/com.apple.Safari/WebKitCache"; do
    [ -d "$folder" ] && [ ! -L "$folder" ] && rm -rf -- "$folder"
done
exit 0
