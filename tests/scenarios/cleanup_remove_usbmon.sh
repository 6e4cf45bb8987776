#!/usr/bin/env bash
# The first staged pair under the real engine: an install puts the detector into its folder, the
# detector leaves a file of its own there, and at uninstall GetInstallUSBMonDir stages INSTALLDIR
# into DeleteUSBMONDir, whose deferred action RemoveUSBMON removes the whole folder.
# Usage: cleanup_remove_usbmon.sh CALDER_DLL
set -uo pipefail
source "$(dirname "$0")/../../scripts/package_kit.sh"

dll=$1
package="$SCENARIO_DIR/usbmon.msi"
detector="$SCENARIO_DIR/detector.exe"
echo "the device detector" >"$detector"
build_package "$package" "$ROOT/packaging/usbmon.wxs" "$dll" -D "DetectorFile=$detector" ||
  { echo "FAIL cannot build the package"; exit 1; }
installed="$WINEPREFIX/drive_c/Program Files/Norvik/NorvikUSB3DeviceDetector"
folder='C:\Program Files\Norvik\NorvikUSB3DeviceDetector\'

echo "--- install"
log="$LOG_DIR/usbmon-install.log"
status=$(msiexec_status "$log" /i "$(windows_path "$package")")
check "the install succeeds (exit code $status)" [ "$status" = 0 ]
check "the detector is installed" [ -e "$installed/detector.exe" ]
check "nothing is staged at install" log_lacks "$log" "Calder_CA GetInstallUSBMonDir() start"
# What the detector writes at run time: the package's own tables would leave it and its folder.
mkdir -p "$installed/logs" && echo "seen a device" >"$installed/logs/devices.log"

echo "--- uninstall"
log="$LOG_DIR/usbmon-uninstall.log"
status=$(msiexec_status "$log" /x "$(windows_path "$package")")
check "the uninstall succeeds (exit code $status)" [ "$status" = 0 ]
check "GetInstallUSBMonDir starts" log_has "$log" "Calder_CA GetInstallUSBMonDir() start"
check "GetInstallUSBMonDir stages the folder" log_has "$log" \
  "Calder_CA DeleteUSBMONDir, $folder should be set in CustomActionData "
check "DeleteUSBMONDir holds the folder" log_has "$log" "Property(S): DeleteUSBMONDir = $folder"
check "RemoveUSBMON reads it from CustomActionData" log_has "$log" \
  "CALDER_CA RemoveUSBMON Directory: $folder "
check "DeleteDirectory tries the folder" log_has "$log" \
  "CALDER_CA DeleteDirectory attempting to delete $folder "
check "the shell deletes it" log_has "$log" \
  "CALDER_CA DeleteDirectory $folder: no errors using SHFileOperation.  "
check "RemoveUSBMON reports the folder deleted" log_has "$log" \
  "Calder_CA NorvikUSB3DeviceDetector folder deleted"
check "the folder is gone with the detector's own file" [ ! -e "$installed" ]
finish_scenario
