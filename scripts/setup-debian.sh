#!/bin/sh
# Installs the Debian packages that building, testing and benchmarking need.
# Quiet and quick when everything is present; otherwise one apt-get run, as
# root or through sudo.
set -eu

PACKAGES="cmake g++ make pkg-config
libgtest-dev libgmock-dev libbenchmark-dev
libdb5.3-dev db5.3-util libmd-dev
libssl-dev"

missing=""
for p in $PACKAGES; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'ok installed'; then
        missing="$missing $p"
    fi
done
[ -z "$missing" ] && exit 0

echo "setup: installing$missing"
if [ "$(id -u)" -eq 0 ]; then
    SUDO=""
elif command -v sudo >/dev/null 2>&1; then
    SUDO="sudo"
else
    echo "setup: need root or sudo to install:$missing" >&2
    exit 1
fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
# shellcheck disable=SC2086
$SUDO apt-get install -y -qq --no-install-recommends $missing >/dev/null
