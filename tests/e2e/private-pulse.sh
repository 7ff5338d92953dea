#!/usr/bin/env bash
# A PulseAudio daemon of its own, for the end-to-end tests and the figure scripts: its runtime
# files, home and state under FOLDER (made as needed), a 48 kHz null sink named SINK whose monitor
# can be recorded, and a native socket at FOLDER/run/native that only the clients pointed at it use
# (PULSE_SERVER=unix:FOLDER/run/native). It does not touch the user's sound server or settings.
# It becomes the daemon (exec), in the foreground, logging to stderr, so that the caller can stop,
# kill or hold it by the pid it started.
# Usage: tests/e2e/private-pulse.sh FOLDER SINK
set -eu
folder=$1
mkdir -p "$folder/run/pulse" "$folder/home" "$folder/state"
chmod 700 "$folder/run"
export XDG_RUNTIME_DIR="$folder/run" PULSE_RUNTIME_PATH="$folder/run/pulse" PULSE_STATE_PATH="$folder/state"
export HOME="$folder/home" XDG_CONFIG_HOME="$folder/home/.config"
unset PULSE_SERVER DBUS_SESSION_BUS_ADDRESS
# -n: no default configuration, only the two modules below. As root the daemon warns that it is
# meant for system mode but serves a private per-user instance all the same.
exec pulseaudio -n --daemonize=no --exit-idle-time=-1 --use-pid-file=false --system=false --log-target=stderr \
  --load="module-null-sink sink_name=$2 rate=48000" \
  --load="module-native-protocol-unix socket=$folder/run/native auth-anonymous=1"
