#!/usr/bin/env bash
# Installs the Debian package into a brand-new Debian 12 root with apt, as a person would, and checks
# there that it works: every bundled world loads and renders, the desktop entry and the AppStream
# data validate, ".sylvora" folders open with Sylvora, the programs and manual pages run, and a
# purge removes every file of the package but leaves the person's own settings and worlds.
# Usage (as root, needs debootstrap and network): scripts/check-package.sh build/sylvora_*.deb
# The first run builds a minimal root (about a minute) and keeps it as /tmp/sylvora-check-base.tar.
set -euo pipefail
deb=$(realpath "$1")
base=/tmp/sylvora-check-base.tar
root=$(mktemp -d /tmp/sylvora-check.XXXXXX)
mirror=$(sed -n 's/^URIs: //p' /etc/apt/sources.list.d/debian.sources 2>/dev/null | head -1)
mirror=${mirror:-http://deb.debian.org/debian}

if [[ ! -f $base ]]; then
  command -v debootstrap >/dev/null || DEBIAN_FRONTEND=noninteractive apt-get install -y -qq debootstrap >/dev/null
  scratch=$(mktemp -d /tmp/sylvora-base.XXXXXX)
  debootstrap --variant=minbase bookworm "$scratch" "$mirror" >/dev/null
  tar -C "$scratch" -cf "$base.part" . && mv "$base.part" "$base"
  rm -rf "$scratch"
fi
tar -C "$root" -xf "$base"
cp /etc/resolv.conf "$root/etc/resolv.conf" 2>/dev/null || true
cp "$deb" "$root/root/"
mount -t proc proc "$root/proc"
mount --rbind /dev "$root/dev"
cleanup() { umount -l "$root/proc" "$root/dev" 2>/dev/null || true; rm -rf --one-file-system "$root"; }
trap cleanup EXIT

echo "package: $(basename "$deb"), $(du -k "$deb" | cut -f1) KiB"
chroot "$root" /usr/bin/env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin LANG=C.UTF-8 \
  DEBIAN_FRONTEND=noninteractive bash -s "$(basename "$deb")" <<'INSIDE'
set -uo pipefail
deb=/root/$1
failures=0
check() {  # check NAME COMMAND...: runs the command, prints its last lines and the verdict
  local name=$1; shift
  local output
  if output=$("$@" 2>&1); then
    echo "PASS  $name"
  else
    echo "FAIL  $name"; failures=$((failures + 1))
  fi
  [[ -n $output ]] && printf '%s\n' "$output" | tail -n 4 | sed 's/^/      /'
}

apt-get update -qq
start=$(date +%s%N)
apt-get install -y -qq "$deb" >/tmp/install.log 2>&1 || { cat /tmp/install.log; exit 1; }
elapsed=$((($(date +%s%N) - start) / 1000000))
echo "apt-get install ./$(basename "$deb"): ${elapsed} ms, $(grep -c '^Setting up' /tmp/install.log) packages set up"
echo "depends: $(dpkg-query -W -f='${Depends}' sylvora)"
dpkg -L sylvora | sort > /tmp/sylvora.files
# The tools the checks use, installed only after the package so they cannot hide a missing dependency.
apt-get install -y -qq --no-install-recommends desktop-file-utils appstream xdg-utils man-db bash-completion >/dev/null 2>&1

for world in /usr/share/sylvora/worlds/*.sylvora; do
  check "info '$(basename "$world")'" sylvora-cli info "$world"
  check "render '$(basename "$world")' (30 s)" sylvora-cli render "$world" -o /tmp/render.flac --duration 30s
done
check "five bundled worlds" test "$(ls -d /usr/share/sylvora/worlds/*.sylvora | wc -l)" -eq 5
check "desktop-file-validate" desktop-file-validate /usr/share/applications/org.sylvora.Sylvora.desktop
check "appstreamcli validate --no-net" appstreamcli validate --no-net /usr/share/metainfo/org.sylvora.Sylvora.metainfo.xml
check "'.sylvora' is application/x-sylvora-world" grep -q '^[0-9]*:application/x-sylvora-world:\*\.sylvora' /usr/share/mime/globs2
check "xdg-mime query default application/x-sylvora-world" \
  bash -c 'answer=$(xdg-mime query default application/x-sylvora-world); echo "$answer"; [[ $answer == org.sylvora.Sylvora.desktop ]]'
check "sylvora --version" timeout 20 env QT_QPA_PLATFORM=offscreen sylvora --version
check "sylvora --help in German" \
  bash -c 'LANG=de_DE.UTF-8 QT_QPA_PLATFORM=offscreen timeout 20 sylvora --help | head -n 2 | tee /dev/stderr | grep -q "^Aufruf: sylvora"'
check "sylvora-cli --version" sylvora-cli --version
check "man sylvora" bash -c 'man -P cat sylvora | head -n 3'
check "man sylvora-cli" bash -c 'man -P cat sylvora-cli | head -n 3'
check "bash completion" bash -c 'source /usr/share/bash-completion/bash_completion; _completion_loader sylvora-cli; complete -p sylvora-cli'

# The person's own things, which a purge must leave alone.
mkdir -p /root/.config/Sylvora "/root/Worlds/Mine.sylvora"
echo "[General]" > /root/.config/Sylvora/Sylvora.ini
apt-get purge -y -qq sylvora >/dev/null 2>&1
left=$(while read -r path; do [[ -e $path && ! -d $path ]] && echo "$path"; done < /tmp/sylvora.files
       [[ -e /usr/share/sylvora ]] && echo /usr/share/sylvora; dpkg -s sylvora 2>/dev/null | grep '^Status')
check "purge leaves nothing of the package" test -z "$left"
[[ -n $left ]] && echo "$left" | head | sed 's/^/      left: /'
check "purge keeps the person's settings and worlds" test -f /root/.config/Sylvora/Sylvora.ini -a -d "/root/Worlds/Mine.sylvora"
echo "failures: $failures"
exit $((failures > 0))
INSIDE
