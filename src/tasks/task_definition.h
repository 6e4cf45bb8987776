// Copies a scheduled task's XML definition, giving each StartBoundary a fresh date and time.
#pragma once

#include <windows.h>

#include <ctime>
#include <string>

// Where the rewriter takes the current time from: the runtime's time() unless a test binds
// another clock. The shipped library never changes it.
using ClockReader = std::time_t (*)();
extern ClockReader ReadClock;

// The start boundary for a task made at `now`: tomorrow's date and the time of day of `now`,
// as YYYY-MM-DDTHH:MM:SS in local time, without zone or fraction.
std::wstring NextStartBoundary(std::time_t now);

// Streams the UTF-16 definition at `sourcePath` through the platform's XML reader and writer
// into `destinationPath` (created or truncated first), indented anew, replacing the text of
// every StartBoundary element with NextStartBoundary(ReadClock()). S_FALSE (1) when the whole
// file was copied; otherwise the HRESULT of the step that failed, most with a line on standard
// output. What was written before a failure stays in the destination.
HRESULT RewriteStartBoundary(std::wstring sourcePath, std::wstring destinationPath);
