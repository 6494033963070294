#!/bin/sh
# Corvella: removes Safari's cache where the agent itself does not reach it.
# Runs without arguments, with HOME set to the user's real home folder; harmless where there is no Safari.
[ -n "$HOME" ] && [ -d "$HOME" ] || exit 0
for folder in "$HOME/Library/Containers/com.apple.Safari/Data/Library/Caches/com.apple.Safari" \
              "$HOME/Library/Caches/com.apple.Safari/WebKitCache"; do
    [ -d "$folder" ] && [ ! -L "$folder" ] && find "$folder" -xdev -type f -delete
done
exit 0
