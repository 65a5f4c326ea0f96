#!/usr/bin/env bash
# Installs the package `make package` built, starts the installed pairwell as
# a new user with an empty home under Xvfb, and saves what the screen shows:
# the first-start message, then the main window after it is answered, in
# build/screenshots/installed-*.png. Needs root (apt, useradd).
#
# Usage: scripts/installed-screenshot.sh [BUILD_DIR]
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${1:-$root/build}"
deb="$(ls "$build"/packages/pairwell_*.deb)"
out="$build/screenshots"
user=pairwell-first-start

export DEBIAN_FRONTEND=noninteractive
apt-get install -y -q --no-install-recommends x11-apps xdotool netpbm xvfb xauth >/dev/null
apt-get install -y -q "$deb" >/dev/null
if id "$user" >/dev/null 2>&1; then userdel -r "$user" 2>/dev/null || true; fi
useradd -m -s /bin/bash "$user"
shots="$(mktemp -d)"
chmod 777 "$shots"

# As the new user: start the program, shoot, answer the message, shoot.
su - "$user" -c "xvfb-run -a -s '-screen 0 1100x760x24' bash -c '
  pairwell & program=\$!
  sleep 5; xwd -root -silent > $shots/first.xwd
  xdotool key Return
  sleep 3; xwd -root -silent > $shots/main.xwd
  kill \$program'"

mkdir -p "$out"
xwdtopnm "$shots/first.xwd" 2>/dev/null | pnmtopng >"$out/installed-first-start.png"
xwdtopnm "$shots/main.xwd" 2>/dev/null | pnmtopng >"$out/installed-main-window.png"
echo "Configuration made: $(ls /home/$user/.config/pairwell/)"
echo "Screenshots: $out/installed-first-start.png $out/installed-main-window.png"
rm -rf "$shots"
userdel -r "$user" 2>/dev/null || true
