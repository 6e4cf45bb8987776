#!/usr/bin/env bash
# Runs every test: builds both libraries and the tests, makes a fresh Wine prefix, runs CTest.
# Extra arguments go to CTest (for example: scripts/test.sh -R LaunchedFromTKM).
set -euo pipefail
source "$(dirname "$0")/common.sh"

ensure_packages
build_library x86 -DCALDER_TESTS=OFF
build_library x64 -DCALDER_TESTS=ON
fresh_prefix
trap stop_wine EXIT
cd "$BUILD/x64"
ctest --output-on-failure --timeout 600 "$@"
