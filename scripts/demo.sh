#!/usr/bin/env bash
# The main job: builds the library and the demonstration package, installs it with the real
# engine in a fresh Wine prefix (once as a plain install, once as one started by the install
# manager), uninstalls it, and prints the library's log lines and what each run changed.
set -euo pipefail
source "$(dirname "$0")/package_kit.sh"

ensure_packages
BUILD_TARGET=Calder_CA build_library x64
fresh_prefix
trap stop_wine EXIT

dll="$BUILD/x64/bin/Calder_CA.dll"
package="$BUILD/demo/demo.msi"
mkdir -p "$BUILD/demo"
echo "installed by the demonstration package" >"$BUILD/demo/marker.txt"
build_package "$package" "$ROOT/packaging/demo.wxs" "$dll" -D "MarkerFile=$BUILD/demo/marker.txt" \
  --row "TESSEL_PID={7E2B9C14-3A5D-4F60-8B1C-2D9E4A6F0B37}"
installed="$WINEPREFIX/drive_c/Program Files/Tessel Technologies/Demonstration"

# show_run TITLE LOG STATUS: the library's lines and the run's effects.
show_run() {
  echo
  echo "=== $1 (msiexec exit code, low byte: $3; log: ${2#$ROOT/})"
  echo "--- the library's log lines"
  library_lines "$2" | sed 's/^/  /' || echo "  (none)"
  if log_has "$2" "This application will now abort."; then
    echo "--- message to the user"
    tr -d '\r' <"$2" | grep -a -A2 '^This package requires' | sed 's/^/  /'
  fi
  echo "--- staged properties"
  tr -d '\r' <"$2" | grep -a -E '^Property\(S\): (DeleteTKMDir|UpdateCfg|CleanRegistry) = ' \
    | sed 's/^Property(S): /  /' || echo "  (none)"
  echo "--- installed folder: $([ -d "$installed" ] && echo present || echo absent)"
}

log="$LOG_DIR/demo-plain-install.log"
show_run "Install not started by the install manager" "$log" \
  "$(msiexec_status "$log" /i "$(windows_path "$package")")"

log="$LOG_DIR/demo-manager-install.log"
show_run "Install started by the install manager (LAUNCHED_FROM_TKM=1)" "$log" \
  "$(msiexec_status "$log" /i "$(windows_path "$package")" LAUNCHED_FROM_TKM=1)"

log="$LOG_DIR/demo-uninstall.log"
show_run "Uninstall" "$log" "$(msiexec_status "$log" /x "$(windows_path "$package")")"
