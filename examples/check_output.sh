#!/bin/sh
# Runs a program and compares what it prints, line ends at the end apart: check_output.sh EXPECTED PROGRAM [ARGUMENT...]
set -eu
expected=$1
shift
output=$("$@")
printf '%s\n' "$output" | diff -u "$expected" -
