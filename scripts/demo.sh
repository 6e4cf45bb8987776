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

# show_run TITLE LOG STATUS STATE: the library's lines and the run's effects; STATE is a command
# that prints what the run is meant to change.
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
  echo "--- on the machine"
  $4 | sed 's/^/  /'
}

# run TITLE LOGNAME STATE msiexec-arguments...
run() {
  local title=$1 log="$LOG_DIR/$2.log" state=$3
  shift 3
  show_run "$title" "$log" "$(msiexec_status "$log" "$@")" "$state"
}

# folder_state FOLDER: whether a folder of the prefix is there.
folder_state() { echo "${1#$WINEPREFIX/drive_c/}: $([ -d "$1" ] && echo present || echo absent)"; }

# The manager's own package: the gate and the staging actions.
echo "installed by the demonstration package" >"$work/marker.txt"
build_package "$work/demo.msi" "$ROOT/packaging/demo.wxs" "$dll" -D "MarkerFile=$work/marker.txt" \
  --row "TESSEL_PID={7E2B9C14-3A5D-4F60-8B1C-2D9E4A6F0B37}"
demo=$(windows_path "$work/demo.msi")
demo_state() { folder_state "$program_files/Tessel Technologies/Demonstration"; }
run "Install not started by the install manager" demo-plain-install demo_state /i "$demo"
run "Install started by the install manager (LAUNCHED_FROM_TKM=1)" demo-manager-install demo_state \
  /i "$demo" LAUNCHED_FROM_TKM=1

# The device detector's package: a staged pair removes its folder at uninstall, with what the
# detector wrote there after the install.
echo "the device detector" >"$work/detector.exe"
build_package "$work/usbmon.msi" "$ROOT/packaging/usbmon.wxs" "$dll" -D "DetectorFile=$work/detector.exe"
usbmon=$(windows_path "$work/usbmon.msi")
detector="$program_files/Norvik/NorvikUSB3DeviceDetector"
usbmon_state() { folder_state "$detector"; }
run "Install of the device detector" demo-usbmon-install usbmon_state /i "$usbmon"
mkdir -p "$detector/logs" && echo "seen a device" >"$detector/logs/devices.log"
run "Uninstall of the device detector (after it wrote logs\\devices.log)" demo-usbmon-uninstall \
  usbmon_state /x "$usbmon"

# The settings application's logon task: the suite's settings application is installed (its
# folder with the task definition, its location in the registry, an old Run value); the
# package's install registers the task from the definition, its uninstall deletes the task.
settings="$program_files/Rex Settings App"
mkdir -p "$settings"
{
  printf '\xff\xfe'
  printf '%s\r\n' '<?xml version="1.0" encoding="UTF-16"?>' \
    '<Task version="1.2" xmlns="http://schemas.microsoft.com/windows/2004/02/mit/task">' \
    '  <Triggers><LogonTrigger><Enabled>true</Enabled></LogonTrigger></Triggers>' \
    '  <Actions Context="Author"><Exec><Command>rexcmd.exe</Command></Exec></Actions>' \
    '</Task>' | iconv -f utf-8 -t utf-16le
} >"$settings/StartRex.xml"
wine reg add 'HKLM\SOFTWARE\Tessel Technologies\Install\Rexion' /v Location /t REG_SZ \
  /d 'C:\Program Files\Rex Settings App' /f >/dev/null 2>&1
run_key='HKLM\SOFTWARE\Microsoft\Windows\CurrentVersion\Run'
wine reg add "$run_key" /v StartRex /t REG_SZ /d 'rexcmd.exe startwithdelay' /f >/dev/null 2>&1
task_state() {
  echo "scheduled task StartRex: $([ -f "$WINEPREFIX/drive_c/windows/system32/tasks/StartRex" ] &&
    echo registered || echo absent)"
  echo "Run value StartRex: $(wine reg query "$run_key" /v StartRex >/dev/null 2>&1 &&
    echo present || echo absent)"
}
echo "installed by the logon task package" >"$work/tasks-marker.txt"
build_package "$work/tasks.msi" "$ROOT/packaging/logon_task.wxs" "$dll" \
  -D "MarkerFile=$work/tasks-marker.txt"
tasks=$(windows_path "$work/tasks.msi")
echo
echo "=== Before the logon task package"
task_state | sed 's/^/  /'
run "Install of the logon task package" demo-tasks-install task_state /i "$tasks"
run "Uninstall of the logon task package" demo-tasks-uninstall task_state /x "$tasks"

run "Uninstall of the demonstration package" demo-uninstall demo_state /x "$demo"
