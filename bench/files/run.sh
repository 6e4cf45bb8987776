#!/usr/bin/env bash
# Benchmark of the file tree operations on a tree of 20,000 files in 2,000 folders, in a fresh
# project prefix. Not part of the test command. Usage: bench/files/run.sh [runs, default 5]
set -euo pipefail
source "$(dirname "$0")/../../scripts/common.sh"

runs=${1:-5}
ensure_packages
BUILD_TARGET=tree_bench build_library x64 >/dev/null
fresh_prefix
trap stop_wine EXIT

work="$WINEPREFIX/drive_c/calder-bench"
rm -rf "$work" && mkdir -p "$work"

# The template: 40 folders of 49 subfolders each (2,000 folders), 10 small files in every one.
template="$work/full"
for top in $(seq -w 1 40); do
  for sub in $(seq -w 0 49); do
    folder="$template/top$top"
    [ "$sub" = 00 ] || folder="$folder/sub$sub"
    mkdir -p "$folder"
    for file in $(seq 0 9); do printf 'file %s\n' "$file" >"$folder/file$file.dat"; done
  done
done
(cd "$template" && find . -type d) | (cd "$work" && mkdir -p bare && cd bare && xargs mkdir -p)
echo "tree: $(find "$template" -type f | wc -l) files in $(find "$template" -mindepth 1 -type d | wc -l) folders"
for run in $(seq 0 $((runs - 1))); do
  cp -r "$template" "$work/remove-$run"
  cp -r "$template" "$work/rd-$run"
done

wine "$BUILD/x64/bin/tree_bench.exe" 'C:\calder-bench' "$runs"
rm -rf "$work"
