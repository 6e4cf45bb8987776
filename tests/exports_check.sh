#!/usr/bin/env bash
# Checks a built Calder_CA.dll: it exports exactly the names of the module-definition file,
# undecorated, and imports no compiler runtime DLL.
# Usage: exports_check.sh OBJDUMP DLL DEF
set -uo pipefail
objdump=$1 dll=$2 def=$3
table=$("$objdump" -p "$dll") || { echo "FAIL cannot read $dll"; exit 1; }

expected=$(sed -n '/^EXPORTS/,$p' "$def" | sed -e 's/;.*//' -e 's/[[:space:]]//g' | grep -v -e '^$' -e '^EXPORTS$' | sort)
exported=$(sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/p' <<<"$table" | sed -n 's/^[[:space:]]*\[[[:space:]]*[0-9]*\][[:space:]]\+//p' | sort)
failures=0
if [ "$expected" != "$exported" ]; then
  echo "FAIL exports differ from the .def:"
  diff <(echo "$expected") <(echo "$exported")
  failures=1
fi
runtime=$(grep -i -E 'DLL Name: *(libstdc\+\+|libgcc|libwinpthread)' <<<"$table")
if [ -n "$runtime" ]; then
  echo "FAIL compiler runtime imported: $runtime"
  failures=1
fi
[ $failures -eq 0 ] && echo "ok   $(wc -l <<<"$exported") exports, undecorated; imports: $(grep 'DLL Name' <<<"$table" | sed 's/.*DLL Name: //' | tr '\n' ' ')"
exit $failures
