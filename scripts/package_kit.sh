# Packages on the real engine: build a package from packaging/, run wine msiexec with a verbose
# log, read and check the log. Sourced by the demonstration and by each package scenario.

source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

SCENARIO_DIR="$BUILD/scenarios"
LOG_DIR="$BUILD/logs"
mkdir -p "$SCENARIO_DIR" "$LOG_DIR"
SCENARIO_FAILURES=0

# build_package OUT.msi WXS DLL [-D name=file]... [--row Property=Value]...
# Files named by -D are copied beside the DLL so that wixl finds them by their bare names;
# each --row becomes a row of the package's TESSEL_InstallProperties table.
build_package() {
  local out=$1 wxs=$2 dll=$3
  shift 3
  local stage
  stage=$(mktemp -d "$SCENARIO_DIR/stage.XXXXXX")
  cp "$dll" "$stage/Calder_CA.dll"
  local defines=(-D CalderDll=Calder_CA.dll) rows=()
  while [ $# -gt 0 ]; do
    case $1 in
      -D) cp "${2#*=}" "$stage/"; defines+=(-D "${2%%=*}=$(basename "${2#*=}")"); shift 2 ;;
      --row) rows+=("$2"); shift 2 ;;
      *) echo "build_package: unknown argument $1" >&2; return 2 ;;
    esac
  done
  (cd "$stage" && wixl -a x64 "${defines[@]}" -o package.msi "$wxs" 2>/dev/null) || return 1
  {
    printf 'Property\tValue\r\ns72\tl0\r\nTESSEL_InstallProperties\tProperty\r\n'
    local row
    for row in "${rows[@]}"; do printf '%s\t%s\r\n' "${row%%=*}" "${row#*=}"; done
  } >"$stage/TESSEL_InstallProperties.idt"
  (cd "$stage" && msibuild package.msi -i TESSEL_InstallProperties.idt) || return 1
  mv "$stage/package.msi" "$out"
  rm -rf "$stage"
}

# msiexec_status LOG msiexec-arguments...: runs the engine quietly with a verbose log and prints
# the low byte of its exit code, which is all a Linux shell sees of it (compare with low_byte).
msiexec_status() {
  local log=$1
  shift
  rm -f "$log"
  local status=0
  wine msiexec "$@" /qn /l*v "$(windows_path "$log")" >/dev/null 2>&1 || status=$?
  echo "$status"
}

low_byte() { echo $(($1 & 255)); }

# check DESCRIPTION COMMAND...: runs a check, prints its outcome, counts failures.
check() {
  local description=$1
  shift
  if "$@"; then
    echo "ok   $description"
  else
    echo "FAIL $description"
    SCENARIO_FAILURES=$((SCENARIO_FAILURES + 1))
  fi
}

# log_has LOG LINE: the log holds LINE as a whole line (CR LF line ends ignored). grep reads
# the whole stream (no -q): under pipefail, a grep that stops early would fail the pipeline.
log_has() { tr -d '\r' <"$1" | grep -a -F -x -- "$2" >/dev/null; }
log_lacks() { ! tr -d '\r' <"$1" | grep -a -F -- "$2" >/dev/null; }

# library_lines LOG: the library's own lines of a log, in order.
library_lines() { tr -d '\r' <"$1" | grep -a -E '^(Calder_CA|CALDER_CA|CreateProcess) '; }

finish_scenario() {
  if [ "$SCENARIO_FAILURES" -ne 0 ]; then
    echo "$SCENARIO_FAILURES check(s) failed"
    exit 1
  fi
  echo "all checks passed"
}
