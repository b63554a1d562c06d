#!/usr/bin/env bash
# Runs a command in a private sandbox: a new mount namespace with a throw-away overlay over
# the whole root file system and a chroot into it, so that nothing the command writes to
# fixed system paths (/var/log, /etc/profile.d, /usr/share/applications, home directories)
# reaches the host. Directories named with -b are bound in read-write, so that results
# written there survive the sandbox.
#
#   scripts/sandbox.sh [-b DIR]... [-w DIR] -- COMMAND [ARG]...
#   scripts/sandbox.sh --check      exit 0 when a sandbox can be made here, 1 otherwise
#
# -w sets the working directory inside the sandbox (default: the current one).
# Exit status: the command's own, or 125 when no sandbox can be made (the reason goes to stderr).
set -euo pipefail

binds=()
workdir=$(pwd)
check=0
while [ $# -gt 0 ]; do
  case "$1" in
    -b) binds+=("$(cd "$2" && pwd)"); shift 2 ;;
    -w) workdir=$2; shift 2 ;;
    --check) check=1; shift ;;
    --) shift; break ;;
    *) break ;;
  esac
done

if [ "${QUILB_IN_SANDBOX:-0}" = 1 ]; then
  # Already inside one: nesting buys nothing.
  [ $check = 1 ] && exit 0
  cd "$workdir" && exec "$@"
fi

inner=$(cat <<'INNER'
set -e
# The scratch tmpfs goes over /mnt, which exists on every Debian system; in this private
# namespace that hides nothing from the host and leaves no directory behind.
top=/mnt
[ -d "$top" ] || top=$(mktemp -d /tmp/quilb-sandbox.XXXXXX)
mount -t tmpfs quilb-sandbox "$top"
mkdir -p "$top/upper" "$top/work" "$top/root"
mount -t overlay overlay -o "lowerdir=/,upperdir=$top/upper,workdir=$top/work" "$top/root"
for fs in /proc /sys; do
  [ -d "$fs" ] && mount --rbind "$fs" "$top/root$fs"
done
# A private /dev: the usual device nodes are bound in one by one, so that a file written
# below /dev (a mistyped "/dev/nul", say) stays in the sandbox.
mount -t tmpfs -o mode=755 quilb-dev "$top/root/dev"
for node in null zero full random urandom tty; do
  if [ -e "/dev/$node" ]; then
    touch "$top/root/dev/$node"
    mount --bind "/dev/$node" "$top/root/dev/$node"
  fi
done
mkdir -p "$top/root/dev/pts" "$top/root/dev/shm"
mount -t devpts -o newinstance,ptmxmode=0666 devpts "$top/root/dev/pts" 2>/dev/null \
  && ln -s pts/ptmx "$top/root/dev/ptmx" || mount --rbind /dev/pts "$top/root/dev/pts" 2>/dev/null || true
mount -t tmpfs -o mode=1777 quilb-shm "$top/root/dev/shm"
ln -s /proc/self/fd "$top/root/dev/fd"
ln -s /proc/self/fd/0 "$top/root/dev/stdin"
ln -s /proc/self/fd/1 "$top/root/dev/stdout"
ln -s /proc/self/fd/2 "$top/root/dev/stderr"
for dir in "${QUILB_SANDBOX_BINDS[@]}"; do
  [ -n "$dir" ] && mount --bind "$dir" "$top/root$dir"
done
if [ "$QUILB_SANDBOX_CHECK" = 1 ]; then exit 0; fi
export QUILB_IN_SANDBOX=1
exec chroot "$top/root" /bin/bash -c 'cd "$0" && exec "$@"' "$QUILB_SANDBOX_WORKDIR" "$@"
INNER
)

fail() { echo "sandbox: $*" >&2; exit 125; }
command -v unshare >/dev/null || fail "unshare is not installed"
[ "$(id -u)" -eq 0 ] || fail "making the overlay needs root (run as root, or inside a user namespace)"

export QUILB_SANDBOX_CHECK=$check QUILB_SANDBOX_WORKDIR=$workdir
export QUILB_SANDBOX_BINDS_TEXT=$(printf '%s\n' "${binds[@]+"${binds[@]}"}")
unshare -m --propagation private \
  bash -c 'mapfile -t QUILB_SANDBOX_BINDS <<<"$QUILB_SANDBOX_BINDS_TEXT"; '"$inner" bash "$@" \
  || { status=$?; [ $check = 1 ] && fail "no private mount namespace with an overlay can be made here"; exit $status; }
