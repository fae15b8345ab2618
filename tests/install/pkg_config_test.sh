#!/bin/sh
# Builds and runs the host with the flags that pkg-config gives: pkg_config_test.sh PREFIX LIBDIR HOST_SOURCE WORK_FOLDER
set -eu
prefix=$1 libdir=$2 source=$3 work=$4
export PKG_CONFIG_PATH="$prefix/$libdir/pkgconfig"
mkdir -p "$work"
# shellcheck disable=SC2046  # the flags are words
c++ -std=c++11 -Wall -Wextra -Wpedantic -Werror "$source" -o "$work/host" $(pkg-config --cflags --libs kvxdm) \
  -Wl,-rpath-link,"$prefix/$libdir"
LD_LIBRARY_PATH="$prefix/$libdir" "$work/host" | grep -F 'for $row in /library/book'
