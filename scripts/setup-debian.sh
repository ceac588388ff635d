#!/bin/sh
# Installs the Debian packages that one or more groups of targets need:
#   scripts/setup-debian.sh build test     (several groups at once)
# Groups:
#   build   compiling and installing the library and the tool
#   demo    build, plus what the example narrations call (db5.3_dump, Python)
#   test    the test suite: GoogleTest, both compilers, the fuzzers' runtime
#           for the short fuzz pass, the real peers the tests talk to
#   bench   Google Benchmark and the OpenSSL baselines
#   fuzz    clang and its libFuzzer runtime
#   docs    Doxygen
#   deb     the Debian packaging tools
# Quiet and quick when everything is present; otherwise one apt-get run, as
# root or through sudo.
set -eu

build="cmake g++ make pkg-config libdb5.3-dev libmd-dev"
demo="$build db5.3-util python3"
fuzz="$build clang-14 libclang-rt-14-dev"
test="$demo $fuzz libgtest-dev libgmock-dev dnsmasq-base doxygen"
bench="$build libbenchmark-dev libssl-dev"
docs="doxygen"
deb="$build debhelper dpkg-dev fakeroot lintian"

[ $# -gt 0 ] || set -- build
wanted=""
for group in "$@"; do
    case $group in
    build) wanted="$wanted $build" ;;
    demo) wanted="$wanted $demo" ;;
    test) wanted="$wanted $test" ;;
    bench) wanted="$wanted $bench" ;;
    fuzz) wanted="$wanted $fuzz" ;;
    docs) wanted="$wanted $docs" ;;
    deb) wanted="$wanted $deb" ;;
    *) echo "setup: unknown group '$group'" >&2; exit 2 ;;
    esac
done

missing=""
for p in $wanted; do
    case " $missing " in *" $p "*) continue ;; esac
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
