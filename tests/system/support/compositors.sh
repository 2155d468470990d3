# The Wayland compositors of with-desktop, which sources this: each start_NAME leaves WAYLAND_DISPLAY and DISPLAY set.
# shellcheck shell=bash

written() { [[ -s "$1" ]]; }

# sway refuses to run as root: it and what it needs to write belong to nobody.
run_sway() { # DISPLAY-NAMES VARIABLE…
  local nobody=65534 own="$folder/sway" names=$1
  shift
  mkdir -m 0700 "$own"
  chmod 0711 "$folder"
  chown "$nobody:$nobody" "$own"
  cat >"$own/config" <<END
output $names-1 resolution 1920x1080 position 0 0
output $names-2 resolution 1280x800 position 1920 0
workspace 1 output $names-1
workspace 2 output $names-2
xwayland enable
focus_follows_mouse no
focus_on_window_activation focus
default_border none
exec sh -c 'xhost +local: && echo "\$DISPLAY" >"$own/x" && echo "\$SWAYSOCK" >"$own/ipc" && echo "\$WAYLAND_DISPLAY" >"$own/wayland"'
END
  start compositor setpriv --reuid="$nobody" --regid="$nobody" --clear-groups env \
    XDG_RUNTIME_DIR="$own" HOME="$own" WLR_LIBINPUT_NO_DEVICES=1 WLR_RENDERER=pixman DBUS_SESSION_BUS_ADDRESS=disabled: "$@" sway -c "$own/config"
  await "sway" written "$own/wayland"
  DISPLAY=$(<"$own/x") ORVANTA_SWAY=$(<"$own/ipc") WAYLAND_DISPLAY="$own/$(<"$own/wayland")"
  export DISPLAY ORVANTA_SWAY WAYLAND_DISPLAY
  if [[ "$helper" == yes ]]; then export SWAYSOCK="$ORVANTA_SWAY"; fi
}

start_sway() {
  run_sway HEADLESS WLR_BACKENDS=headless WLR_HEADLESS_OUTPUTS=2
}

# Its displays are windows of an X server, for one of headless displays cannot be switched off. Closing a window takes the display away.
start_sway-in-x() {
  start_x_server
  xhost +local: >>"$folder/log/server"
  # sway asks for these names only if somebody has used them before.
  xprop -root -f WM_PROTOCOLS 32a -set WM_PROTOCOLS WM_DELETE_WINDOW
  export ORVANTA_OUTER_DISPLAY=$DISPLAY
  run_sway X11 WLR_BACKENDS=x11 WLR_X11_OUTPUTS=2
}

# The packaged program carries a file capability, with which it is refused here; a copy does not.
start_kwin() {
  cp "$(command -v kwin_wayland)" "$folder/kwin_wayland"
  export KWIN_WAYLAND_NO_PERMISSION_CHECKS=1 KWIN_SCREENSHOT_NO_PERMISSION_CHECKS=1
  cat >"$XDG_CONFIG_HOME/kwinrc" <<END
[Windows]
FocusStealingPreventionLevel=0
Placement=Centered
END
  printf '#!/bin/sh\necho "$DISPLAY" >"%s"\n' "$folder/x" >"$folder/tell-display"
  chmod +x "$folder/tell-display"
  start compositor env KWIN_COMPOSE=O2 LIBGL_ALWAYS_SOFTWARE=1 "$folder/kwin_wayland" --virtual --width 1920 --height 1080 --output-count 2 \
    --xwayland --no-lockscreen --no-global-shortcuts --socket orvanta-test "$folder/tell-display"
  await "KWin" written "$folder/x"
  DISPLAY=$(<"$folder/x") WAYLAND_DISPLAY=orvanta-test
  export DISPLAY WAYLAND_DISPLAY
  if [[ "$helper" == no ]]; then
    await "KWin's name" gdbus wait --session --timeout 1 org.kde.KWin
    return
  fi
  kwin_answers() { gdbus call --session --dest org.kde.KWin --object-path /Scripting --method org.kde.kwin.Scripting.isScriptLoaded none; }
  await "KWin's scripting" kwin_answers
}

# It has neither layers nor anything by which applications are seen, and no seat.
start_weston() {
  start compositor weston --backend=headless-backend.so --use-pixman --width=1920 --height=1080 --socket=orvanta-test --idle-time=0 \
    --no-config --xwayland
  x_display_named() { grep -q 'xserver listening on display' "$folder/log/compositor"; }
  await "weston" x_display_named
  DISPLAY=$(grep -o 'xserver listening on display :[0-9]*' "$folder/log/compositor" | grep -o ':[0-9]*')
  WAYLAND_DISPLAY=orvanta-test
  export DISPLAY WAYLAND_DISPLAY
  await "the X server" xdpyinfo
}

# A system bus of its own, on which somebody plays logind.
start_gnome() {
  export DBUS_SYSTEM_BUS_ADDRESS="unix:path=$XDG_RUNTIME_DIR/system-bus"
  start system-bus dbus-daemon --session --nofork --nopidfile --address="$DBUS_SYSTEM_BUS_ADDRESS"
  await "the system bus" gdbus call --system --dest org.freedesktop.DBus --object-path /org/freedesktop/DBus --method org.freedesktop.DBus.GetId
  start logind /usr/bin/python3 -m dbusmock --system --template logind
  await "logind" gdbus wait --system --timeout 1 org.freedesktop.login1

  local extensions="$XDG_DATA_HOME/gnome-shell/extensions" tests="$(dirname "${BASH_SOURCE[0]}")" enabled="'driver@orvanta.test'"
  mkdir -p "$extensions"
  cp -r "$tests/gnome-driver" "$extensions/driver@orvanta.test"
  # Ours as a system has it: both forms, of which the shell's own is where it looks.
  local packaging="$tests/../../../packaging/gnome-extension" share="$folder/share" form
  for form in 43 45; do "$packaging/make-extension" "$form" "$share/orvanta-focus/gnome-extension/$form"; done
  "$packaging/choose-form" "$(gnome-shell --version | tr -cd 0-9.)" "$share"
  export XDG_DATA_DIRS="$share:$XDG_DATA_DIRS"
  if [[ "$helper" == yes ]]; then enabled+=", 'focus@orvanta.com'"; fi
  export GSETTINGS_BACKEND=keyfile
  gsettings set org.gnome.shell enabled-extensions "[$enabled]"
  gsettings set org.gnome.shell welcome-dialog-last-shown-version 99
  gsettings set org.gnome.desktop.interface enable-animations false
  start compositor env LIBGL_ALWAYS_SOFTWARE=1 gnome-shell --headless --wayland-display orvanta-test \
    --virtual-monitor 1920x1080 --virtual-monitor 1280x800
  export WAYLAND_DISPLAY=orvanta-test
  x_display_named() { grep -q 'public X11 display :' "$folder/log/compositor"; }
  await "GNOME Shell" x_display_named
  DISPLAY=$(grep -o 'public X11 display :[0-9]*' "$folder/log/compositor" | grep -o ':[0-9]*')
  XAUTHORITY=$(echo "$XDG_RUNTIME_DIR"/.mutter-Xwaylandauth.*)
  export DISPLAY XAUTHORITY
  # The shell ends XWayland when its last client has gone; a real session always has one.
  start x-client xprop -spy -root _NET_ACTIVE_WINDOW
  shell_is_ready() {
    gdbus call --session --dest com.orvanta.Test.Driver --object-path /com/orvanta/Test/Driver --method com.orvanta.Test.Driver.Ready | grep -q true
  }
  await "GNOME's driver" shell_is_ready
}
