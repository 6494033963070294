#!/bin/sh
# Corvella: removes Safari's cookies where the agent itself does not reach them.
# Runs without arguments, with HOME set to the user's real home folder; harmless where there is no Safari.
[ -n "$HOME" ] && [ -d "$HOME" ] || exit 0
rm -f -- "$HOME/Library/Cookies/Cookies.binarycookies" \
    "$HOME/Library/Containers/com.apple.Safari/Data/Library/Cookies/Cookies.binarycookies"
exit 0
