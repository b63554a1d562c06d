#!/usr/bin/env bash
# Makes the Quilb Notes installer with quilb_pack and runs it unattended inside a private
# sandbox (an overlay over the whole file system), then shows what it installed. Nothing
# reaches the host: the sandbox's writes vanish with it.
#
#   examples/run_demo.sh [BUILD_DIR]          (default: build)
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
top=$(cd "$here/.." && pwd)
build=$(cd "${1:-$top/build}" && pwd)
product=$here/quilb-notes
work=$(mktemp -d /tmp/quilb-demo.XXXXXX)
trap 'rm -rf "$work"' EXIT

echo "== Packing the product and the installer"
"$build/bin/quilb_pack" package -t "$product/install.xml" -b "$product" \
  --add license.md="$product/license.md" -o "$work/quilb-notes.ibin"
"$build/bin/quilb_pack" installer -p "$work/quilb-notes.ibin" -o "$work/quilb-notes-setup"
ls -l "$work"

echo
echo "== Running the installer unattended: ./quilb-notes-setup -configFile=config.xml -quiet=0"
cp "$product/config.xml" "$work/config.xml"
status=0
"$top/scripts/sandbox.sh" -b "$work" -w "$work" -- bash -c '
  ./quilb-notes-setup -configFile="$PWD/config.xml" -quiet=0
  status=$?
  echo
  echo "== Installer exit status: $status"
  echo "== Installed in the sandbox under /opt/quilb-notes:"
  if [ -d /opt/quilb-notes ]; then
    find /opt/quilb-notes -type f | sort | while read -r f; do ls -l "$f"; done
    echo
    echo "== /opt/quilb-notes/share/notes.conf, with the answers filled in:"
    cat /opt/quilb-notes/share/notes.conf
    echo
    echo "== The action log, which a later uninstall reads (TABs shown as ^I):"
    sed -e "s/\r\$//" /opt/quilb-notes/uninstall/quilb-notes.log | cat -T
  else
    echo "(nothing was installed)"
    status=1
  fi
  exit $status' || status=$?
exit $status
