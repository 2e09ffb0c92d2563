#!/bin/sh
# dpkg-shlibdeps, which for another machine finds the cross compiler's libraries: libc6-armhf-cross is libc6 there.
set -eu
dependencies=$(dpkg-shlibdeps "$@")
printf '%s\n' "$dependencies" | sed "s/-$DEB_HOST_ARCH-cross//g; s/:$DEB_HOST_ARCH//g"
