#!/bin/bash
# Compares the order of the virtual operations, as g++ lays them out, with slots.txt: slots_test.sh TOP_FOLDER
# With --update as the second argument it writes slots.txt anew; read docs/abi.md before.
set -euo pipefail
top=$1
expected=$top/tests/abi/slots.txt
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The dump of an interface names no operations; that of the class behind it names each one in its slot.
dump_classes() {
  printf '#include "%s"\n' kvxdmmain.h kvxdmelem.h kvxdmattr.h kvxdmns.h kvxdmcol.h >"$work/classes.cpp"
  g++ -std=c++20 -I"$top/include" -I"$top/base" -I"$top/src" -fdump-lang-class="$work/dump" -c "$work/classes.cpp" \
    -o "$work/classes.o"
}

# A table begins with two entries for the compiler; slot 1 comes after them.
print_slots() {
  awk '/^Vtable for XDM[A-Za-z]*Impl$/ { print $3; inside = 1; slot = -2; next }
       /^$/ { inside = 0 }
       inside && /^[0-9]/ { if (++slot > 0) { sub(/.*::/, ""); printf "%4d %s\n", slot, $0 } }' "$work/dump"
}

dump_classes
print_slots >"$work/slots"
if [[ ${2-} == --update ]]; then cp "$work/slots" "$expected"; fi
diff -u "$expected" "$work/slots"
