#!/bin/sh
# Builds every program in examples/ against the library installed under the
# given prefix (through pkg-config, as a user's program would) and runs each
# example's narration script, examples/<name>.demo, in name order.
set -eu
stage=$1
top=$(cd "$(dirname "$0")/.." && pwd)
bin=$top/build/examples
mkdir -p "$bin"

export PKG_CONFIG_PATH="$stage/lib/pkgconfig${PKG_CONFIG_PATH:+:$PKG_CONFIG_PATH}"
flags=$(pkg-config --cflags --libs tarnwick)
for src in "$top"/examples/*.cpp; do
    [ -e "$src" ] || continue
    name=$(basename "$src" .cpp)
    # shellcheck disable=SC2086
    g++ -std=c++17 -O2 -Wall -Wextra -o "$bin/$name" "$src" $flags -Wl,-rpath,"$stage/lib"
done

export DEMO_BIN="$bin" DEMO_DATA="$top/examples/data"
for script in "$top"/examples/*.demo; do
    [ -e "$script" ] || continue
    echo
    echo "=== $(basename "$script" .demo)"
    sh "$script"
done
