#!/bin/sh
# Builds the two examples with pkg-config instead of CMake, into DIR (default
# the current directory):  examples/embed/pkg-config.sh [DIR]
set -eu
src=$(dirname "$0")
out=${1:-.}
for program in EchoResponder:echo-responder PingClient:ping-client; do
  # shellcheck disable=SC2046 # pkg-config's flags are meant to split
  ${CXX:-c++} -O2 -o "$out/${program#*:}" "$src/${program%%:*}.cpp" \
    $(pkg-config --cflags --libs lspping)
done
