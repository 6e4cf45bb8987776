#!/usr/bin/env bash
# The main job: builds the library and the demonstration packages, installs and uninstalls them
# with the real engine in a fresh Wine prefix, and prints the library's log lines and what each
# run changed.
set -euo pipefail
source "$(dirname "$0")/package_kit.sh"

ensure_packages
BUILD_TARGET=Calder_CA build_library x64
fresh_prefix
trap stop_wine EXIT

dll="$BUILD/x64/bin/Calder_CA.dll"
work="$BUILD/demo"
mkdir -p "$work"
program_files="$WINEPREFIX/drive_c/Program Files"

# show_run TITLE LOG STATUS FOLDER: the library's lines and the run's effects.
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
  tr -d '\r' <"$2" |
    grep -a -E '^Property\(S\): (DeleteTKMDir|UpdateCfg|CleanRegistry|DeleteUSBMONDir) = ' |
    sed 's/^Property(S): /  /' || echo "  (none)"
  echo "--- ${4#$WINEPREFIX/drive_c/}: $([ -d "$4" ] && echo present || echo absent)"
}

# run TITLE LOGNAME FOLDER msiexec-arguments...
run() {
  local title=$1 log="$LOG_DIR/$2.log" folder=$3
  shift 3
  show_run "$title" "$log" "$(msiexec_status "$log" "$@")" "$folder"
}

# The manager's own package: the gate and the staging actions.
echo "installed by the demonstration package" >"$work/marker.txt"
build_package "$work/demo.msi" "$ROOT/packaging/demo.wxs" "$dll" -D "MarkerFile=$work/marker.txt" \
  --row "TESSEL_PID={7E2B9C14-3A5D-4F60-8B1C-2D9E4A6F0B37}"
demo=$(windows_path "$work/demo.msi")
folder="$program_files/Tessel Technologies/Demonstration"
run "Install not started by the install manager" demo-plain-install "$folder" /i "$demo"
run "Install started by the install manager (LAUNCHED_FROM_TKM=1)" demo-manager-install "$folder" \
  /i "$demo" LAUNCHED_FROM_TKM=1

# The device detector's package: a staged pair removes its folder at uninstall, with what the
# detector wrote there after the install.
echo "the device detector" >"$work/detector.exe"
build_package "$work/usbmon.msi" "$ROOT/packaging/usbmon.wxs" "$dll" -D "DetectorFile=$work/detector.exe"
usbmon=$(windows_path "$work/usbmon.msi")
folder="$program_files/Norvik/NorvikUSB3DeviceDetector"
run "Install of the device detector" demo-usbmon-install "$folder" /i "$usbmon"
mkdir -p "$folder/logs" && echo "seen a device" >"$folder/logs/devices.log"
run "Uninstall of the device detector (after it wrote logs\\devices.log)" demo-usbmon-uninstall \
  "$folder" /x "$usbmon"

run "Uninstall of the demonstration package" demo-uninstall \
  "$program_files/Tessel Technologies/Demonstration" /x "$demo"
