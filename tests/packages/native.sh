#!/bin/sh
# native.sh ROOT: the packages that apt installed in this clean root work there.
set -eu
here=$(realpath "$(dirname "$0")")
root=$1
unit=/usr/lib/systemd/system/mibhost.service

"$here/../library_needs.sh" readelf "$root"/usr/lib/*/switchmib/libswitchmib.so
"$here/../consumer/try.sh" "$root"
chroot "$root" systemd-analyze verify --man=no "$unit"
chroot "$root" systemd-analyze security --offline=true --threshold=10 --no-pager "$unit" >"$root/tmp/security" ||
    { cat "$root/tmp/security"; exit 1; }
unshare --net "$here/serve.py" "$root" "$root$unit"

[ -s "$root/usr/share/doc/switchmib-tools/reference/index.html" ]
chroot "$root" mibhost explain --lines set swPortSpeed.5121=2 >"$root/tmp/lines"
printf 'interface port1\nspeed 100\n' | cmp - "$root/tmp/lines"
chroot "$root" dpkg --purge switchmib-tools switchmib-dev switchmib >"$root/tmp/log"
if find "$root/usr" "$root/etc" "$root/var/lib/systemd" -name '*switchmib*' -o -name '*mibhost*' | grep .; then
    echo "this is left after a purge"
    exit 1
fi
