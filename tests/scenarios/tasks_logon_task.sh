#!/usr/bin/env bash
# The settings application's logon task under the real engine: the install registers it from the
# definition in the application's folder (a folder with blanks in its name), the uninstall
# deletes it. The task scheduler is asked through its own interface.
# Usage: tasks_logon_task.sh CALDER_DLL REGISTERED_TASK_EXE
set -uo pipefail
source "$(dirname "$0")/../../scripts/package_kit.sh"

dll=$1
registered_task=$2
package="$SCENARIO_DIR/tasks.msi"
marker="$SCENARIO_DIR/tasks-marker.txt"
echo "installed by the logon task package" >"$marker"
build_package "$package" "$ROOT/packaging/logon_task.wxs" "$dll" -D "MarkerFile=$marker" ||
  { echo "FAIL cannot build the package"; exit 1; }

folder='C:\Program Files\Rex Settings App'
location_key='HKLM\SOFTWARE\Tessel Technologies\Install\Rexion'
run_key='HKLM\SOFTWARE\Microsoft\Windows\CurrentVersion\Run'
description="Calder scenario logon task $$"
unix_folder="$WINEPREFIX/drive_c/Program Files/Rex Settings App"
mkdir -p "$unix_folder"
{
  printf '\xff\xfe'
  printf '%s\r\n' '<?xml version="1.0" encoding="UTF-16"?>' \
    '<Task version="1.2" xmlns="http://schemas.microsoft.com/windows/2004/02/mit/task">' \
    "  <RegistrationInfo><Description>$description</Description></RegistrationInfo>" \
    '  <Triggers><LogonTrigger><Enabled>true</Enabled></LogonTrigger></Triggers>' \
    '  <Actions Context="Author"><Exec><Command>rexcmd.exe</Command></Exec></Actions>' \
    '</Task>' | iconv -f utf-8 -t utf-16le
} >"$unix_folder/StartRex.xml"
wine reg add "$location_key" /v Location /t REG_SZ /d "$folder" /f >/dev/null 2>&1
wine reg add "$run_key" /v StartRex /t REG_SZ /d 'rexcmd.exe startwithdelay' /f >/dev/null 2>&1
wine schtasks /delete /TN StartRex /F >/dev/null 2>&1

task_registered() { wine "$registered_task" StartRex 2>/dev/null | tr -d '\r' | grep -a -F -- "$1" >/dev/null; }
task_absent() { ! wine "$registered_task" StartRex >/dev/null 2>&1; }
run_value_absent() { ! wine reg query "$run_key" /v StartRex >/dev/null 2>&1; }

echo "--- install"
check "no task StartRex before the install" task_absent
status=$(msiexec_status "$LOG_DIR/tasks-install.log" /i "$(windows_path "$package")")
check "the install succeeds (exit code $status)" [ "$status" = 0 ]
check "the task scheduler knows StartRex, made from the definition in the folder with blanks" \
  task_registered "<Description>$description</Description>"
check "the Run value StartRex is removed" run_value_absent

echo "--- uninstall"
status=$(msiexec_status "$LOG_DIR/tasks-uninstall.log" /x "$(windows_path "$package")")
check "the uninstall succeeds (exit code $status)" [ "$status" = 0 ]
check "the task StartRex is deleted" task_absent

wine reg delete "$location_key" /f >/dev/null 2>&1
rm -rf "$unix_folder"
finish_scenario
