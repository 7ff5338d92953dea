# Shared by the desktop application's figure scripts (sourced after world_common.sh): the built
# sylvora, a private X server, and launching the application with settings of its own.

app="$build/src/app/sylvora"
[[ -x $app ]] || { echo "missing $app: build the sylvora target first" >&2; exit 1; }

# Starts Xvfb on the first free display and exports DISPLAY.
start_x() {
  local fifo="$scratch/display"
  "$e2e_scripts/private-x.sh" 1280x800 > "$fifo" 2> "$scratch/xvfb.log" &
  local x_pid=$!
  cleanups+=("kill $x_pid 2>/dev/null; wait $x_pid 2>/dev/null")
  local tries=0
  until [[ -s $fifo ]]; do
    ((++tries < 200)) || { cat "$scratch/xvfb.log" >&2; echo "Xvfb did not start" >&2; exit 1; }
    sleep 0.05
  done
  export DISPLAY=":$(head -n 1 "$fifo")" QT_QPA_PLATFORM=xcb
  # No session bus here: the application must not start one of its own.
  export DBUS_SESSION_BUS_ADDRESS="unix:path=$scratch/no-bus"
}

# Fresh settings and cache folders, as on a first launch.
fresh_settings() {
  local dir
  dir=$(mktemp -d "$scratch/settings-XXXXXX")
  export XDG_CONFIG_HOME="$dir/config" XDG_CACHE_HOME="$dir/cache"
}

# Ends the application as the session would and waits for it.
end_app() {
  kill -TERM "$1" 2>/dev/null || true
  wait "$1" 2>/dev/null || true
}
