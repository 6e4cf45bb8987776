#!/usr/bin/env bash
# The install manager gate and the staging actions under the real engine: an install started by
# the manager stages its values; one that was not stops at the gate.
# Usage: frame_gate_and_staging.sh CALDER_DLL
set -uo pipefail
source "$(dirname "$0")/../../scripts/package_kit.sh"

dll=$1
package="$SCENARIO_DIR/frame.msi"
marker="$SCENARIO_DIR/marker.txt"
echo "installed by the demonstration package" >"$marker"
pid="{7E2B9C14-3A5D-4F60-8B1C-2D9E4A6F0B37}"
build_package "$package" "$ROOT/packaging/demo.wxs" "$dll" -D "MarkerFile=$marker" \
  --row "TESSEL_PID=$pid" || { echo "FAIL cannot build the package"; exit 1; }
installed="$WINEPREFIX/drive_c/Program Files/Tessel Technologies/Demonstration/marker.txt"
folder='C:\Program Files\Tessel Technologies\Demonstration\'

echo "--- not started by the install manager"
log="$LOG_DIR/frame-gate.log"
status=$(msiexec_status "$log" /i "$(windows_path "$package")")
check "the install fails (the engine reports an unknown status as 1603; exit code $status)" [ "$status" = "$(low_byte 1603)" ]
check "the gate logs its line" log_has "$log" "CALDER_CA Not Launched from TKM and unable to get property"
check "the user message is in the log" log_has "$log" "This application will now abort."
check "no staging action ran" log_lacks "$log" "Calder_CA SetInstallDir() start"
check "nothing was installed" [ ! -e "$installed" ]

echo "--- started by the install manager"
log="$LOG_DIR/frame-install.log"
status=$(msiexec_status "$log" /i "$(windows_path "$package")" LAUNCHED_FROM_TKM=1)
check "the install succeeds (exit code $status)" [ "$status" = 0 ]
check "the gate lets it through" log_has "$log" "CALDER_CA Launched from TKM: 1 "
check "SetInstallDir stages DeleteTKMDir" log_has "$log" \
  "Calder_CA DeleteTKMDir SetInstallDir(), $folder should be set in CustomActionData "
check "SetInstallDir stages UpdateCfg" log_has "$log" \
  "Calder_CA UpdateCfg SetInstallDir(), $folder should be set in CustomActionData "
check "the package table is read" log_has "$log" \
  "Calder_CA GetFromMSITable() PackageRead Property Value is $pid "
check "SetTkmTesselPid stages CleanRegistry" log_has "$log" \
  "Calder_CA SetTkmTesselPid(), $pid should be set in CustomActionData "
check "DeleteTKMDir holds the folder" log_has "$log" "Property(S): DeleteTKMDir = $folder"
check "UpdateCfg holds the folder" log_has "$log" "Property(S): UpdateCfg = $folder"
check "CleanRegistry holds the package id" log_has "$log" "Property(S): CleanRegistry = $pid"
check "the package's file is installed" [ -e "$installed" ]

status=$(msiexec_status "$LOG_DIR/frame-uninstall.log" /x "$(windows_path "$package")")
check "the uninstall succeeds (exit code $status)" [ "$status" = 0 ]
check "the package's file is gone" [ ! -e "$installed" ]
finish_scenario
