#!/usr/bin/env bash
# An X server of its own (Xvfb), for the end-to-end tests and the figure scripts: a screen of WxH
# at 24 bits on the first free display, no TCP. It prints the display's number on stdout once the
# server accepts clients, so that runs side by side never race for a display, and it becomes the
# server (exec), so that the caller ends it by the pid it started.
# Usage: tests/e2e/private-x.sh WxH
exec Xvfb -displayfd 1 -screen 0 "${1}x24" -nolisten tcp
