# Shared by the project's commands: installs the toolchain when missing, builds, and owns the Wine prefix.
# Sourced, not run.

ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
BUILD="$ROOT/build"
export WINEPREFIX="$BUILD/wineprefix"
export WINEDEBUG=-all
export WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d"
export WINEARCH=win64
# Wine's recycle bin is $XDG_DATA_HOME/Trash (by default in the user's home): keep it in the build tree.
export XDG_DATA_HOME="$BUILD/xdg-data"

# Debian packages the project needs, and a file or command that shows each is there.
REQUIRED_PACKAGES=(
  "g++-mingw-w64-x86-64-posix:/usr/bin/x86_64-w64-mingw32-g++-posix"
  "g++-mingw-w64-i686-posix:/usr/bin/i686-w64-mingw32-g++-posix"
  "wine:/usr/bin/wine"
  "wine64:/usr/lib/wine/wine64"
  "msitools:/usr/bin/msibuild"
  "wixl:/usr/bin/wixl"
  "cmake:/usr/bin/cmake"
  "ninja-build:/usr/bin/ninja"
  "googletest:/usr/src/googletest/CMakeLists.txt"
)

ensure_packages() {
  local missing=() entry
  for entry in "${REQUIRED_PACKAGES[@]}"; do
    [ -e "${entry#*:}" ] || missing+=("${entry%%:*}")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  echo "Installing: ${missing[*]}"
  local sudo=""
  [ "$(id -u)" -eq 0 ] || sudo="sudo"
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

# build_library ARCH [extra cmake options]: configures and builds build/ARCH (x64 or x86);
# with BUILD_TARGET set, only that target.
build_library() {
  local arch=$1
  shift
  cmake -S "$ROOT" -B "$BUILD/$arch" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_TOOLCHAIN_FILE="$ROOT/cmake/mingw-$arch.cmake" "$@" >/dev/null
  cmake --build "$BUILD/$arch" ${BUILD_TARGET:+--target "$BUILD_TARGET"}
}

# fresh_prefix: a new 64-bit Wine prefix of the project's own. A console program that waits for
# a key that never comes keeps Wine's own services running, with their output away from the
# test runner's pipes (a service that inherited such a pipe would keep the runner waiting), and
# makes every later Wine process start quickly. stop_wine ends it all.
fresh_prefix() {
  stop_wine
  rm -rf "$WINEPREFIX" "$XDG_DATA_HOME"
  mkdir -p "$XDG_DATA_HOME/Trash"
  mkdir -p "$BUILD"
  wineboot -i >/dev/null 2>&1
  # The first boot goes on in the background (its services hold the service database locked):
  # let it end before anything starts.
  wineserver -w
  local fifo="$BUILD/keepalive.fifo"
  rm -f "$fifo" && mkfifo "$fifo"
  wine cmd /c pause <"$fifo" >/dev/null 2>&1 &
  # The calling shell holds the writing end: the pause lasts as long as that shell.
  exec 9>"$fifo"
  # Wine's desktop process starts with the first program that asks for the desktop window and
  # keeps that program's output open: start it here, with none.
  wine rundll32.exe user32.dll,GetDesktopWindow >/dev/null 2>&1
  # Windows always runs the task scheduler; a fresh Wine prefix starts it on demand only.
  wine sc start schedule >/dev/null 2>&1 || true
}

stop_wine() {
  if [ -d "$WINEPREFIX" ]; then wineserver -k >/dev/null 2>&1 || true; fi
}

# The Windows path of a file of this machine, as Wine sees it.
windows_path() {
  winepath -w "$1" 2>/dev/null
}
