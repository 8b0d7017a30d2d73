#!/usr/bin/env bash
# Installs and builds what connectkit needs on a Debian 12 machine.
#
#   scripts/bootstrap.sh [linux] [mingw]     (default: both)
#
# Debian packages come through apt-get (only when one is missing). log4cplus is
# built from Debian's source package with wide characters (its message type is
# std::wstring), as a shared library (the host and connectkit share one logger
# hierarchy, so the host's configuration is the library's) and without its
# thread pool, which hangs the host at FreeLibrary and at exit. GoogleTest for
# mingw comes from Debian's sources.
# Everything lands in build/deps/<target>; stamps keep a second run quick.
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
deps="$root/build/deps"
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=(linux mingw)
jobs=$(nproc 2>/dev/null || echo 2)
log4cplus_version=2.0.8

say() { printf 'bootstrap: %s\n' "$*"; }

want_mingw=0
for t in "${targets[@]}"; do
  case "$t" in
    linux) ;;
    mingw) want_mingw=1 ;;
    *) echo "bootstrap: unknown target '$t' (linux, mingw)" >&2; exit 2 ;;
  esac
done

packages=(cmake ninja-build g++ make pkg-config dpkg-dev
  libgtest-dev libgmock-dev googletest libbenchmark-dev
  libcli11-dev nlohmann-json3-dev libtinyxml2-dev libssl-dev
  clang libclang-rt-14-dev clang-format tshark)
if [ "$want_mingw" = 1 ]; then
  packages+=(g++-mingw-w64-x86-64-posix mingw-w64-x86-64-dev binutils-mingw-w64-x86-64 wine wine64)
fi

install_packages() {
  local missing=()
  for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  say "installing ${missing[*]}"
  local sudo=()
  [ "$(id -u)" = 0 ] || sudo=(sudo)
  "${sudo[@]}" apt-get update -qq
  DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

# apt-get source needs deb-src entries. A private copy of the machine's own
# sources gets them, so neither the machine's configuration nor this
# repository names a mirror.
fetch_log4cplus_source() {
  local src="$deps/src"
  [ -f "$src/log4cplus-$log4cplus_version/CMakeLists.txt" ] && return 0
  say "fetching log4cplus $log4cplus_version sources"
  local apt="$deps/apt"
  rm -rf "$apt" && mkdir -p "$apt/sources.list.d" "$apt/lists/partial" "$apt/cache/archives/partial" "$src"
  if [ -f /etc/apt/sources.list ]; then
    sed -n 's/^deb \(.*\)$/deb-src \1/p' /etc/apt/sources.list > "$apt/sources.list.d/private.list"
  fi
  for f in /etc/apt/sources.list.d/*.sources; do
    [ -e "$f" ] || continue
    sed 's/^Types:.*$/Types: deb-src/' "$f" > "$apt/sources.list.d/$(basename "$f")"
  done
  for f in /etc/apt/sources.list.d/*.list; do
    [ -e "$f" ] || continue
    sed -n 's/^deb \(.*\)$/deb-src \1/p' "$f" > "$apt/sources.list.d/$(basename "$f")"
  done
  local opts=(-o "Dir::Etc::SourceList=/dev/null" -o "Dir::Etc::SourceParts=$apt/sources.list.d"
    -o "Dir::State::Lists=$apt/lists" -o "Dir::Cache=$apt/cache" -o "Debug::NoLocking=1")
  [ "$(id -u)" = 0 ] && opts+=(-o "APT::Sandbox::User=root")
  apt-get "${opts[@]}" update -qq
  (cd "$src" && apt-get "${opts[@]}" source -qq log4cplus >/dev/null)
  [ -f "$src/log4cplus-$log4cplus_version/CMakeLists.txt" ] || { echo "bootstrap: log4cplus $log4cplus_version source not found" >&2; exit 1; }
}

build_log4cplus() {
  local target=$1 prefix="$deps/$1"
  local stamp="$prefix/.log4cplus-$log4cplus_version-shared"
  [ -f "$stamp" ] && return 0
  say "building log4cplus for $target"
  local extra=()
  if [ "$target" = mingw ]; then
    extra=(-DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-w64-x86_64.cmake")
  else
    extra=(-DCMAKE_POSITION_INDEPENDENT_CODE=ON)
  fi
  local b="$deps/build/log4cplus-$target"
  rm -rf "$b" && mkdir -p "$deps/build"
  # A static build left by an earlier bootstrap would still satisfy the
  # linker: take it out with its CMake package.
  rm -rf "$prefix"/lib/liblog4cplus* "$prefix"/bin/liblog4cplus* "$prefix/lib/cmake/log4cplus" \
    "$prefix/include/log4cplus" "$prefix/.log4cplus-$log4cplus_version"
  cmake -S "$deps/src/log4cplus-$log4cplus_version" -B "$b" -G Ninja "${extra[@]}" \
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$prefix" \
    -DUNICODE=ON -DLOG4CPLUS_ENABLE_THREAD_POOL=OFF -DBUILD_SHARED_LIBS=ON \
    -DLOG4CPLUS_BUILD_TESTING=OFF -DLOG4CPLUS_BUILD_LOGGINGSERVER=OFF -DWITH_UNIT_TESTS=OFF \
    -DLOG4CPLUS_QT4=OFF -DLOG4CPLUS_QT5=OFF -DWITH_ICONV=OFF >"$b.log" 2>&1 ||
    { tail -30 "$b.log" >&2; exit 1; }
  cmake --build "$b" -j "$jobs" >>"$b.log" 2>&1 && cmake --install "$b" >>"$b.log" 2>&1 ||
    { tail -30 "$b.log" >&2; exit 1; }
  touch "$stamp"
}

build_mingw_googletest() {
  local prefix="$deps/mingw"
  [ -f "$prefix/.googletest" ] && return 0
  say "building GoogleTest for mingw"
  local b="$deps/build/googletest-mingw"
  rm -rf "$b" && mkdir -p "$deps/build"
  cmake -S /usr/src/googletest -B "$b" -G Ninja \
    -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-w64-x86_64.cmake" -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_INSTALL_PREFIX="$prefix" -Dgtest_disable_pthreads=OFF >"$b.log" 2>&1 &&
    cmake --build "$b" -j "$jobs" >>"$b.log" 2>&1 && cmake --install "$b" >>"$b.log" 2>&1 ||
    { tail -30 "$b.log" >&2; exit 1; }
  touch "$prefix/.googletest"
}

# tinyxml2 for mingw from Debian's source package (Linux uses the binary
# package). The private apt sources of fetch_log4cplus_source serve here too.
build_mingw_tinyxml2() {
  local prefix="$deps/mingw" apt="$deps/apt"
  [ -f "$prefix/.tinyxml2" ] && return 0
  say "building tinyxml2 for mingw"
  local opts=(-o "Dir::Etc::SourceList=/dev/null" -o "Dir::Etc::SourceParts=$apt/sources.list.d"
    -o "Dir::State::Lists=$apt/lists" -o "Dir::Cache=$apt/cache" -o "Debug::NoLocking=1")
  [ "$(id -u)" = 0 ] && opts+=(-o "APT::Sandbox::User=root")
  local source
  source=$(find "$deps/src" -maxdepth 2 -path '*/tinyxml2-*/tinyxml2.cpp' -printf '%h\n' | head -1)
  if [ -z "$source" ]; then
    [ -d "$apt/lists" ] || { echo "bootstrap: no private apt sources in $apt" >&2; exit 1; }
    (cd "$deps/src" && apt-get "${opts[@]}" source -qq tinyxml2 >/dev/null)
    source=$(find "$deps/src" -maxdepth 2 -path '*/tinyxml2-*/tinyxml2.cpp' -printf '%h\n' | head -1)
    [ -n "$source" ] || { echo "bootstrap: tinyxml2 source not found" >&2; exit 1; }
  fi
  local b="$deps/build/tinyxml2-mingw"
  rm -rf "$b" && mkdir -p "$deps/build"
  cmake -S "$source" -B "$b" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-w64-x86_64.cmake" \
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$prefix" -DBUILD_SHARED_LIBS=OFF \
    -Dtinyxml2_BUILD_TESTING=OFF -DBUILD_TESTING=OFF >"$b.log" 2>&1 &&
    cmake --build "$b" -j "$jobs" >>"$b.log" 2>&1 && cmake --install "$b" >>"$b.log" 2>&1 ||
    { tail -30 "$b.log" >&2; exit 1; }
  touch "$prefix/.tinyxml2"
}

# Header-only libraries come from Debian's packages; the cross build must not
# see the rest of /usr/include, so it gets copies of just these.
copy_headers_for_mingw() {
  local include="$deps/mingw/include"
  mkdir -p "$include"
  [ -d "$include/nlohmann" ] || cp -r /usr/include/nlohmann "$include/"
  [ -d "$include/CLI" ] || cp -r /usr/include/CLI "$include/"
}

install_packages
fetch_log4cplus_source
for t in "${targets[@]}"; do
  build_log4cplus "$t"
  if [ "$t" = mingw ]; then
    build_mingw_googletest
    build_mingw_tinyxml2
    copy_headers_for_mingw
  fi
done
say "ready (${targets[*]})"
